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

// Maps the rows of single instants to the rows of a span. Rows with equal names and identifiers are the same row. If a
// new instance takes the identifier of an older one but has another name, it has its own row.
class SpanRows {
 public:
  SpanRows(SpanFamily &family, FigureBudget &budget) : family_(family), budget_(budget) {}

  // Adds the new rows of this instant to the span, and records which rows exist at this instant. Returns the row in the
  // span for each row of the instant. The first call adds the columns that the views show.
  const std::vector<size_t> &Update(uint32_t instant, const PageFamily &now);

  // The last result of Update.
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
