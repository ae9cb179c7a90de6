#include "src/table/figure.h"

#include <gtest/gtest.h>

#include "platkit/records.h"

namespace kestrel {
namespace {

using enum FigureUnit;

#pragma pack(push, 1)
struct Row {
  uint8_t byte;
  uint64_t kb;
  int32_t kb32;
  char text[4];
  GroupAllocRecord alloc;
  uint16_t tag;
  const char *name;
};
#pragma pack(pop)

// The figure that a lambda takes from a row.
template <typename Read>
constexpr Figure Of(FigureUnit unit, Read) {
  return FigureOf<Row, Read>(unit, FigureSum::kNoSum);
}

uint64_t Displayed(const Figure &figure, const Row &row, ReportUnit unit) {
  return figure.Displayed(figure.number(&row), unit);
}

constexpr Figure kPlainByte = Of(kPlain, [](auto &row) { return row.byte; });
constexpr Figure kInKB = Of(kKB, [](auto &row) { return row.kb; });
constexpr Figure kInKB32 = Of(kKB, [](auto &row) { return row.kb32; });
constexpr Figure kInPages = Of(kPages, [](auto &row) { return row.kb; });
constexpr Figure kInBytes = Of(kBytes, [](auto &row) { return row.kb; });
constexpr Figure kShares = Of(kPlain, [](auto &row) { return row.alloc.shares; });
constexpr Figure kText = Of(kPlain, [](auto &row) { return Text(row.text); });
constexpr Figure kName = Of(kPlain, [](auto &row) { return Text(row.name); });

TEST(Figure, ReadsUnalignedFields) {
  Row row = {};
  row.byte = 200;
  row.kb = 0x0123456789abcdef;
  row.alloc.shares = -5;
  EXPECT_EQ(Displayed(kPlainByte, row, ReportUnit::kMB), 200u);
  EXPECT_EQ(Displayed(kInKB, row, ReportUnit::kKB), 0x0123456789abcdefu);
  EXPECT_EQ(Displayed(kShares, row, ReportUnit::kMB), static_cast<uint64_t>(-5)) << "sign-extended";
}

TEST(Figure, ATextEndsAtItsTerminatorOrItsLastByte) {
  Row row = {};
  EXPECT_EQ(kText.text(&row), "");
  std::memcpy(row.text, "ab\0d", 4);
  EXPECT_EQ(kText.text(&row), "ab");
  std::memcpy(row.text, "abcd", 4);
  EXPECT_EQ(kText.text(&row), "abcd");
}

TEST(Figure, ATextPointerMayBeNull) {
  Row row = {};
  EXPECT_EQ(kName.text(&row), "");
  row.name = "a name of any length";
  EXPECT_EQ(kName.text(&row), "a name of any length");
}

TEST(Figure, ConvertsKB) {
  Row row = {};
  row.kb = 1025;
  EXPECT_EQ(Displayed(kInKB, row, ReportUnit::kMB), 2u);
  EXPECT_EQ(Displayed(kInKB, row, ReportUnit::kPage), 257u);
  EXPECT_EQ(Displayed(kInKB, row, ReportUnit::kBytes), 1025u * 1024);
  row.kb = UINT64_MAX;
  EXPECT_EQ(Displayed(kInKB, row, ReportUnit::kMB), UINT64_MAX) << "not available";
}

TEST(Figure, ConvertsPages) {
  Row row = {};
  row.kb = 257;
  EXPECT_EQ(Displayed(kInPages, row, ReportUnit::kKB), 1028u);
  EXPECT_EQ(Displayed(kInPages, row, ReportUnit::kMB), 2u);
}

TEST(Figure, ConvertsBytesByWayOfKB) {
  Row row = {};
  row.kb = 4097;
  EXPECT_EQ(Displayed(kInBytes, row, ReportUnit::kBytes), 4097u);
  EXPECT_EQ(Displayed(kInBytes, row, ReportUnit::kKB), 5u);
  EXPECT_EQ(Displayed(kInBytes, row, ReportUnit::kPage), 2u);
  EXPECT_EQ(Displayed(kInBytes, row, ReportUnit::kMB), 1u);
  row.kb = UINT64_MAX;
  EXPECT_EQ(Displayed(kInBytes, row, ReportUnit::kBytes), UINT64_MAX);
  EXPECT_EQ(Displayed(kInBytes, row, ReportUnit::kKB), 0u) << "all ones are an amount like any other: it wraps";
}

TEST(Figure, CutsAConvertedFigureToItsWidth) {
  Row row = {};
  row.kb32 = -1;
  EXPECT_EQ(Displayed(kInKB32, row, ReportUnit::kMB), UINT64_MAX) << "-1 stays -1";
  row.kb32 = -2;  // sign-extended, rounded up, shifted, truncated to 32 bits
  EXPECT_EQ(Displayed(kInKB32, row, ReportUnit::kPage), 0u);
  row.kb32 = -2048;
  EXPECT_EQ(Displayed(kInKB32, row, ReportUnit::kMB), static_cast<uint64_t>(-2));
  row.kb32 = 1;
  EXPECT_EQ(Displayed(kInKB32, row, ReportUnit::kMB), 1u);
}

TEST(Figure, CutsByWidthAndSign) {
  EXPECT_EQ(kPlainByte.Cut(0x1ff), 255u);
  EXPECT_EQ(Of(kPlain, [](auto &row) { return row.tag; }).Cut(0x12345), 0x2345u);
  EXPECT_EQ(kInKB32.Cut(0x1'8000'0000), 0xffff'ffff'8000'0000u);
  EXPECT_EQ(kInKB32.Cut(0x1'7fff'ffff), 0x7fff'ffffu);
  EXPECT_EQ(kInKB.Cut(UINT64_MAX), UINT64_MAX);
}

}  // namespace
}  // namespace kestrel
