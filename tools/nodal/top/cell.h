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
  kUnavailable,  // it has one, but its value is not known now
  kUnlimited,
  kAtLeast,  // a sum that lacks unavailable values
  kValue,
};

struct Cell {
  CellState state = CellState::kNone;
  double number = 0;  // of kAtLeast and kValue; amounts of memory are in KB

  bool hasNumber() const { return state == CellState::kAtLeast || state == CellState::kValue; }
};

constexpr Cell ValueCell(double number) { return {CellState::kValue, number}; }
constexpr Cell UnavailableCell() { return {CellState::kUnavailable}; }

// Adds a part to a sum, which starts with no figure.
void Add(Cell &sum, const Cell &part);

// The change per second between two values of a counter. Unavailable if the counter went backwards.
Cell RateOf(const Cell &before, const Cell &now, double seconds);

// Ascending. Figures without a value come last in both directions.
bool ComesBefore(const Cell &a, const Cell &b, bool isAscending);

enum class Unit : uint8_t { kAuto, kBytes, kKB, kMB, kPages };

// auto, b, kb, mb or pg, in either case.
std::optional<Unit> ParseUnit(std::string_view text);
std::string_view NameOf(Unit unit);

// The meaning of a number, which decides how it is shown.
enum class Quantity : uint8_t { kAmount, kCount, kIdentifier, kYesNo, kGroupFlags, kMemoryState, kSwapper };

// "-" is unavailable, "max" unlimited, "." no such figure; ">" precedes a lower bound.
std::string CellText(const Cell &cell, Quantity quantity, Unit unit, bool isRate);

// An amount of memory as in CellText.
std::string AmountText(double kb, Unit unit);

}  // namespace nodal::top

#endif  // NODAL_TOP_CELL_H
