// The table of a screen as lines of text.
#ifndef NODAL_TOP_TABLE_PAINTER_H
#define NODAL_TOP_TABLE_PAINTER_H

#include <cstddef>
#include <string>
#include <vector>

#include "tools/nodal/top/frame.h"
#include "tools/nodal/top/view.h"

namespace nodal::top {

// REQUIRES: PlaceIn or PlaceAll is called first. The arguments of the constructor must outlive the painter.
class TablePainter {
 public:
  TablePainter(const View &view, const Reading &reading, const Settings &settings, Unit unit)
      : view_(view), reading_(reading), settings_(settings), unit_(unit) {}

  // Places columns for a terminal: as many as fit, and always the column that sorts.
  void PlaceIn(size_t width);

  // Places all columns for a file, each as wide as its texts. Long names are truncated.
  void PlaceAll();

  Line Headings() const;
  Line RowLine(const ShownRow &row, Style style) const;
  Line SumLine() const;

 private:
  struct PlacedColumn {
    ColumnChoice choice;
    size_t width;
  };

  void Place(size_t width, size_t first);
  bool IsTree() const;
  std::string NameText(const ShownRow &shown) const;
  std::string CellTextOf(const ColumnChoice &choice, const ShownRow &shown) const;
  std::string SumText(const ColumnChoice &choice) const;
  std::string SumLabel() const;
  std::string Heading(const ColumnChoice &choice) const;
  Style HeadingStyle(const ColumnChoice &choice) const;
  Style StyleOf(const ColumnChoice &choice, const ShownRow &row, Style style) const;

  const View &view_;
  const Reading &reading_;
  const Settings &settings_;
  Unit unit_;
  std::vector<PlacedColumn> places_;
  size_t nameWidth_ = 0;
  size_t indent_ = 0;  // the largest indentation
};

}  // namespace nodal::top

#endif  // NODAL_TOP_TABLE_PAINTER_H
