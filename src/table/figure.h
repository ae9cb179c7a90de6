// The figures that columns show: their values, their units, and how they are summed.
#ifndef KESTREL_TABLE_FIGURE_H
#define KESTREL_TABLE_FIGURE_H

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <type_traits>

#include "src/table/unit.h"

namespace kestrel {

// The unit of a figure before conversion.
enum class FigureUnit : uint8_t {
  kPlain,  // never converted
  kKB,     // all bits set: not available, or unlimited
  kPages,  // of 4 KB
  kBytes,
  kYesNo,  // prints n for 0, else y
};

// How the figures of all rows become one figure of a total row. Sums use unconverted figures, so that each sum is
// rounded only once. Sums wrap at the width of the figure.
enum class FigureSum : uint8_t {
  kNoSum,
  kAdd,
  kAddAvailable,  // omits figures with all bits set: not available
  kAddTwice,
  kMean,     // rounded down
  kLast,     // the figure of the last row
  kAllOnes,  // all bits set, regardless of the rows
};

// One figure of a row. It is a number or a text.
struct Figure {
  uint64_t (*number)(const void *row) = nullptr;  // signed numbers are sign-extended
  std::string_view (*text)(const void *row) = nullptr;
  uint8_t bits = 64;  // width of the number
  bool isSigned = false;
  FigureUnit unit = FigureUnit::kPlain;
  FigureSum sum = FigureSum::kNoSum;

  // Truncates a number to the figure's width and extends it again.
  uint64_t Cut(uint64_t value) const {
    const int unused = 64 - bits;
    if (isSigned) return static_cast<uint64_t>(static_cast<int64_t>(value << unused) >> unused);
    return value << unused >> unused;
  }

  // The number as a table shows it.
  uint64_t Displayed(uint64_t value, ReportUnit displayUnit) const {
    switch (unit) {
      case FigureUnit::kPlain:
      case FigureUnit::kYesNo: return value;
      case FigureUnit::kKB: return Cut(OptionalKBToUnit(value, displayUnit));
      case FigureUnit::kPages: return Cut(PagesToUnit(value, displayUnit));
      case FigureUnit::kBytes: return Cut(BytesToUnit(value, displayUnit));
    }
    return value;
  }
};

template <typename Row, typename Read>
uint64_t ReadNumber(const void *row) {
  return static_cast<uint64_t>(Read()(*static_cast<const Row *>(row)));
}

template <typename Row, typename Read>
std::string_view ReadText(const void *row) {
  return Read()(*static_cast<const Row *>(row));
}

// The figure that `Read` returns for a row of type `Row`. `Read` is the type of a lambda without captures. The lambda
// returns an integer or a string_view by value, so it can read the unaligned fields of packed records.
template <typename Row, typename Read>
constexpr Figure FigureOf(FigureUnit unit, FigureSum sum) {
  using Type = std::invoke_result_t<Read, const Row &>;
  Figure figure = {.unit = unit, .sum = sum};
  if constexpr (std::same_as<Type, std::string_view>) {
    figure.text = ReadText<Row, Read>;
  } else {
    static_assert(std::integral<Type>, "a text is a string_view: use Text()");
    figure.number = ReadNumber<Row, Read>;
    figure.bits = sizeof(Type) * 8;
    figure.isSigned = std::is_signed_v<Type>;
    if (sum == FigureSum::kMean && sizeof(Type) != sizeof(uint64_t)) std::abort();  // cannot be a constant expression
  }
  return figure;
}

// The text of a field, which may fill the field without a terminator.
template <size_t size>
std::string_view Text(const char (&field)[size]) {
  return {field, strnlen(field, size)};
}

// A terminated text; empty for null.
template <std::same_as<const char *> Pointer>
std::string_view Text(Pointer text) {
  return text == nullptr ? std::string_view() : text;
}

}  // namespace kestrel

#endif  // KESTREL_TABLE_FIGURE_H
