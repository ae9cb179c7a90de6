// The live view without its terminal: it takes keys and samples, and returns frames.
#ifndef NODAL_TOP_SESSION_H
#define NODAL_TOP_SESSION_H

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/nodal/top/feed.h"
#include "tools/nodal/top/frame.h"
#include "tools/nodal/top/view.h"

namespace nodal::top {

// A key is a character, or one of these.
enum Key : uint32_t {
  kKeyTab = '\t',
  kKeyEnter = '\n',
  kKeyEscape = 27,
  kKeyUp = 0x110000,
  kKeyDown,
  kKeyLeft,
  kKeyRight,
  kKeyPageUp,
  kKeyPageDown,
  kKeyHome,
  kKeyEnd,
  kKeyBackspace,
  kKeyOther,
};

struct SessionOptions {
  ScreenId screen = ScreenId::kGroups;
  std::array<Settings, kScreens> settings = {};  // by ScreenId
  Unit unit = Unit::kAuto;
  std::string every = "1";  // seconds, shown in the title and in CommandLine()
  std::string source = {};  // the options that select the source, repeated in CommandLine()
};

// Quotes a text as one word for a shell.
std::string ShellWord(const std::string &text);

enum class Mode : uint8_t { kTable, kFilter, kColumns, kSort, kHelp };

class Session {
 public:
  Session(Feed &feed, SessionOptions options);

  // Takes the next sample or, with `isBack`, the previous one. Returns false if there is none. Throws a Failure if the
  // first sample lacks the chosen subtree.
  bool TakeSample(bool isBack = false);

  // Returns false if the key quits.
  bool Press(uint32_t key);

  Frame Paint(size_t width, size_t height);

  // Writes the whole table, line by line.
  void WriteBatch(const std::function<void(std::string_view line)> &write) const;

  // Whether the view takes new samples on its own.
  bool isRunning() const { return isRunning_; }

  // Why the last step failed or left samples out; empty if it did neither.
  std::string problem() const { return feed_.Problem(); }

  // Returns the command that shows the same view again.
  std::string CommandLine() const;
  bool wantsCommandLine() const { return wantsCommandLine_; }

  const View &view() const { return view_; }
  const Settings &settings() const { return options_.settings[static_cast<size_t>(options_.screen)]; }

 private:
  Settings &Own() { return options_.settings[static_cast<size_t>(options_.screen)]; }
  const Screen &CurrentScreen() const { return Screens()[static_cast<size_t>(options_.screen)]; }

  Reading Read(platkit::Source &source, const Reading *before = nullptr) const;
  void ReadAgain(bool isOtherScreen);
  void Update();

  void PressInTable(uint32_t key);
  bool MoveCursor(uint32_t key);
  void MoveTo(size_t line);
  void ChangeView(uint32_t key);
  void SelectScreen(size_t index);
  void MoveSort(int by);
  void Fold(bool isFolded);
  void EnterSubtree();
  void LeaveSubtree();
  void StepHistory(bool isBack);
  void PressInFilter(uint32_t key);
  void PressInList(uint32_t key);
  void OpenList(Mode mode);
  void ToggleColumn(const ColumnChoice &choice);

  Line Title(size_t width) const;
  Line Summary(size_t width) const;
  Line Tabs(size_t width) const;
  Line Footer(size_t width) const;
  std::string StateText() const;
  void PaintList(Frame &frame, size_t width, size_t height);

  Feed &feed_;
  SessionOptions options_;
  std::optional<Reading> now_, before_;
  View view_;
  bool isRunning_;
  bool wantsCommandLine_ = false;
  Mode mode_ = Mode::kTable;
  std::string message_;
  std::string oldFilter_;
  std::vector<ColumnChoice> list_;  // the choices in the modes kColumns and kSort
  size_t listCursor_ = 0;
  size_t listTop_ = 0;
  size_t page_ = 10;  // the number of rows that fit on the screen
};

}  // namespace nodal::top

#endif  // NODAL_TOP_SESSION_H
