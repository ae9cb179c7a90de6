#include "tools/nodal/top/session.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "tools/nodal/support/output.h"
#include "tools/nodal/support/text.h"

namespace nodal::top {
namespace {

// Encodes a character as UTF-8.
std::string Encoded(uint32_t code) {
  const auto byte = [](uint32_t value) { return static_cast<char>(value); };
  if (code < 0x80) return {byte(code)};
  if (code < 0x800) return {byte(0xc0 | code >> 6), byte(0x80 | (code & 0x3f))};
  if (code < 0x10000) return {byte(0xe0 | code >> 12), byte(0x80 | (code >> 6 & 0x3f)), byte(0x80 | (code & 0x3f))};
  return {byte(0xf0 | code >> 18), byte(0x80 | (code >> 12 & 0x3f)), byte(0x80 | (code >> 6 & 0x3f)),
          byte(0x80 | (code & 0x3f))};
}

// Escapes bytes in octal, for a shell.
std::string EscapedBytes(std::string_view bytes) {
  std::string escaped;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    escaped += '\\';
    for (const int shift : {6, 3, 0})
      escaped += static_cast<char>('0' + (byte >> shift & 7));
  }
  return escaped;
}

// Quotes a text for a shell, and escapes control characters and invalid bytes, which must not reach the terminal.
std::string EscapedWord(const std::string &text) {
  std::string quoted;
  for (const char c : text)
    quoted += (c == '\'' || c == '\\' ? "\\" : "") + std::string(1, c);
  return "$'" + Escaped(quoted, EscapedBytes) + "'";
}

void RemoveLastCharacter(std::string &text) {
  while (!text.empty() && (static_cast<unsigned char>(text.back()) & 0xc0) == 0x80)
    text.pop_back();
  if (!text.empty()) text.pop_back();
}

}  // namespace

std::string ShellWord(const std::string &text) {
  const auto isPlain = [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 ||
           std::string_view("_-./:=@%+,").find(c) != std::string_view::npos;
  };
  if (!text.empty() && std::ranges::all_of(text, isPlain)) return text;
  if (Printable(text) != text) return EscapedWord(text);
  std::string quoted = "'";
  for (const char c : text)
    quoted += c == '\'' ? "'\\''" : std::string(1, c);
  return quoted + "'";
}

Session::Session(Feed &feed, SessionOptions options)
    : feed_(feed), options_(std::move(options)), view_(CurrentScreen()), isRunning_(feed.isLive()) {}

Reading Session::Read(platkit::Source &source, const Reading *before) const {
  std::vector<ColumnChoice> needed = settings().columns;
  if (settings().sort.column != nullptr) needed.push_back(settings().sort);
  return ReadScreen(CurrentScreen(), source, NodesOf(CurrentScreen(), needed), before);
}

bool Session::TakeSample(bool isBack) {
  if (!feed_.Step(isBack)) {
    isRunning_ = false;
    message_ = isBack ? "this is the first sample" : "this is the last sample";
    if (!feed_.Problem().empty()) message_ += ": " + feed_.Problem();
    return false;
  }
  message_ = feed_.Problem();
  const bool isFirst = !now_;
  platkit::Source *before = feed_.Before();
  before_ = before == nullptr ? std::exchange(now_, std::nullopt) : Read(*before);
  now_ = Read(feed_.Now(), before == nullptr && before_ ? &*before_ : nullptr);
  feed_.AdaptTo(now_->groups);
  Update();
  if (isFirst && view_.isSubtreeGone())
    throw Failure("--subtree " + settings().subtree,
                  "the screen " + std::string(CurrentScreen().name) + " has no such row");
  return true;
}

// Reads the present sample again, because other columns need other records.
void Session::ReadAgain(bool isOtherScreen) {
  platkit::Source *before = feed_.Before();
  if (before != nullptr) {
    before_ = Read(*before);
  } else if (isOtherScreen) {
    before_.reset();
  }
  const std::optional<Reading> earlier = isOtherScreen ? std::nullopt : std::move(now_);
  now_ = Read(feed_.Now());
  if (feed_.isLive()) now_->MarkLate(earlier ? &*earlier : nullptr);
  Update();
}

void Session::Update() {
  view_.Update(*now_, before_ ? &*before_ : nullptr, feed_.Seconds(), Own());
  if (!now_->problem.empty()) message_ = now_->problem;
  if (view_.isSubtreeGone()) message_ = "the group has ended; press Backspace to show all groups";
}

bool Session::Press(uint32_t key) {
  message_.clear();
  switch (mode_) {
    case Mode::kTable:
      if (key == 'q' || key == 'Q') return false;
      PressInTable(key);
      break;
    case Mode::kFilter: PressInFilter(key); break;
    case Mode::kColumns:
    case Mode::kSort: PressInList(key); break;
    case Mode::kHelp: mode_ = Mode::kTable; break;
  }
  return true;
}

void Session::PressInTable(uint32_t key) {
  if (MoveCursor(key)) return;
  switch (key) {
    case ' ':
      if (feed_.isLive() || feed_.isHistory()) {
        isRunning_ = !isRunning_;
      } else {
        message_ = "a snapshot does not change";
      }
      return;
    case kKeyLeft: return StepHistory(true);
    case kKeyRight: return StepHistory(false);
    case '?':
    case 'h': mode_ = Mode::kHelp; return;
    case '/':
      oldFilter_ = Own().filter;
      mode_ = Mode::kFilter;
      return;
    case 's': return OpenList(Mode::kSort);
    case 'c': return OpenList(Mode::kColumns);
    case kKeyTab: return SelectScreen((static_cast<size_t>(options_.screen) + 1) % kScreens);
    case 'w':
      wantsCommandLine_ = true;
      message_ = "on exit, prints: " + CommandLine();
      return;
    default: break;
  }
  if (key >= '1' && key < '1' + kScreens) return SelectScreen(key - '1');
  ChangeView(key);
}

void Session::ChangeView(uint32_t key) {
  Settings &own = Own();
  switch (key) {
    case kKeyEnter: return EnterSubtree();
    case kKeyBackspace: return LeaveSubtree();
    case '+': return Fold(false);
    case '-': return Fold(true);
    case '<': return MoveSort(-1);
    case '>': return MoveSort(1);
    case 'r': own.isAscending = !own.isAscending; break;
    case 'i': own.hidesIdle = !own.hidesIdle; break;
    case 't':
      if (!CurrentScreen().isTree) {
        message_ = "this screen has no tree";
        return;
      }
      own.isFlat = !own.isFlat;
      break;
    case 'u':
      options_.unit =
          options_.unit == Unit::kPages ? Unit::kAuto : static_cast<Unit>(static_cast<int>(options_.unit) + 1);
      return;
    case kKeyEscape: own.filter.clear(); break;
    default: message_ = "? shows the keys"; return;
  }
  Update();
}

bool Session::MoveCursor(uint32_t key) {
  const size_t cursor = Own().cursor;
  switch (key) {
    case kKeyUp:
    case 'k': MoveTo(cursor > 0 ? cursor - 1 : 0); return true;
    case kKeyDown:
    case 'j': MoveTo(cursor + 1); return true;
    case kKeyPageUp: MoveTo(cursor > page_ ? cursor - page_ : 0); return true;
    case kKeyPageDown: MoveTo(cursor + page_); return true;
    case kKeyHome: MoveTo(0); return true;
    case kKeyEnd: MoveTo(view_.rows().size()); return true;
    default: return false;
  }
}

void Session::MoveTo(size_t line) {
  Settings &own = Own();
  if (view_.rows().empty()) return;
  own.cursor = std::min(line, view_.rows().size() - 1);
  own.selected = now_->rows[view_.rows()[own.cursor].row].key;
}

void Session::SelectScreen(size_t index) {
  const auto screen = static_cast<ScreenId>(index);
  if (screen == options_.screen) return;
  options_.screen = screen;
  view_ = View(CurrentScreen());
  ReadAgain(true);
}

void Session::MoveSort(int by) {
  Settings &own = Own();
  if (own.columns.empty()) return;
  const auto found = std::ranges::find(own.columns, own.sort);
  const auto last = static_cast<int>(own.columns.size()) - 1;
  const int index = found == own.columns.end() ? (by > 0 ? -1 : 1) : static_cast<int>(found - own.columns.begin());
  own.sort = own.columns[static_cast<size_t>(std::clamp(index + by, 0, last))];
  Update();
}

void Session::Fold(bool isFolded) {
  Settings &own = Own();
  if (!CurrentScreen().isTree || own.isFlat || view_.rows().empty()) return;
  const Row &row = now_->rows[view_.rows()[own.cursor].row];
  if (isFolded && row.members > 0) own.folded.insert(row.key);
  if (!isFolded) own.folded.erase(row.key);
  Update();
}

void Session::EnterSubtree() {
  Settings &own = Own();
  if (!CurrentScreen().isTree || view_.rows().empty()) return;
  own.subtree = now_->rows[view_.rows()[own.cursor].row].key;
  own.folded.erase(own.subtree);
  own.cursor = own.top = 0;
  Update();
}

// Shows the subtree of the parent row, or everything.
void Session::LeaveSubtree() {
  Settings &own = Own();
  const std::string left = std::exchange(own.subtree, "");
  for (const Row &row : now_->rows) {
    if (row.key != left || row.parent < 0) continue;
    const Row &parent = now_->rows[static_cast<size_t>(row.parent)];
    if (parent.parent >= 0) own.subtree = parent.key;
  }
  own.selected = left;
  own.cursor = 1;  // not the first line, so that the cursor follows the selected row
  Update();
}

void Session::StepHistory(bool isBack) {
  if (!feed_.isHistory()) {
    message_ = "only a history has other samples (--cache FOLDER)";
    return;
  }
  isRunning_ = false;
  TakeSample(isBack);
}

void Session::PressInFilter(uint32_t key) {
  Settings &own = Own();
  if (key == kKeyEnter) {
    mode_ = Mode::kTable;
  } else if (key == kKeyEscape) {
    own.filter = oldFilter_;
    mode_ = Mode::kTable;
  } else if (key == kKeyBackspace) {
    RemoveLastCharacter(own.filter);
  } else if (key >= ' ' && key < kKeyUp) {
    const std::string character = Encoded(key);
    if (Printable(character) == character) own.filter += character;
  }
  Update();
}

void Session::OpenList(Mode mode) {
  list_ = AllColumns(CurrentScreen());
  if (mode == Mode::kSort) list_.insert(list_.begin(), ColumnChoice{&kNameColumn, false});
  const auto found = std::ranges::find(list_, Own().sort);
  listCursor_ = mode == Mode::kSort && found != list_.end() ? static_cast<size_t>(found - list_.begin()) : 0;
  listTop_ = 0;
  mode_ = mode;
}

void Session::PressInList(uint32_t key) {
  const size_t last = list_.size() - 1;
  switch (key) {
    case kKeyUp:
    case 'k': listCursor_ -= listCursor_ > 0 ? 1 : 0; break;
    case kKeyDown:
    case 'j': listCursor_ = std::min(listCursor_ + 1, last); break;
    case kKeyPageUp: listCursor_ -= std::min(listCursor_, page_); break;
    case kKeyPageDown: listCursor_ = std::min(listCursor_ + page_, last); break;
    case kKeyHome: listCursor_ = 0; break;
    case kKeyEnd: listCursor_ = last; break;
    case ' ':
      if (mode_ == Mode::kColumns) ToggleColumn(list_[listCursor_]);
      break;
    case kKeyEnter:
      if (mode_ == Mode::kSort) {
        Own().isAscending = false;
        Own().sort = list_[listCursor_];
      }
      mode_ = Mode::kTable;
      return ReadAgain(false);
    case kKeyEscape:
    case 'c':
    case 's':
    case 'q': mode_ = Mode::kTable; return ReadAgain(false);
    default: break;
  }
}

// Inserts a new column at its place in the order of the screen.
void Session::ToggleColumn(const ColumnChoice &choice) {
  std::vector<ColumnChoice> &columns = Own().columns;
  if (std::erase(columns, choice) > 0) return;
  const auto place = [this](const ColumnChoice &each) { return std::ranges::find(list_, each) - list_.begin(); };
  const auto after =
      std::ranges::find_if(columns, [&](const ColumnChoice &each) { return place(each) > place(choice); });
  columns.insert(after, choice);
}

std::string Session::CommandLine() const {
  const Settings &own = settings();
  const std::string moment = feed_.Moment();
  std::string line = "nodal" + (moment.empty() ? options_.source : " --cache " + ShellWord(moment)) + " top";
  if (options_.screen != ScreenId::kGroups) line += " --screen " + std::string(CurrentScreen().name);
  const Settings usual = DefaultSettings(CurrentScreen());
  if (own.columns != usual.columns) {
    std::string names;
    for (const ColumnChoice &choice : own.columns)
      names += (names.empty() ? "" : ":") + choice.name();
    // The name is always shown, so a list with only the name means no other column.
    line += " --columns " + (names.empty() ? std::string(kNameColumn.name) : names);
  }
  if (own.sort != usual.sort && own.sort.column != nullptr) line += " --sort " + own.sort.name();
  if (own.isAscending) line += " --reverse";
  if (own.isFlat) line += " --flat";
  if (own.hidesIdle) line += " --hide-idle";
  if (!own.filter.empty()) line += " --filter=" + ShellWord(own.filter);
  if (!own.subtree.empty()) line += " --subtree=" + ShellWord(own.subtree);
  if (options_.unit != Unit::kAuto) line += " --unit " + std::string(NameOf(options_.unit));
  if (options_.every != "1") line += " --every " + options_.every;
  return line;
}

}  // namespace nodal::top
