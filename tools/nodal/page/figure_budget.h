// Limits the memory for the figures of a span, however large its history is.
#ifndef NODAL_PAGE_FIGURE_BUDGET_H
#define NODAL_PAGE_FIGURE_BUDGET_H

#include <cstddef>
#include <string>
#include <utility>

#include "tools/nodal/support/output.h"

namespace nodal {

class FigureBudget {
 public:
  // A figure takes 24 bytes.
  static constexpr size_t kMaxFigures = size_t{32} << 20;

  explicit FigureBudget(std::string folder, size_t most = kMaxFigures) : folder_(std::move(folder)), left_(most) {}

  // Take and TakeRow throw a Failure if too little of the budget is left.
  void Take(size_t figures = 1) {
    if (figures > left_)
      throw Failure(folder_, "too many figures for a page: choose a shorter span with --from and --to");
    left_ -= figures;
  }
  // Takes the budget that a row, or anything else with a text of this size, needs.
  void TakeRow(size_t textBytes) { Take(32 + textBytes / 16); }

 private:
  const std::string folder_;
  size_t left_;
};

}  // namespace nodal

#endif  // NODAL_PAGE_FIGURE_BUDGET_H
