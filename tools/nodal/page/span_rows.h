// The rows of a family over time.
#ifndef NODAL_PAGE_SPAN_ROWS_H
#define NODAL_PAGE_SPAN_ROWS_H

#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "tools/nodal/page/figure_budget.h"
#include "tools/nodal/page/page_span.h"

namespace nodal {

// Finds the rows of a span that the rows of single instants belong to. Rows with equal names and identifiers are the
// same; something that takes the identifier of another thing has a row of its own.
class SpanRows {
 public:
  SpanRows(SpanFamily &family, FigureBudget &budget) : family_(family), budget_(budget) {}

  // Updates which rows are there. Returns the row of the span for each row of the instant. The span gets the columns of
  // the nodes of `now` that its views show.
  const std::vector<size_t> &Update(uint32_t instant, const PageFamily &now);

  // As returned last.
  const std::vector<size_t> &rows() const { return rows_; }

 private:
  using Key = std::tuple<int, int64_t, std::string, std::string, std::map<std::string_view, Argument>>;

  void AddColumns(const PageFamily &now);
  size_t RowOf(const PageRow &row, int parent);
  void AddLife(size_t row, uint32_t instant, int64_t isThere);
  void AddRow(const PageRow &row, int parent);

  SpanFamily &family_;
  FigureBudget &budget_;
  std::map<Key, size_t> known_;
  std::vector<size_t> rows_;
};

}  // namespace nodal

#endif  // NODAL_PAGE_SPAN_ROWS_H
