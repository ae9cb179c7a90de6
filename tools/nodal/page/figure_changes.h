// A figure over time, as its changes.
#ifndef NODAL_PAGE_FIGURE_CHANGES_H
#define NODAL_PAGE_FIGURE_CHANGES_H

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace nodal {

struct FigureValue {
  enum Kind : uint8_t { kNoRecord, kUnreadable, kAllOnes, kNumber };

  Kind kind = kNoRecord;
  int64_t number = 0;

  bool operator==(const FigureValue &) const = default;
};

inline FigureValue NumberValue(int64_t number) { return {.kind = FigureValue::kNumber, .number = number}; }

// No host has more than the largest number; only a forged history does.
inline int64_t AmountOf(uint64_t number) { return number > INT64_MAX ? INT64_MAX : static_cast<int64_t>(number); }

struct FigureChange {
  uint32_t instant;
  FigureValue value;  // from this instant to the next change

  bool operator==(const FigureChange &) const = default;
};

// In the order of instants. Before the first change, there is no record.
using FigureChanges = std::vector<FigureChange>;

// Adds a value unless it is the last one. Returns whether it added it. REQUIRES: no later instant was added.
bool AddValue(FigureChanges &changes, uint32_t instant, FigureValue value);

FigureValue ValueAt(const FigureChanges &changes, uint32_t instant);

// Omits changes to numbers that differ from the number kept before by at most `part` of it. Keeps the others as they
// are.
FigureChanges WithoutSmallChanges(const FigureChanges &changes, double part);

// The changes of a column, by row:
//
//   the greatest common divisor of the numbers
//   for each row, the number of its changes
//   for each change, the instants since the change before in the row; for the first change, the instant
//   for each change, a token: 0 no record, 1 unreadable, 2 all ones, 3 a large number, whose 8 bytes follow, or
//     4 plus the difference from the number before in the row, divided by the divisor, mapped to an unsigned integer:
//     0, -1, 1, -2, 2 become 0, 1, 2, 3, 4
//
// All integers are varints: seven bits a byte, the lowest first; the highest bit of a byte is set if another follows.
// The 8 bytes are little-endian and signed.
std::string EncodedColumn(std::span<const FigureChanges> rows);

}  // namespace nodal

#endif  // NODAL_PAGE_FIGURE_CHANGES_H
