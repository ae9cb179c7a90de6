// Values of a row, and figures: which field of a report's row a column shows, and how.
#ifndef KESTREL_TABLE_FIGURE_H
#define KESTREL_TABLE_FIGURE_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

#include "src/table/unit.h"

namespace kestrel {

// One value of a row: a number, a text, or both forms of the same. Without either, it is 0 and empty.
class Value {
 public:
  Value() = default;
  Value(uint64_t number) : number_(number) {}
  Value(std::string_view text) : text_(text) {}
  Value(uint64_t number, std::string_view text) : number_(number), text_(text) {}

  uint64_t number() const { return number_; }
  std::string_view text() const { return text_; }

 private:
  uint64_t number_ = 0;
  std::string_view text_;
};

enum class FigureType : uint8_t { kNone, kU8, kU16, kU32, kU64, kI32, kI64, kText, kTextPointer };

// How a figure becomes what is displayed.
enum class FigureUnit : uint8_t {
  kPlain,  // as it is
  kKB,     // an amount in KB, all ones if there is none
  kPages,  // a count of 4 KB pages
  kBytes,
  kYesNo,  // y if it is not 0, else n: a character and a text
};

// How a row's figure goes into a row of sums. Sums are formed before any conversion, so they are rounded once.
enum class FigureSum : uint8_t {
  kLeave,  // not at all
  kAdd,
  kAddAvailable,  // added unless it is all ones, "not available"
  kAddTwice,
  kMean,     // added, and divided by the number of rows in the end
  kLast,     // the sum is the last row's figure
  kAllOnes,  // there is no sum
};

void AMeanTakes64Bits();  // has no body: naming it ends the compilation

// A column's place in a row structure, which may be packed, wire records included.
struct Figure {
  uint16_t offset = 0;
  uint16_t size = 0;
  FigureType type = FigureType::kNone;
  FigureUnit unit = FigureUnit::kPlain;
  FigureSum sum = FigureSum::kLeave;

  consteval Figure Sum(FigureSum how) const {
    if (how == FigureSum::kMean && type != FigureType::kU64) AMeanTakes64Bits();
    Figure figure = *this;
    figure.sum = how;
    return figure;
  }
};

template <typename T>
consteval FigureType FigureTypeOf() {
  if constexpr (std::is_same_v<T, uint8_t>) return FigureType::kU8;
  if constexpr (std::is_same_v<T, uint16_t>) return FigureType::kU16;
  if constexpr (std::is_same_v<T, uint32_t>) return FigureType::kU32;
  if constexpr (std::is_same_v<T, uint64_t>) return FigureType::kU64;
  if constexpr (std::is_same_v<T, int32_t>) return FigureType::kI32;
  if constexpr (std::is_same_v<T, int64_t>) return FigureType::kI64;
  if constexpr (std::is_same_v<std::remove_extent_t<T>, char> && std::is_array_v<T>) return FigureType::kText;
  if constexpr (std::is_same_v<T, const char *>) return FigureType::kTextPointer;
}

template <typename Member>
consteval Figure FigureAt(size_t offset, FigureUnit unit) {
  using T = std::remove_reference_t<Member>;
  return {.offset = static_cast<uint16_t>(offset), .size = sizeof(T), .type = FigureTypeOf<T>(), .unit = unit};
}

// The figure at a member of the report's row, as PLAIN(alloc.shares); `Row` names the row's type where these stand.
#define PLAIN(member) FigureAt<decltype(Row::member)>(offsetof(Row, member), FigureUnit::kPlain)
#define KB(member) FigureAt<decltype(Row::member)>(offsetof(Row, member), FigureUnit::kKB)
#define PAGES(member) FigureAt<decltype(Row::member)>(offsetof(Row, member), FigureUnit::kPages)
#define BYTES(member) FigureAt<decltype(Row::member)>(offsetof(Row, member), FigureUnit::kBytes)
#define YES_NO(member) FigureAt<decltype(Row::member)>(offsetof(Row, member), FigureUnit::kYesNo)

// The displayed value of a figure of the row at `row`. Narrow signed fields are converted sign-extended and cut back.
Value LoadFigure(const Figure &figure, const void *row, ReportUnit unit);

// Adds the figure of one row into a row of sums of the same type, in the field's own width, which wraps.
void SumFigure(const Figure &figure, const void *row, void *sums);

// Turns a sum over so many rows into their mean, rounded down, if the figure is one that has a mean.
void FinishSum(const Figure &figure, void *sums, uint32_t rows);

}  // namespace kestrel

#endif  // KESTREL_TABLE_FIGURE_H
