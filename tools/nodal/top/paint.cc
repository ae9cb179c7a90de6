#include <algorithm>
#include <iterator>

#include "tools/nodal/support/text.h"
#include "tools/nodal/top/session.h"
#include "tools/nodal/top/table_painter.h"

namespace nodal::top {
namespace {

constexpr size_t kListNameWidth = 20;
constexpr size_t kHeadLines = 4;  // the title, the summary, the screens, the headings
constexpr size_t kFootLines = 2;  // the sum, the keys

constexpr std::string_view kHelp[] = {
    "Up Down PgUp PgDn Home End   move",
    "1 2 3 4 5, Tab               groups, machines, host, nodes, heaps",
    "s, < >, r                    choose the sort column, previous or next, reverse",
    "c                            choose columns",
    "/, Escape                    filter by name, remove the filter",
    "t                            tree or flat",
    "+ -                          open or fold a row",
    "Enter, Backspace             show only a subtree, go back up",
    "i                            hide idle rows: all shown figures are 0",
    "u                            unit: auto, b, kb, mb, pg",
    "space                        stop or continue; in a history: play or stop",
    "Left Right                   step through a history",
    "w                            on exit, print the command that shows this view",
    "q                            quit",
    "",
    "-    not available           max  unlimited",
    ".    the row has no figure   >N   at least N: a part is not available",
    "A group without a figure of its own shows the sum of its members.",
    "The last line sums the shown rows. Counters are shown per second, as NAME/s.",
};

constexpr std::string_view kKeys = "? help  s sort  c columns  / filter  t flat  i idle  space stop  q quit";

// Returns a line of the whole width, in one style.
Line FullLine(std::string_view text, size_t width, Style style) { return {{Fit(Printable(text), width), style}}; }

}  // namespace

Line Session::Title(size_t width) const {
  std::string text = "nodal top  " + feed_.Host() + "  " + feed_.Time() + "  " + feed_.Kind();
  if (feed_.isLive()) text += ", every " + options_.every + " s";
  if (feed_.isLive() || feed_.isHistory()) text += isRunning_ ? "" : "  [stopped]";
  if (feed_.isHistory() && isRunning_) text += "  [playing]";
  return FullLine(text, width, Style::kTitle);
}

Line Session::Summary(size_t width) const {
  const HostSummary &host = now_->host;
  std::string text = "memory " + CellText(host.total, Quantity::kAmount, options_.unit, false) + "  free " +
                     CellText(host.free, Quantity::kAmount, options_.unit, false);
  if (host.total.hasNumber() && host.free.hasNumber() && host.total.number > 0)
    text += " (" + std::to_string(static_cast<int>(100 * host.free.number / host.total.number)) + " %)";
  const std::string state = CellText(host.state, Quantity::kMemoryState, options_.unit, false);
  const bool isShort = host.state.hasNumber() && host.state.number >= 2;
  text += "  state ";
  const size_t used = std::min(width, WidthOf(text));
  return {{Fit(text, used)}, {Fit(state, width - used), isShort ? Style::kWarning : Style::kPlain}};
}

Line Session::Tabs(size_t width) const {
  Line line;
  size_t used = 0;
  for (const Screen &screen : Screens()) {
    const bool isCurrent = screen.id == options_.screen;
    const std::string name = std::to_string(static_cast<int>(screen.id) + 1) + " " + std::string(screen.name);
    const std::string text = Clip((isCurrent ? "[" : " ") + name + (isCurrent ? "]" : " "), width - used);
    used += text.size();
    line.push_back({text, isCurrent ? Style::kStrong : Style::kPlain});
  }
  line.push_back({Fit("  " + StateText(), width - used)});
  return line;
}

// Returns whether the view is a tree or flat, and the settings that hide rows, for the user.
std::string Session::StateText() const {
  const Settings &own = settings();
  std::string text;
  if (CurrentScreen().isTree) text += own.isFlat ? "flat  " : "tree  ";
  if (own.hidesIdle) text += "idle hidden  ";
  if (!own.subtree.empty()) {
    const auto row = std::ranges::find(now_->rows, own.subtree, &Row::key);
    text += "below " + (row == now_->rows.end() ? Printable(own.subtree) : row->name) + "  ";
  }
  if (!own.filter.empty()) text += "filter: " + Printable(own.filter);
  return text;
}

Line Session::Footer(size_t width) const {
  if (mode_ == Mode::kFilter) return FullLine("filter: " + settings().filter, width, Style::kStrong);
  if (!message_.empty()) return FullLine(message_, width, Style::kStrong);
  if (mode_ == Mode::kColumns) return FullLine("space chooses a column, Enter finishes", width, Style::kStrong);
  if (mode_ == Mode::kSort) return FullLine("Enter sorts by the column, Escape cancels", width, Style::kStrong);
  if (mode_ == Mode::kHelp) return FullLine("any key closes the help", width, Style::kStrong);
  return FullLine(kKeys, width, Style::kDim);
}

Frame Session::Paint(size_t width, size_t height) {
  Frame frame;
  frame.lines = {Title(width), Summary(width), Tabs(width)};
  page_ = height > kHeadLines + kFootLines ? height - kHeadLines - kFootLines : 0;
  if (mode_ != Mode::kTable && mode_ != Mode::kFilter) {
    PaintList(frame, width, height);
  } else {
    Settings &own = Own();
    TablePainter painter(view_, *now_, own, options_.unit);
    painter.PlaceIn(width);
    frame.lines.push_back(painter.Headings());
    const std::vector<ShownRow> &rows = view_.rows();
    if (page_ > 0) {
      own.top = std::clamp(own.top, own.cursor >= page_ ? own.cursor - page_ + 1 : 0, own.cursor);
      own.top = std::min(own.top, rows.size() > page_ ? rows.size() - page_ : 0);
    }
    for (size_t i = 0; i < page_; ++i) {
      const size_t line = own.top + i;
      if (line >= rows.size()) {
        frame.lines.emplace_back();
        continue;
      }
      const Style style = line == own.cursor ? Style::kSelected : rows[line].isContext ? Style::kDim : Style::kPlain;
      frame.lines.push_back(painter.RowLine(rows[line], style));
    }
    frame.lines.push_back(painter.SumLine());
  }
  frame.lines.push_back(Footer(width));
  if (mode_ == Mode::kFilter) {
    frame.hasCursor = true;
    frame.cursorColumn = std::min(width - std::min<size_t>(width, 1), WidthOf("filter: " + settings().filter));
  }
  // A terminal with too few lines shows the first ones.
  if (frame.lines.size() > height) frame.lines.resize(height);
  return frame;
}

// Paints the help or the list of columns, in place of the table.
void Session::PaintList(Frame &frame, size_t width, size_t height) {
  const size_t lines = height > kHeadLines ? height - kHeadLines : 0;
  if (mode_ == Mode::kHelp) {
    for (size_t i = 0; i < lines; ++i)
      frame.lines.push_back(FullLine(i < std::size(kHelp) ? kHelp[i] : "", width, Style::kPlain));
    return;
  }
  if (lines > 0) {
    listTop_ = std::clamp(listTop_, listCursor_ >= lines ? listCursor_ - lines + 1 : 0, listCursor_);
  }
  const std::vector<ColumnChoice> &columns = settings().columns;
  for (size_t i = listTop_; i < listTop_ + lines; ++i) {
    if (i >= list_.size()) {
      frame.lines.emplace_back();
      continue;
    }
    const ColumnChoice &choice = list_[i];
    const bool isChosen =
        mode_ == Mode::kColumns ? std::ranges::find(columns, choice) != columns.end() : choice == settings().sort;
    const std::string meaning = (choice.isRate ? "a second: " : "") + std::string(choice.column->Description());
    const std::string text = (isChosen ? "[x] " : "[ ] ") + Fit(choice.name(), kListNameWidth) + " " + meaning;
    frame.lines.push_back(FullLine(text, width, i == listCursor_ ? Style::kSelected : Style::kPlain));
  }
}

void Session::WriteBatch(const std::function<void(std::string_view line)> &write) const {
  TablePainter painter(view_, *now_, settings(), options_.unit);
  painter.PlaceAll();
  const auto writeLine = [&](const Line &line) {
    std::string shown = top::TextOf(line);
    shown.erase(shown.find_last_not_of(' ') + 1);
    write(shown + "\n");
  };
  writeLine({{feed_.Host() + "  " + feed_.Time() + "  " + feed_.Kind() + "  " + std::string(CurrentScreen().name)}});
  writeLine(painter.Headings());
  for (const ShownRow &row : view_.rows())
    writeLine(painter.RowLine(row, Style::kPlain));
  writeLine(painter.SumLine());
  if (!message_.empty()) writeLine({{Printable(message_)}});
}

}  // namespace nodal::top
