#include "src/table/figure.h"

#include <gtest/gtest.h>

#include "platkit/records.h"

namespace kestrel {
namespace {

#pragma pack(push, 1)
struct Row {
  uint8_t byte;
  uint64_t kb;
  int32_t kb32;
  uint32_t count;
  uint64_t pages;
  char text[4];
  GroupAllocRecord alloc;
  uint16_t tag;
  uint64_t mean;
  const char *name;
};
#pragma pack(pop)

Row Sample() {
  Row row = {};
  row.byte = 200;
  row.kb = 1025;
  row.kb32 = -1;
  row.count = 7;
  row.pages = 257;
  std::memcpy(row.text, "abcd", 4);
  row.alloc.shares = -5;
  return row;
}

uint64_t Number(const Figure &figure, const Row &row, ReportUnit unit) {
  return LoadFigure(figure, &row, unit).number();
}

TEST(Figure, LoadsEveryType) {
  const Row row = Sample();
  EXPECT_EQ(Number(PLAIN(byte), row, ReportUnit::kMB), 200u);
  EXPECT_EQ(Number(PLAIN(kb), row, ReportUnit::kMB), 1025u);
  EXPECT_EQ(Number(PLAIN(alloc.shares), row, ReportUnit::kMB), static_cast<uint64_t>(-5));
  EXPECT_EQ(LoadFigure(PLAIN(text), &row, ReportUnit::kMB).text(), "abcd") << "no terminator in its four bytes";
  Row empty = {};
  EXPECT_EQ(LoadFigure(PLAIN(text), &empty, ReportUnit::kMB).text(), "");
}

TEST(Figure, ConvertsToTheDisplayUnit) {
  Row row = Sample();
  EXPECT_EQ(Number(KB(kb), row, ReportUnit::kMB), 2u);
  EXPECT_EQ(Number(KB(kb), row, ReportUnit::kPage), 257u);
  EXPECT_EQ(Number(KB(kb), row, ReportUnit::kBytes), 1025u * 1024);
  EXPECT_EQ(Number(PAGES(pages), row, ReportUnit::kKB), 1028u);
  EXPECT_EQ(Number(PAGES(pages), row, ReportUnit::kMB), 2u);
  row.kb = UINT64_MAX;
  EXPECT_EQ(Number(KB(kb), row, ReportUnit::kMB), UINT64_MAX);
}

TEST(Figure, NarrowSignedAmountsAreCutBack) {
  Row row = Sample();
  EXPECT_EQ(Number(KB(kb32), row, ReportUnit::kMB), UINT64_MAX) << "-1 stays -1";
  row.kb32 = -2;  // sign-extended, rounded up, shifted, cut back to 32 bits
  EXPECT_EQ(Number(KB(kb32), row, ReportUnit::kPage), 0u);
  row.kb32 = -2048;
  EXPECT_EQ(Number(KB(kb32), row, ReportUnit::kMB), static_cast<uint64_t>(-2));
  row.kb32 = 1;
  EXPECT_EQ(Number(KB(kb32), row, ReportUnit::kMB), 1u);
}

TEST(Figure, Sums) {
  const Row row = Sample();
  Row sums = {};
  for (int i = 0; i < 2; ++i) {
    SumFigure(KB(kb).Sum(FigureSum::kAdd), &row, &sums);
    SumFigure(PLAIN(count).Sum(FigureSum::kAddTwice), &row, &sums);
    SumFigure(PLAIN(pages).Sum(FigureSum::kLast), &row, &sums);
    SumFigure(KB(alloc.max).Sum(FigureSum::kAllOnes), &row, &sums);
    SumFigure(PLAIN(alloc.shares), &row, &sums);
    SumFigure(PLAIN(text).Sum(FigureSum::kAdd), &row, &sums);
  }
  EXPECT_EQ(Number(PLAIN(kb), sums, ReportUnit::kKB), 2050u);
  EXPECT_EQ(Number(PLAIN(count), sums, ReportUnit::kKB), 28u);
  EXPECT_EQ(Number(PLAIN(pages), sums, ReportUnit::kKB), 257u);
  EXPECT_EQ(Number(PLAIN(alloc.max), sums, ReportUnit::kKB), UINT64_MAX);
  EXPECT_EQ(Number(PLAIN(alloc.shares), sums, ReportUnit::kKB), 0u);
  EXPECT_EQ(LoadFigure(PLAIN(text), &sums, ReportUnit::kKB).text(), "");
}

TEST(Figure, NoFigureIsZeroAndEmpty) {
  Row row = Sample(), sums = {};
  EXPECT_EQ(Number(Figure(), row, ReportUnit::kKB), 0u);
  EXPECT_EQ(LoadFigure(Figure(), &row, ReportUnit::kKB).text(), "");
  SumFigure(Figure(), &row, &sums);
  const Row none = {};
  EXPECT_EQ(std::memcmp(&sums, &none, sizeof sums), 0);
}

TEST(Figure, LoadsTextByItsAddress) {
  Row row = {};
  EXPECT_EQ(LoadFigure(PLAIN(name), &row, ReportUnit::kKB).text(), "") << "there is none";
  row.name = "a name of any length";
  EXPECT_EQ(LoadFigure(PLAIN(name), &row, ReportUnit::kKB).text(), "a name of any length");
}

TEST(Figure, YesAndNoAreCharactersAndTexts) {
  Row row = {};
  EXPECT_EQ(Number(YES_NO(byte), row, ReportUnit::kMB), static_cast<uint64_t>('n'));
  EXPECT_EQ(LoadFigure(YES_NO(byte), &row, ReportUnit::kMB).text(), "n");
  row.byte = 128;
  EXPECT_EQ(Number(YES_NO(byte), row, ReportUnit::kMB), static_cast<uint64_t>('y'));
  EXPECT_EQ(LoadFigure(YES_NO(byte), &row, ReportUnit::kMB).text(), "y");
}

TEST(Figure, BytesAreRoundedUpToKbFirst) {
  Row row = {};
  row.kb = 4097;
  EXPECT_EQ(Number(BYTES(kb), row, ReportUnit::kBytes), 4097u);
  EXPECT_EQ(Number(BYTES(kb), row, ReportUnit::kKB), 5u);
  EXPECT_EQ(Number(BYTES(kb), row, ReportUnit::kPage), 2u);
  EXPECT_EQ(Number(BYTES(kb), row, ReportUnit::kMB), 1u);
  row.kb = UINT64_MAX;
  EXPECT_EQ(Number(BYTES(kb), row, ReportUnit::kBytes), UINT64_MAX);
  EXPECT_EQ(Number(BYTES(kb), row, ReportUnit::kKB), 0u) << "no mark for what is missing: it wraps";
  row.tag = 65535;
  EXPECT_EQ(Number(PLAIN(tag), row, ReportUnit::kBytes), 65535u);
}

TEST(Figure, WhatIsNotAvailableMayBeLeftOutOfASum) {
  Row row = Sample(), sums = {};
  SumFigure(KB(kb).Sum(FigureSum::kAddAvailable), &row, &sums);
  row.kb = UINT64_MAX;
  row.count = UINT32_MAX;
  SumFigure(KB(kb).Sum(FigureSum::kAddAvailable), &row, &sums);
  SumFigure(PLAIN(count).Sum(FigureSum::kAddAvailable), &row, &sums);
  row.kb = UINT32_MAX;  // all ones of a narrower field only
  SumFigure(KB(kb).Sum(FigureSum::kAddAvailable), &row, &sums);
  EXPECT_EQ(uint64_t{sums.kb}, uint64_t{1025} + UINT32_MAX);
  EXPECT_EQ(uint32_t{sums.count}, 0u);
}

TEST(Figure, MeansAreRoundedDown) {
  constexpr Figure kFigure = PLAIN(mean).Sum(FigureSum::kMean);
  Row row = {}, sums = {};
  for (const uint64_t value : {10u, 20u, 31u}) {
    row.mean = value;
    SumFigure(kFigure, &row, &sums);
  }
  FinishSum(kFigure, &sums, 0);
  EXPECT_EQ(uint64_t{sums.mean}, 61u) << "a mean of no rows is their sum";
  FinishSum(PLAIN(mean).Sum(FigureSum::kAdd), &sums, 3);
  EXPECT_EQ(uint64_t{sums.mean}, 61u) << "a sum stays one";
  FinishSum(kFigure, &sums, 3);
  EXPECT_EQ(uint64_t{sums.mean}, 20u);
}

TEST(Figure, SumsWrapInTheirOwnWidth) {
  Row row = Sample(), sums = {};
  row.count = 0x80000001u;
  row.kb = UINT64_MAX;
  row.byte = 255;
  row.tag = 32769;
  for (int i = 0; i < 2; ++i) {
    SumFigure(PLAIN(count).Sum(FigureSum::kAdd), &row, &sums);
    SumFigure(PLAIN(tag).Sum(FigureSum::kAdd), &row, &sums);
    SumFigure(KB(kb).Sum(FigureSum::kAdd), &row, &sums);
    SumFigure(PLAIN(byte).Sum(FigureSum::kAdd), &row, &sums);
  }
  EXPECT_EQ(Number(PLAIN(count), sums, ReportUnit::kKB), 2u);
  EXPECT_EQ(Number(PLAIN(kb), sums, ReportUnit::kKB), UINT64_MAX - 1);
  EXPECT_EQ(Number(PLAIN(byte), sums, ReportUnit::kKB), 254u);
  EXPECT_EQ(Number(PLAIN(tag), sums, ReportUnit::kKB), 2u);
}

}  // namespace
}  // namespace kestrel
