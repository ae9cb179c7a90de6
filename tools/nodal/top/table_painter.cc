#include "tools/nodal/top/table_painter.h"

#include <algorithm>

namespace nodal::top {
namespace {

constexpr size_t kMinNameWidth = 20;

bool IsLeft(const ColumnChoice &choice) {
  return choice.column->use == Use::kText || choice.column->quantity == Quantity::kGroupFlags;
}

size_t UsualWidth(const ColumnChoice &choice) {
  constexpr size_t kFigure = 7, kText = 8, kLongText = 48, kFlags = 16;
  const size_t heading = choice.name().size() + 1;  // with the mark of the sorting column
  if (choice.column->name == "meaning") return kLongText;
  if (choice.column->quantity == Quantity::kGroupFlags) return kFlags;
  return std::max(heading, choice.column->use == Use::kText ? kText : kFigure);
}

}  // namespace

void TablePainter::PlaceIn(size_t width) {
  const std::vector<ColumnChoice> &columns = settings_.columns;
  const auto sorted = static_cast<size_t>(std::ranges::find(columns, settings_.sort) - columns.begin());
  for (size_t first = 0; first <= columns.size(); ++first) {
    Place(width, first);
    if (sorted >= columns.size() || sorted < first + places_.size() || first >= sorted) return;
  }
}

void TablePainter::PlaceAll() {
  constexpr size_t kMaxNameWidth = 80;
  constexpr size_t kMaxIndent = kMaxNameWidth / 2;
  indent_ = kMaxIndent;
  nameWidth_ = WidthOf(SumLabel());
  for (const ShownRow &row : view_.rows())
    nameWidth_ = std::max(nameWidth_, std::min(WidthOf(NameText(row)), kMaxNameWidth));
  for (const ColumnChoice &choice : settings_.columns) {
    size_t width = std::max(WidthOf(Heading(choice)), WidthOf(SumText(choice)));
    for (const ShownRow &row : view_.rows())
      width = std::max(width, WidthOf(CellTextOf(choice, row)));
    places_.push_back({choice, width});
  }
}

Line TablePainter::Headings() const {
  const ColumnChoice name = {&kNameColumn, false};
  Line line = {{Fit(Heading(name), nameWidth_), HeadingStyle(name)}};
  for (const auto &[choice, width] : places_) {
    line.push_back({" ", Style::kHeading});
    line.push_back({Fit(Heading(choice), width, IsLeft(choice) ? Align::kLeft : Align::kRight), HeadingStyle(choice)});
  }
  return line;
}

Line TablePainter::RowLine(const ShownRow &row, Style style) const {
  Line line = {{Fit(NameText(row), nameWidth_), style}};
  for (const auto &[choice, width] : places_) {
    const std::string text = CellTextOf(choice, row);
    line.push_back(
        {" " + Fit(text, width, IsLeft(choice) ? Align::kLeft : Align::kRight), StyleOf(choice, row, style)});
  }
  return line;
}

Line TablePainter::SumLine() const {
  Line line = {{Fit(SumLabel(), nameWidth_), Style::kStrong}};
  for (const auto &[choice, width] : places_)
    line.push_back({" " + Fit(SumText(choice), width, Align::kRight), Style::kStrong});
  return line;
}

void TablePainter::Place(size_t width, size_t first) {
  places_.clear();
  size_t used = std::min(width, kMinNameWidth);
  for (size_t i = first; i < settings_.columns.size(); ++i) {
    const size_t wanted = UsualWidth(settings_.columns[i]) + 1;
    // A long text may be truncated.
    const bool canBeCut = IsLeft(settings_.columns[i]) && width > used + kMinNameWidth / 2;
    if (used + wanted > width && !canBeCut) break;
    places_.push_back({settings_.columns[i], std::min(wanted, width - used) - 1});
    used += places_.back().width + 1;
  }
  nameWidth_ = std::min(width, kMinNameWidth) + (width - std::min(width, used));
  indent_ = nameWidth_ / 2;
}

bool TablePainter::IsTree() const { return view_.screen().isTree && !settings_.isFlat; }

std::string TablePainter::NameText(const ShownRow &shown) const {
  const Row &row = reading_.rows[shown.row];
  if (!IsTree()) return row.name;
  const char *mark = row.members == 0 ? "  " : shown.isFolded ? "+ " : "- ";
  return std::string(std::min(2 * static_cast<size_t>(shown.depth), indent_), ' ') + mark + row.name;
}

std::string TablePainter::CellTextOf(const ColumnChoice &choice, const ShownRow &shown) const {
  const Column &column = *choice.column;
  if (column.use == Use::kText) return top::TextOf(reading_, column, shown.row);
  const Cell cell = view_.At(choice, shown.row);
  const HostFigure *own = reading_.rows[shown.row].figure;
  if (own == nullptr || column.name == "percent")
    return CellText(cell, column.ShownQuantity(), unit_, choice.isRate || own != nullptr);
  return CellText(cell, own->figure.ShownQuantity(), unit_, choice.isRate);
}

std::string TablePainter::SumText(const ColumnChoice &choice) const {
  const Cell sum = view_.Sum(choice);
  if (sum.state == CellState::kNone) return "";
  return CellText(sum, choice.column->ShownQuantity(), unit_, choice.isRate);
}

std::string TablePainter::SumLabel() const {
  const size_t matches = view_.matches(), all = reading_.rows.size();
  const std::string shown = matches == all ? "" : std::to_string(matches) + " of ";
  const bool hasSum =
      std::ranges::any_of(settings_.columns, [](const ColumnChoice &choice) { return choice.column->AddsUp(); });
  return (hasSum ? "sum: " : "") + shown + std::to_string(all) + " " + std::string(view_.screen().rows);
}

std::string TablePainter::Heading(const ColumnChoice &choice) const {
  if (choice != settings_.sort) return choice.name();
  const bool isUp = settings_.isAscending != (choice.column->use == Use::kText);
  return choice.name() + (isUp ? "^" : "v");
}

Style TablePainter::HeadingStyle(const ColumnChoice &choice) const {
  return choice == settings_.sort ? Style::kSortedHeading : Style::kHeading;
}

Style TablePainter::StyleOf(const ColumnChoice &choice, const ShownRow &row, Style style) const {
  if (style != Style::kPlain || choice.column->use == Use::kText) return style;
  const CellState state = view_.At(choice, row.row).state;
  return state == CellState::kNone || state == CellState::kUnavailable ? Style::kDim : style;
}

}  // namespace nodal::top
