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

// Reduces a number above INT64_MAX to INT64_MAX. Only a forged history contains such numbers.
inline int64_t AmountOf(uint64_t number) { return number > INT64_MAX ? INT64_MAX : static_cast<int64_t>(number); }

struct FigureChange {
  uint32_t instant;
  FigureValue value;  // from this instant to the next change

  bool operator==(const FigureChange &) const = default;
};

// The changes of a figure, in the order of instants. Before the first change, there is no record.
using FigureChanges = std::vector<FigureChange>;

// Adds a value unless it equals the last one. Returns whether it added the value. REQUIRES: no later instant was added.
bool AddValue(FigureChanges &changes, uint32_t instant, FigureValue value);

FigureValue ValueAt(const FigureChanges &changes, uint32_t instant);

// Omits a change to a number that differs from the last kept number by at most `part` of that number. Keeps all other
// changes.
FigureChanges WithoutSmallChanges(const FigureChanges &changes, double part);

// Encodes the changes of a column, by row:
//
//   The greatest common divisor of the numbers.
//   For each row, the number of its changes.
//   For each change, the number of instants since the row's previous change; for the first change, the instant.
//   For each change, a token:
//
//     Token 0 means no record.
//     Token 1 means unreadable.
//     Token 2 means all bits set.
//     Token 3 means a large number (2^50 or more, or -2^50 or less), whose 8 bytes follow.
//     Any other token is 4 plus the difference from the row's previous number. The difference is divided by the
//     divisor, and mapped to an unsigned integer: 0, -1, 1, -2, 2 become 0, 1, 2, 3, 4.
//
// Large numbers are left out of the divisor and the differences. Their 8 bytes are little-endian and signed. All other
// integers are varints: seven bits per byte, the lowest bits first. The highest bit of a byte is set if another byte
// follows.
std::string EncodedColumn(std::span<const FigureChanges> rows);

}  // namespace nodal

#endif  // NODAL_PAGE_FIGURE_CHANGES_H
