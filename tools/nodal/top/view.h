// The part of a sample that a screen shows: rows in order, and the figures of the columns. It is independent of the
// terminal.
#ifndef NODAL_TOP_VIEW_H
#define NODAL_TOP_VIEW_H

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "tools/nodal/top/reading.h"

namespace nodal::top {

// The user's choices for a screen.
struct Settings {
  std::vector<ColumnChoice> columns = {};  // without the name, which is always first
  ColumnChoice sort = {};                  // if its column is null, the rows are in the host's order
  bool isAscending = false;
  bool isFlat = false;
  bool hidesIdle = false;
  std::string filter = {};
  std::string subtree = {};  // the key of its top row; empty: everything
  std::set<std::string> folded = {};
  // The key of the row under the cursor.
  std::string selected = {};
  size_t cursor = 0;  // the line of the selected row
  size_t top = 0;     // the first line on the screen
};

Settings DefaultSettings(const Screen &screen);

// A line of the table.
struct ShownRow {
  size_t row;
  int depth = 0;
  bool isFolded = false;
  bool isContext = false;  // shown only because a row below it matches
};

class View {
 public:
  explicit View(const Screen &screen) : screen_(&screen) {}

  // `before` is an earlier sample, or null. Moves the cursor to the line that shows the selected row.
  void Update(const Reading &now, const Reading *before, double seconds, Settings &settings);

  const std::vector<ShownRow> &rows() const { return shown_; }
  const Screen &screen() const { return *screen_; }

  Cell At(const ColumnChoice &choice, size_t row) const;

  // Returns the sum over the shown rows. Leaves out a row below another shown row that has the figure, because that
  // figure includes the row. There is no sum for a column that does not add up.
  Cell Sum(const ColumnChoice &choice) const;

  size_t matches() const { return matches_; }  // the number of shown rows, without context
  bool isSubtreeGone() const { return isSubtreeGone_; }

 private:
  using Cells = std::vector<Cell>;

  const Cells &CellsOf(const ColumnChoice &choice);
  Cells Compute(const ColumnChoice &choice);
  void AddRates(const Column &column, Cells &cells) const;
  void AddMembers(Cells &cells) const;
  void FindRowsBefore();
  void FindActive();
  void FindMatches();
  bool IsHidden(size_t row) const;
  void ListRows();
  void ListTree(size_t top);
  void SortRows(std::vector<size_t> &rows);
  void SelectRow();

  const Screen *screen_;
  const Reading *now_ = nullptr;
  const Reading *before_ = nullptr;
  double seconds_ = 0;
  Settings *settings_ = nullptr;

  std::map<std::pair<const Column *, bool>, Cells> cells_;
  std::vector<size_t> rowsBefore_;  // the index of each row in the previous sample, or kNoRow
  std::vector<char> inSubtree_, isActive_, isMatch_, hasMatchBelow_;
  std::vector<std::vector<size_t>> members_;
  std::vector<ShownRow> shown_;
  std::vector<char> isCounted_;
  size_t matches_ = 0;
  bool isSubtreeGone_ = false;
};

}  // namespace nodal::top

#endif  // NODAL_TOP_VIEW_H
