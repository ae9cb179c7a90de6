#include "src/table/column_table.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "src/table/report_row.h"
#include "tests/src/table/printed.h"

namespace kestrel {
namespace {

using enum Conversion;

std::vector<ColumnDesc> Columns() {
  return {
      {"gid", "Group ID", 8, kLu, kInTotal | kMandatory},
      {"name", "Group name", 10, kS, kInTotal},
      {"pct", "Percentage", 3, kU},
      {"consumedPeak", "A name wider than its column", 4, kLd, kInTotal},
  };
}

TEST(ColumnTable, AllColumns) {
  auto columns = Columns();
  ColumnsApplySelection(columns, nullptr);
  EXPECT_STREQ(ColumnsDescribeSelection(columns).Text(), "(all)");
  EXPECT_EQ(Printed([&] { TablePrintHead(columns, false); }),
            "------------------------------------\n"
            "     gid       name pct consumedPeak\n"
            "------------------------------------\n");
  EXPECT_EQ(Printed([&] { TablePrintHead(columns, true); }), "gid,name,pct,consumedPeak\n");
}

TEST(ColumnTable, SelectionKeepsTableOrderAndMandatoryColumns) {
  auto columns = Columns();
  ColumnsApplySelection(columns, "::CONSUMEDPEAK::unknown:Name:");
  EXPECT_STREQ(ColumnsDescribeSelection(columns).Text(), "gid:name:consumedPeak");
  const Value values[] = {uint64_t{7}, std::string_view("web"), uint64_t{50}, uint64_t{9}};
  EXPECT_EQ(Printed([&] { TablePrintRow(columns, true, false, values); }), "7,web,9\n");
  EXPECT_EQ(Printed([&] { TablePrintRow(columns, false, false, values); }), "       7        web            9\n");
  EXPECT_EQ(Printed([&] { TablePrintDescriptions(columns); }),
            "Description of report header labels:\n"
            "                 gid: Group ID\n"
            "                name: Group name\n"
            "        consumedPeak: A name wider than its column\n");
}

TEST(ColumnTable, ASelectionOfNothingLeavesMandatoryColumns) {
  for (const char *selection : {"", ":", "unknown", "nam", "names"}) {
    auto columns = Columns();
    ColumnsApplySelection(columns, selection);
    EXPECT_STREQ(ColumnsDescribeSelection(columns).Text(), "gid") << selection;
  }
}

TEST(ColumnTable, WithoutAMandatoryColumnNothingMayBeLeft) {
  std::vector<ColumnDesc> columns = {{"cow", "", 10, kLu, kInTotal}, {"zero", "", 10, kLu, kInTotal}};
  ColumnsApplySelection(columns, "none of them");
  EXPECT_STREQ(ColumnsDescribeSelection(columns).Text(), "(none)");
  const Value values[] = {uint64_t{1}, uint64_t{2}};
  EXPECT_EQ(Printed([&] { TablePrintHead(columns, false); }), "\n\n\n");
  EXPECT_EQ(Printed([&] { TablePrintRow(columns, false, false, values); }), "\n");
  EXPECT_EQ(Printed([&] { TablePrintHead(columns, true); }), "\n");
}

TEST(ColumnTable, ATableWithoutColumns) {
  std::vector<ColumnDesc> columns;
  EXPECT_STREQ(ColumnsDescribeSelection(columns).Text(), "(all)");
  EXPECT_EQ(Printed([&] { TablePrintHead(columns, false); }), "\n\n\n");
  EXPECT_EQ(Printed([&] { TablePrintHead(columns, true); }), "\n");
  EXPECT_EQ(Printed([&] { TablePrintRow(columns, false, false, {}); }), "\n");
}

TEST(ColumnTable, OnlyTheFirst128CharactersOfASelectionCount) {
  const std::string before(124, 'x');
  auto columns = Columns();
  ColumnsApplySelection(columns, (before + ":pct").c_str());
  EXPECT_STREQ(ColumnsDescribeSelection(columns).Text(), "gid:pct");
  columns = Columns();
  ColumnsApplySelection(columns, (before + "x:pct").c_str());
  EXPECT_STREQ(ColumnsDescribeSelection(columns).Text(), "gid");
  columns = Columns();
  ColumnsApplySelection(columns, (before + ":pctx").c_str());
  EXPECT_STREQ(ColumnsDescribeSelection(columns).Text(), "gid:pct") << "the piece is cut, and then it is a name";
}

TEST(ColumnTable, TotalRowBlanksWhatHasNoTotal) {
  auto columns = Columns();
  ColumnsApplySelection(columns, nullptr);
  const Value values[] = {uint64_t{7}, std::string_view("Total"), uint64_t{50}, uint64_t{9}};
  EXPECT_EQ(Printed([&] { TablePrintRow(columns, false, true, values); }), "       7      Total                9\n");
  EXPECT_EQ(Printed([&] { TablePrintRow(columns, true, true, values); }), "7,Total,,9\n");
  columns[0].flags = 0;
  EXPECT_EQ(Printed([&] { TablePrintRow(columns, true, true, values); }), ",Total,,9\n");
  EXPECT_EQ(Printed([&] { TablePrintRow(columns, false, true, values); }), "              Total                9\n");
}

TEST(ColumnTable, AMissingLastValueIsNotPrintedInATotalRow) {
  auto columns = Columns();
  columns[3].flags = 0;
  const Value values[] = {uint64_t{7}, std::string_view("Total"), uint64_t{50}};
  EXPECT_EQ(Printed([&] { TablePrintRow(columns, true, true, values); }), "7,Total,,\n");
}

TEST(ColumnTable, AWideValueBorrowsFromTheColumnsBehindIt) {
  std::vector<ColumnDesc> columns = {
      {"a", "", 10, kLu, kInTotal}, {"b", "", 10, kLu, kInTotal}, {"c", "", 10, kLu, kInTotal}};
  const Value wide[] = {uint64_t{123456789012}, uint64_t{1}, uint64_t{2}};
  EXPECT_EQ(Printed([&] { TablePrintRow(columns, false, false, wide); }), "123456789012        1          2\n");
  // Two consecutive values that are too wide. Then a value that is wider than its own and the next column together, so
  // that the next field is left-aligned.
  const Value wider[] = {UINT64_MAX, uint64_t{123456789}, uint64_t{2}};
  EXPECT_EQ(Printed([&] { TablePrintRow(columns, false, false, wider); }), "18446744073709551615 123456789 2\n");
  std::vector<ColumnDesc> narrow = {{"a", "", 3, kS, kInTotal}, {"b", "", 4, kU, kInTotal}, {"c", "", 2, kU, kInTotal}};
  const Value left[] = {std::string_view("twelve bytes"), uint64_t{7}, uint64_t{8}};
  EXPECT_EQ(Printed([&] { TablePrintRow(narrow, false, false, left); }), "twelve bytes 7     8       \n");
}

TEST(ColumnTable, ConversionsTakeTheirOwnWidth) {
  std::vector<ColumnDesc> columns = {{"u", "", 1, kU, kInTotal},
                                     {"d", "", 1, kD, kInTotal},
                                     {"c", "", 1, kC, kInTotal},
                                     {"lu", "", 1, kLu, kInTotal},
                                     {"ld", "", 1, kLd, kInTotal}};
  const Value values[] = {uint64_t{0x1ffffffff}, uint64_t{0x1ffffffff}, uint64_t{'y'}, UINT64_MAX, UINT64_MAX};
  EXPECT_EQ(Printed([&] { TablePrintRow(columns, true, false, values); }), "4294967295,-1,y,18446744073709551615,-1\n");
}

// A second implementation of the row printer, based on printf. Both must print the same bytes.
std::string ReferenceRow(const std::vector<ColumnDesc> &columns, bool csv, bool total,
                         const std::vector<Value> &values) {
  std::string line;
  uint8_t carry = 0;
  bool first = true;
  for (size_t i = 0; i < columns.size(); ++i) {
    const ColumnDesc &column = columns[i];
    if (!column.shown) continue;
    if (!first) line += csv ? "," : " ";
    first = false;
    char field[600];
    const int width = csv ? 0 : column.width - carry;
    const uint64_t number = column.conversion == kS ? 0 : values[i].number();
    int printed = 0;
    if (total && !column.IsInTotal()) {
      printed = std::snprintf(field, sizeof field, "%*s", width, "");
    } else {
      switch (column.conversion) {
        case kU: printed = std::snprintf(field, sizeof field, "%*u", width, static_cast<unsigned>(number)); break;
        case kD: printed = std::snprintf(field, sizeof field, "%*d", width, static_cast<int>(number)); break;
        case kC: printed = std::snprintf(field, sizeof field, "%*c", width, static_cast<int>(number)); break;
        case kLu: printed = std::snprintf(field, sizeof field, "%*lu", width, number); break;
        case kLd: printed = std::snprintf(field, sizeof field, "%*ld", width, static_cast<long>(number)); break;
        case kS:
          printed = std::snprintf(field, sizeof field, "%*s", width, std::string(values[i].text()).c_str());
          break;
      }
    }
    carry = static_cast<uint8_t>(carry + printed - column.width);
    line.append(field, static_cast<size_t>(printed));
  }
  return line + "\n";
}

TEST(ColumnTable, RowsAreThoseOfPrintf) {
  std::mt19937_64 random(static_cast<uint64_t>(testing::UnitTest::GetInstance()->random_seed()));
  const auto upTo = [&](uint64_t most) { return random() % (most + 1); };
  const std::string texts(400, 't');
  for (int run = 0; run < 3000; ++run) {
    std::vector<ColumnDesc> columns;
    std::vector<Value> values;
    for (uint64_t i = upTo(12); i > 0; --i) {
      const auto conversion = static_cast<Conversion>(upTo(5));
      // Sometimes a width or a text is long enough for the carry to wrap.
      const auto width = static_cast<uint8_t>(upTo(9) == 0 ? upTo(255) : upTo(20));
      columns.push_back({"x", "", width, conversion, static_cast<uint8_t>(upTo(1) == 0 ? 0 : kInTotal)});
      columns.back().shown = upTo(5) != 0;
      if (conversion == kS) {
        values.emplace_back(std::string_view(texts).substr(0, upTo(9) == 0 ? upTo(400) : upTo(20)));
      } else if (conversion == kC) {
        values.emplace_back(uint64_t{'a' + upTo(25)});
      } else {
        values.emplace_back(random() >> upTo(63));
      }
    }
    const bool csv = upTo(1) == 0, total = upTo(1) == 0;
    ASSERT_EQ(Printed([&] { TablePrintRow(columns, csv, total, values); }), ReferenceRow(columns, csv, total, values));
  }
}

}  // namespace
}  // namespace kestrel
