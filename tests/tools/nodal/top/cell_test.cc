#include "tools/nodal/top/cell.h"

#include <gtest/gtest.h>

namespace nodal::top {
namespace {

constexpr Cell kUnlimited = {CellState::kUnlimited};

std::string Amount(double kb, Unit unit = Unit::kAuto) {
  return CellText(ValueCell(kb), Quantity::kAmount, unit, false);
}

std::string Count(double count, bool isRate = false) {
  return CellText(ValueCell(count), Quantity::kCount, Unit::kAuto, isRate);
}

Cell SumOf(std::initializer_list<Cell> parts) {
  Cell sum;
  for (const Cell &part : parts)
    Add(sum, part);
  return sum;
}

TEST(TopCell, AmountsHaveThreeDigits) {
  EXPECT_EQ(Amount(0), "0K");
  EXPECT_EQ(Amount(0.5), "512B");
  EXPECT_EQ(Amount(1.5), "1.50K");
  EXPECT_EQ(Amount(999), "999K");
  EXPECT_EQ(Amount(999.6), "0.98M");
  EXPECT_EQ(Amount(1024), "1.00M");
  EXPECT_EQ(Amount(10240), "10.0M");
  EXPECT_EQ(Amount(102400), "100M");
  EXPECT_EQ(Amount(3.0 * 1024 * 1024), "3.00G");
  EXPECT_EQ(Amount(18446744073709551614.0), "16.0Z");
}

TEST(TopCell, OtherUnitsRoundUp) {
  EXPECT_EQ(Amount(1025, Unit::kMB), "2");
  EXPECT_EQ(Amount(1025, Unit::kKB), "1025");
  EXPECT_EQ(Amount(1025, Unit::kPages), "257");
  EXPECT_EQ(Amount(1.5, Unit::kBytes), "1536");
}

TEST(TopCell, Counts) {
  EXPECT_EQ(Count(0), "0");
  EXPECT_EQ(Count(999999), "999999");
  EXPECT_EQ(Count(1000000), "1.00M");
  EXPECT_EQ(Count(12345678901.0), "12.3G");
  EXPECT_EQ(Count(0.25, true), "0.25");
  EXPECT_EQ(Count(2, true), "2");
}

TEST(TopCell, OtherQuantities) {
  const auto text = [](double number, Quantity quantity) {
    return CellText(ValueCell(number), quantity, Unit::kAuto, false);
  };
  EXPECT_EQ(text(20000000, Quantity::kIdentifier), "20000000");
  EXPECT_EQ(text(3, Quantity::kYesNo), "y");
  EXPECT_EQ(text(0, Quantity::kYesNo), "n");
  EXPECT_EQ(text(0x801, Quantity::kGroupFlags), "pre:co");
  EXPECT_EQ(text(0, Quantity::kGroupFlags), "(none)");
  EXPECT_EQ(text(4, Quantity::kMemoryState), "low");
  EXPECT_EQ(text(5, Quantity::kMemoryState), "unknown");
  EXPECT_EQ(text(0, Quantity::kSwapper), "vmm");
}

TEST(TopCell, StatesDiffer) {
  const auto text = [](const Cell &cell) { return CellText(cell, Quantity::kAmount, Unit::kAuto, false); };
  EXPECT_EQ(text(Cell()), ".");
  EXPECT_EQ(text(UnavailableCell()), "-");
  EXPECT_EQ(text(kUnlimited), "max");
  EXPECT_EQ(text({CellState::kAtLeast, 5}), ">5K");
}

TEST(TopCell, ASumWithoutAPartIsALowerBound) {
  EXPECT_EQ(SumOf({}).state, CellState::kNone);
  EXPECT_EQ(SumOf({Cell(), Cell()}).state, CellState::kNone);
  EXPECT_EQ(SumOf({Cell(), ValueCell(3), ValueCell(4)}).number, 7);
  EXPECT_EQ(SumOf({Cell(), ValueCell(3), ValueCell(4)}).state, CellState::kValue);
  EXPECT_EQ(SumOf({ValueCell(3), UnavailableCell()}).state, CellState::kAtLeast);
  EXPECT_EQ(SumOf({UnavailableCell(), ValueCell(3), ValueCell(1)}).state, CellState::kAtLeast);
  EXPECT_EQ(SumOf({UnavailableCell(), ValueCell(3), ValueCell(1)}).number, 4);
  EXPECT_EQ(SumOf({UnavailableCell(), UnavailableCell()}).state, CellState::kUnavailable);
}

TEST(TopCell, RatesAreUnknownUnlessTheCounterGrows) {
  EXPECT_EQ(RateOf(ValueCell(10), ValueCell(20), 5).number, 2);
  EXPECT_EQ(RateOf(ValueCell(10), ValueCell(10), 5).state, CellState::kValue);
  EXPECT_EQ(RateOf(ValueCell(20), ValueCell(10), 5).state, CellState::kUnavailable);
  EXPECT_EQ(RateOf(ValueCell(10), ValueCell(20), 0).state, CellState::kUnavailable);
  EXPECT_EQ(RateOf(ValueCell(10), ValueCell(20), -1).state, CellState::kUnavailable);
  EXPECT_EQ(RateOf(UnavailableCell(), ValueCell(20), 5).state, CellState::kUnavailable);
  EXPECT_EQ(RateOf(Cell(), ValueCell(20), 5).state, CellState::kUnavailable);
  EXPECT_EQ(RateOf(ValueCell(1), Cell(), 5).state, CellState::kNone);
}

TEST(TopCell, FiguresWithoutAValueAreLastInBothDirections) {
  for (const bool isAscending : {false, true}) {
    EXPECT_TRUE(ComesBefore(ValueCell(1), UnavailableCell(), isAscending));
    EXPECT_TRUE(ComesBefore(kUnlimited, UnavailableCell(), isAscending));
    EXPECT_TRUE(ComesBefore(UnavailableCell(), Cell(), isAscending));
    EXPECT_FALSE(ComesBefore(Cell(), Cell(), isAscending));
    EXPECT_EQ(ComesBefore(ValueCell(1), ValueCell(2), isAscending), isAscending);
    EXPECT_EQ(ComesBefore(ValueCell(1), kUnlimited, isAscending), isAscending);
  }
}

TEST(TopCell, UnitsByName) {
  EXPECT_EQ(ParseUnit("MB"), Unit::kMB);
  EXPECT_EQ(ParseUnit("auto"), Unit::kAuto);
  EXPECT_EQ(ParseUnit("tb"), std::nullopt);
  EXPECT_EQ(ParseUnit(""), std::nullopt);
}

}  // namespace
}  // namespace nodal::top
