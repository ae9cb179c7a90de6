#include "tools/nodal/top/terminal.h"

// Without this definition, ncurses defines macros with names such as move and timeout.
#define NCURSES_NOMACROS 1
#include <langinfo.h>
#include <ncurses.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <string>

#include "tools/nodal/support/output.h"
#include "tools/nodal/support/text.h"
#include "tools/nodal/top/session.h"

namespace nodal::top {
namespace {

enum ColorPair : short { kNoPair, kHeadingPair, kSortedPair, kWarningPair };

bool WantsColors() {
  const char *refused = std::getenv("NO_COLOR");
  return has_colors() && (refused == nullptr || *refused == '\0');
}

void SetUpColors() {
  start_color();
  use_default_colors();
  init_pair(kHeadingPair, COLOR_BLACK, COLOR_GREEN);
  init_pair(kSortedPair, COLOR_BLACK, COLOR_CYAN);
  init_pair(kWarningPair, COLOR_RED, -1);
}

// Without colours, headings are underlined, and the selected row is still reversed.
attr_t AttributesOf(Style style, bool hasColors) {
  const auto pair = [&](ColorPair color, attr_t otherwise) {
    return hasColors ? static_cast<attr_t>(COLOR_PAIR(color)) : otherwise;
  };
  switch (style) {
    case Style::kPlain: return A_NORMAL;
    case Style::kTitle:
    case Style::kStrong: return A_BOLD;
    case Style::kHeading: return pair(kHeadingPair, A_UNDERLINE);
    case Style::kSortedHeading: return pair(kSortedPair, A_UNDERLINE | A_BOLD);
    case Style::kSelected: return A_REVERSE;
    case Style::kDim: return A_DIM;
    case Style::kWarning: return pair(kWarningPair, A_REVERSE) | A_BOLD;
  }
  return A_NORMAL;
}

uint32_t KeyOfCode(wint_t code) {
  switch (code) {
    case KEY_UP: return kKeyUp;
    case KEY_DOWN: return kKeyDown;
    case KEY_LEFT: return kKeyLeft;
    case KEY_RIGHT: return kKeyRight;
    case KEY_PPAGE: return kKeyPageUp;
    case KEY_NPAGE: return kKeyPageDown;
    case KEY_HOME: return kKeyHome;
    case KEY_END: return kKeyEnd;
    case KEY_BACKSPACE: return kKeyBackspace;
    case KEY_ENTER: return kKeyEnter;
    default: return kKeyOther;
  }
}

uint32_t KeyOfCharacter(wint_t character) {
  constexpr wint_t kBackspace = 8, kDelete = 127;
  if (character == kBackspace || character == kDelete) return kKeyBackspace;
  return character == '\r' ? uint32_t{kKeyEnter} : static_cast<uint32_t>(character);
}

}  // namespace

void UseLocale() {
  std::setlocale(LC_CTYPE, "");
  if (std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0) std::setlocale(LC_CTYPE, "C");
}

Terminal::Terminal() {
  if (isatty(STDIN_FILENO) == 0 || isatty(STDOUT_FILENO) == 0)
    throw Failure("top", "standard input or output is not a terminal (--batch does not need one)");
  constexpr int kEscapeMilliseconds = 25;
  set_escdelay(kEscapeMilliseconds);
  screen_ = newterm(nullptr, stdout, stdin);
  if (screen_ == nullptr) {
    const char *name = std::getenv("TERM");
    throw Failure("TERM=" + std::string(name == nullptr ? "" : name),
                  "unknown terminal type (--batch does not need one)");
  }
  cbreak();
  noecho();
  nonl();
  keypad(stdscr, true);
  nodelay(stdscr, true);
  if (WantsColors()) SetUpColors();
}

Terminal::~Terminal() {
  endwin();
  delscreen(static_cast<SCREEN *>(screen_));
}

size_t Terminal::width() const { return static_cast<size_t>(getmaxx(stdscr)); }
size_t Terminal::height() const { return static_cast<size_t>(getmaxy(stdscr)); }

void Terminal::Draw(const Frame &frame) {
  const int height = getmaxy(stdscr);
  for (int y = 0; y < height; ++y) {
    const auto line = static_cast<size_t>(y);
    DrawLine(y, line < frame.lines.size() ? frame.lines[line] : Line());
  }
  curs_set(frame.hasCursor ? 1 : 0);
  move(height - 1, frame.hasCursor ? static_cast<int>(frame.cursorColumn) : 0);
  refresh();
}

void Terminal::DrawLine(int y, const Line &line) {
  const bool hasColors = WantsColors();
  move(y, 0);
  clrtoeol();
  for (const Span &span : line) {
    attrset(static_cast<int>(AttributesOf(span.style, hasColors)));
    addstr(Printable(span.text).c_str());
  }
  attrset(A_NORMAL);
}

uint32_t Terminal::ReadKey() {
  wint_t character = 0;
  switch (get_wch(&character)) {
    case OK: return KeyOfCharacter(character);
    case KEY_CODE_YES: return KeyOfCode(character);
    default: return 0;
  }
}

}  // namespace nodal::top
