// The figures of the live view, and their texts.
#ifndef NODAL_TOP_CELL_H
#define NODAL_TOP_CELL_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace nodal::top {

enum class CellState : uint8_t {
  kNone,         // the row has no such figure
  kUnavailable,  // the figure exists, but its value is not known now
  kUnlimited,
  kAtLeast,  // a sum without the values that are unavailable
  kValue,
};

struct Cell {
  CellState state = CellState::kNone;
  double number = 0;  // for kAtLeast and kValue; amounts of memory are in KB

  bool hasNumber() const { return state == CellState::kAtLeast || state == CellState::kValue; }
};

constexpr Cell ValueCell(double number) { return {CellState::kValue, number}; }
constexpr Cell UnavailableCell() { return {CellState::kUnavailable}; }

// Adds a part to a sum. A sum starts as Cell().
void Add(Cell &sum, const Cell &part);

// Returns the change per second between two values of a counter. It is unavailable if a value or the time is not known,
// or if the counter went backwards.
Cell RateOf(const Cell &before, const Cell &now, double seconds);

// Whether `a` comes before `b`. Figures without a value come last in either direction.
bool ComesBefore(const Cell &a, const Cell &b, bool isAscending);

enum class Unit : uint8_t { kAuto, kBytes, kKB, kMB, kPages };

// Parses auto, b, kb, mb or pg, in upper or lower case.
std::optional<Unit> ParseUnit(std::string_view text);
std::string_view NameOf(Unit unit);

// The meaning of a number, which decides how it is shown.
enum class Quantity : uint8_t { kAmount, kCount, kIdentifier, kYesNo, kGroupFlags, kMemoryState, kSwapper };

// Formats a cell: "-" is unavailable, "max" is unlimited, "." is no such figure, and ">" precedes a lower bound.
std::string CellText(const Cell &cell, Quantity quantity, Unit unit, bool isRate);

// Formats an amount of memory as CellText does.
std::string AmountText(double kb, Unit unit);

}  // namespace nodal::top

#endif  // NODAL_TOP_CELL_H
