#include "tools/nodal/top/view.h"

#include <algorithm>
#include <cctype>
#include <unordered_map>

namespace nodal::top {
namespace {

constexpr size_t kNoRow = static_cast<size_t>(-1);

bool IsSameLetter(char a, char b) {
  const auto lower = [](char c) { return std::tolower(static_cast<unsigned char>(c)); };
  return lower(a) == lower(b);
}

bool Contains(const std::string &text, const std::string &part) {
  return part.empty() || std::search(text.begin(), text.end(), part.begin(), part.end(), IsSameLetter) != text.end();
}

bool IsActivity(const Cell &cell) { return cell.hasNumber() && cell.number != 0; }

}  // namespace

Settings DefaultSettings(const Screen &screen) {
  Settings settings = {.columns = DefaultColumns(screen)};
  if (!screen.sort.empty()) settings.sort = *FindColumn(screen, screen.sort);
  return settings;
}

void View::Update(const Reading &now, const Reading *before, double seconds, Settings &settings) {
  now_ = &now;
  before_ = before;
  seconds_ = seconds;
  settings_ = &settings;
  cells_.clear();
  FindRowsBefore();
  for (const ColumnChoice &choice : settings.columns)
    CellsOf(choice);
  FindActive();
  FindMatches();
  ListRows();
  SelectRow();
}

Cell View::At(const ColumnChoice &choice, size_t row) const {
  const auto found = cells_.find({choice.column, choice.isRate});
  return found == cells_.end() ? Cell() : found->second[row];
}

const View::Cells &View::CellsOf(const ColumnChoice &choice) {
  const auto key = std::pair(choice.column, choice.isRate);
  const auto known = cells_.find(key);
  if (known != cells_.end()) return known->second;
  return cells_.emplace(key, Compute(choice)).first->second;
}

View::Cells View::Compute(const ColumnChoice &choice) {
  const Column &column = *choice.column;
  Cells cells(now_->rows.size());
  if (column.isSum()) {
    for (const std::string_view part : column.sumOf) {
      const Cells &added = CellsOf(*FindColumn(*screen_, part));
      for (size_t row = 0; row < cells.size(); ++row)
        Add(cells[row], added[row]);
    }
    return cells;
  }
  if (column.use == Use::kText) return cells;
  const ColumnReader figure(*now_, column);
  for (size_t row = 0; row < cells.size(); ++row)
    cells[row] = figure(row);
  if (choice.isRate) AddRates(column, cells);
  if (column.name == "percent") {
    for (size_t row = 0; row < cells.size(); ++row) {
      const HostFigure *own = now_->rows[row].figure;
      const bool isPart = own != nullptr && own->figure.use == Use::kLevel && now_->host.total.number > 0 &&
                          own->figure.ShownQuantity() == Quantity::kAmount;
      if (!isPart) cells[row] = {};
      cells[row].number *= 100 / now_->host.total.number;
    }
  }
  if (column.AddsUp()) AddMembers(cells);
  return cells;
}

void View::AddRates(const Column &column, Cells &cells) const {
  std::optional<ColumnReader> before;
  if (before_ != nullptr) before.emplace(*before_, column);
  // `seconds_` is the time between the starts of the samples, so late records give no rate.
  if (before && (before->isLate() || ColumnReader(*now_, column).isLate())) before.reset();
  for (size_t row = 0; row < cells.size(); ++row) {
    const HostFigure *own = now_->rows[row].figure;
    if (own != nullptr && own->figure.use != Use::kCounter) {
      cells[row] = {};
    } else {
      const Cell old = before && rowsBefore_[row] != kNoRow ? (*before)(rowsBefore_[row]) : UnavailableCell();
      cells[row] = RateOf(old, cells[row], seconds_);
    }
  }
}

// A row without the figure gets the sum of the rows below it.
void View::AddMembers(Cells &cells) const {
  Cells sums(cells.size());
  for (size_t row = cells.size(); row-- > 0;) {
    if (cells[row].state == CellState::kNone) cells[row] = sums[row];
    const int parent = now_->rows[row].parent;
    if (parent >= 0) Add(sums[static_cast<size_t>(parent)], cells[row]);
  }
}

void View::FindRowsBefore() {
  rowsBefore_.assign(now_->rows.size(), kNoRow);
  const auto isRate = [](const ColumnChoice &choice) { return choice.isRate; };
  if (before_ == nullptr || (std::ranges::none_of(settings_->columns, isRate) && !settings_->sort.isRate)) return;
  std::unordered_map<std::string_view, size_t> rows;
  for (size_t row = 0; row < before_->rows.size(); ++row)
    rows.emplace(before_->rows[row].key, row);
  for (size_t row = 0; row < now_->rows.size(); ++row) {
    const auto found = rows.find(now_->rows[row].key);
    // The number may belong to another process or group now.
    if (found != rows.end() && before_->rows[found->second].name == now_->rows[row].name)
      rowsBefore_[row] = found->second;
  }
}

// A row is active if one of its shown figures is not 0, or if a row below it is active. Settings and counters of the
// whole host do not count.
void View::FindActive() {
  isActive_.assign(now_->rows.size(), 0);
  for (const ColumnChoice &choice : settings_->columns) {
    if (!choice.column->AddsUp() && choice.column->use != Use::kRow) continue;
    const Cells &cells = CellsOf(choice);
    for (size_t row = 0; row < cells.size(); ++row) {
      if (IsActivity(cells[row])) isActive_[row] = 1;
    }
  }
  for (size_t row = isActive_.size(); row-- > 0;) {
    const int parent = now_->rows[row].parent;
    if (parent >= 0 && isActive_[row] != 0) isActive_[static_cast<size_t>(parent)] = 1;
  }
}

void View::FindMatches() {
  const std::vector<Row> &rows = now_->rows;
  inSubtree_.assign(rows.size(), settings_->subtree.empty() ? 1 : 0);
  isMatch_.assign(rows.size(), 0);
  hasMatchBelow_.assign(rows.size(), 0);
  isSubtreeGone_ = !settings_->subtree.empty();
  for (size_t row = 0; row < rows.size(); ++row) {
    const bool isTop = !settings_->subtree.empty() && rows[row].key == settings_->subtree;
    if (isTop) isSubtreeGone_ = false;
    const int parent = rows[row].parent;
    if (isTop || (parent >= 0 && inSubtree_[static_cast<size_t>(parent)] != 0)) inSubtree_[row] = 1;
    const bool isShown = inSubtree_[row] != 0 && (!settings_->hidesIdle || isActive_[row] != 0);
    isMatch_[row] = isShown && Contains(rows[row].name, settings_->filter) ? 1 : 0;
  }
  for (size_t row = rows.size(); row-- > 0;) {
    const int parent = rows[row].parent;
    if (parent >= 0 && (isMatch_[row] != 0 || hasMatchBelow_[row] != 0))
      hasMatchBelow_[static_cast<size_t>(parent)] = 1;
  }
}

bool View::IsHidden(size_t row) const {
  return inSubtree_[row] == 0 || (isMatch_[row] == 0 && hasMatchBelow_[row] == 0);
}

void View::SortRows(std::vector<size_t> &rows) {
  const ColumnChoice &sort = settings_->sort;
  const bool isAscending = settings_->isAscending;
  if (sort.column == nullptr) {
    if (isAscending) std::ranges::reverse(rows);
    return;
  }
  if (sort.column->use == Use::kText) {
    std::vector<std::pair<std::string, size_t>> texts;
    texts.reserve(rows.size());
    for (const size_t row : rows)
      texts.emplace_back(TextOf(*now_, *sort.column, row), row);
    // Without isAscending, texts are in ascending order, and figures in descending order.
    std::ranges::stable_sort(
        texts, [&](const auto &a, const auto &b) { return isAscending ? a.first > b.first : a.first < b.first; });
    std::ranges::transform(texts, rows.begin(), [](const auto &text) { return text.second; });
    return;
  }
  const Cells &cells = CellsOf(sort);
  std::ranges::stable_sort(rows, [&](size_t a, size_t b) { return ComesBefore(cells[a], cells[b], isAscending); });
}

void View::ListRows() {
  const std::vector<Row> &rows = now_->rows;
  shown_.clear();
  const bool isTree = screen_->isTree && !settings_->isFlat;
  std::vector<size_t> tops;
  members_.assign(isTree ? rows.size() : 0, {});
  for (size_t row = 0; row < rows.size(); ++row) {
    if (isTree ? IsHidden(row) : isMatch_[row] == 0) continue;
    const int parent = rows[row].parent;
    const bool hasParent = isTree && parent >= 0 && inSubtree_[static_cast<size_t>(parent)] != 0;
    (hasParent ? members_[static_cast<size_t>(parent)] : tops).push_back(row);
  }
  SortRows(tops);
  for (const size_t top : tops) {
    if (isTree) {
      ListTree(top);
    } else {
      shown_.push_back({.row = top});
    }
  }
  isCounted_.assign(rows.size(), 0);
  for (const ShownRow &shown : shown_)
    isCounted_[shown.row] = shown.isContext ? 0 : 1;
  matches_ = static_cast<size_t>(std::ranges::count(isCounted_, 1));
}

void View::ListTree(size_t top) {
  const std::vector<Row> &rows = now_->rows;
  std::vector<size_t> ahead = {top};
  while (!ahead.empty()) {
    const size_t row = ahead.back();
    ahead.pop_back();
    std::vector<size_t> &members = members_[row];
    // A filter ignores folding, so that it also finds rows below folded rows.
    const bool isFolded =
        rows[row].members > 0 && settings_->filter.empty() && settings_->folded.contains(rows[row].key);
    shown_.push_back({.row = row,
                      .depth = rows[row].depth - rows[top].depth,
                      .isFolded = isFolded,
                      .isContext = isMatch_[row] == 0});
    if (isFolded) continue;
    SortRows(members);
    ahead.insert(ahead.end(), members.rbegin(), members.rend());
  }
}

Cell View::Sum(const ColumnChoice &choice) const {
  Cell sum;
  if (!choice.column->AddsUp()) return sum;
  const auto found = cells_.find({choice.column, choice.isRate});
  if (found == cells_.end()) return sum;
  std::vector<char> isCovered(now_->rows.size(), 0);
  for (size_t row = 0; row < isCovered.size(); ++row) {
    const int parent = now_->rows[row].parent;
    isCovered[row] = parent >= 0 ? isCovered[static_cast<size_t>(parent)] : char{0};
    if (isCovered[row] != 0 || isCounted_[row] == 0) continue;
    Add(sum, found->second[row]);
    if (found->second[row].hasNumber()) isCovered[row] = 1;
  }
  return sum;
}

// Moves the cursor to the line of the selected row. A cursor on the first line stays there. If the selected row has
// vanished, the cursor stays on its line, or moves to the last line.
void View::SelectRow() {
  Settings &settings = *settings_;
  const auto isSelected = [&](const ShownRow &shown) { return now_->rows[shown.row].key == settings.selected; };
  const auto found = std::ranges::find_if(shown_, isSelected);
  if (settings.cursor > 0 && found != shown_.end()) settings.cursor = static_cast<size_t>(found - shown_.begin());
  if (settings.cursor >= shown_.size()) settings.cursor = shown_.empty() ? 0 : shown_.size() - 1;
  settings.selected = shown_.empty() ? "" : now_->rows[shown_[settings.cursor].row].key;
}

}  // namespace nodal::top
