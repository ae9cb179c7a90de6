#include "tools/nodal/top/cell.h"

#include <strings.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "platkit/group_flags.h"
#include "platkit/memory_states.h"

namespace nodal::top {
namespace {

struct UnitForm {
  Unit unit;
  std::string_view name;
  double perKB;
};

constexpr UnitForm kUnits[] = {{Unit::kAuto, "auto", 1},
                               {Unit::kBytes, "b", 1024},
                               {Unit::kKB, "kb", 1},
                               {Unit::kMB, "mb", 1.0 / 1024},
                               {Unit::kPages, "pg", 1.0 / 4}};

const UnitForm &FormOf(Unit unit) { return *std::ranges::find(kUnits, unit, &UnitForm::unit); }

std::string Digits(double number, int decimals) {
  char text[400];
  std::snprintf(text, sizeof text, "%.*f", decimals, number);
  return text;
}

// Formats a number as three digits and a letter. `units` contains the letter for each power of `base`.
std::string Scaled(double number, double base, std::string_view units) {
  size_t unit = 0;
  for (; std::abs(number) >= 999.5 && unit + 1 < units.size(); ++unit)
    number /= base;
  const double size = std::abs(number);
  const int decimals = size >= 99.95 ? 0 : size >= 9.995 ? 1 : 2;
  return Digits(number, unit == 0 && number == std::floor(number) ? 0 : decimals) + std::string(1, units[unit]);
}

std::string CountText(double count, Unit unit, bool isRate) {
  constexpr double kMaxCount = 1e6;
  if (unit == Unit::kAuto && std::abs(count) >= kMaxCount) return Scaled(count / 1000, 1000, "kMGTPE");
  return Digits(count, isRate && count < 100 && count != std::floor(count) ? 2 : 0);
}

// Formats the flags of a group as kestrel prints them.
std::string FlagsText(uint32_t flags) {
  std::string text;
  for (const auto &[flag, name] : platkit::kGroupFlagNames) {
    if ((flags & flag) != 0) text += (text.empty() ? "" : ":") + std::string(name);
  }
  return text.empty() ? "(none)" : text;
}

std::string NumberText(double number, Quantity quantity, Unit unit, bool isRate) {
  switch (quantity) {
    case Quantity::kAmount: return AmountText(number, unit);
    case Quantity::kCount: return CountText(number, unit, isRate);
    case Quantity::kIdentifier: return Digits(number, 0);
    case Quantity::kYesNo: return number != 0 ? "y" : "n";
    case Quantity::kGroupFlags: return FlagsText(static_cast<uint32_t>(number));
    case Quantity::kSwapper: return number != 0 ? "hvc" : "vmm";
    case Quantity::kMemoryState:
      return number < static_cast<double>(platkit::kMemoryStates.size())
                 ? std::string(platkit::kMemoryStates[static_cast<size_t>(number)])
                 : "unknown";
  }
  return "";
}

}  // namespace

void Add(Cell &sum, const Cell &part) {
  if (part.state == CellState::kNone) return;
  const bool isWhole =
      part.state == CellState::kValue && (sum.state == CellState::kNone || sum.state == CellState::kValue);
  const bool hasNumber = sum.hasNumber() || part.hasNumber();
  sum.number += part.hasNumber() ? part.number : 0;
  sum.state = isWhole ? CellState::kValue : hasNumber ? CellState::kAtLeast : CellState::kUnavailable;
}

Cell RateOf(const Cell &before, const Cell &now, double seconds) {
  if (now.state == CellState::kNone) return now;
  const bool isKnown = before.state == CellState::kValue && now.state == CellState::kValue;
  if (!isKnown || !(seconds > 0) || now.number < before.number) return UnavailableCell();
  return ValueCell((now.number - before.number) / seconds);
}

bool ComesBefore(const Cell &a, const Cell &b, bool isAscending) {
  const auto rank = [](const Cell &cell) {
    return cell.state == CellState::kNone ? 2 : cell.state == CellState::kUnavailable ? 1 : 0;
  };
  if (rank(a) != rank(b)) return rank(a) < rank(b);
  if (rank(a) != 0) return false;
  const auto number = [](const Cell &cell) { return cell.hasNumber() ? cell.number : HUGE_VAL; };
  return isAscending ? number(a) < number(b) : number(a) > number(b);
}

std::optional<Unit> ParseUnit(std::string_view text) {
  const std::string name(text);
  for (const UnitForm &form : kUnits) {
    if (strcasecmp(name.c_str(), form.name.data()) == 0) return form.unit;
  }
  return std::nullopt;
}

std::string_view NameOf(Unit unit) { return FormOf(unit).name; }

std::string AmountText(double kb, Unit unit) {
  if (unit != Unit::kAuto) return Digits(std::ceil(kb * FormOf(unit).perKB), 0);
  return std::abs(kb) < 1 && kb != 0 ? Scaled(kb * 1024, 1024, "B") : Scaled(kb, 1024, "KMGTPEZY");
}

std::string CellText(const Cell &cell, Quantity quantity, Unit unit, bool isRate) {
  switch (cell.state) {
    case CellState::kNone: return ".";
    case CellState::kUnavailable: return "-";
    case CellState::kUnlimited: return "max";
    case CellState::kAtLeast: return ">" + NumberText(cell.number, quantity, unit, isRate);
    case CellState::kValue: return NumberText(cell.number, quantity, unit, isRate);
  }
  return "";
}

}  // namespace nodal::top
