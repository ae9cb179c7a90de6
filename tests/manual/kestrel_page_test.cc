// Compares kestrel(1) with the program: reports, options, columns, units and totals.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <regex>

#include "tests/manual/kestrel_page.h"
#include "tests/manual/page.h"
#include "tests/support/process.h"
#include "tests/support/text.h"

namespace manual {
namespace {

using testing_support::Lines;
using testing_support::Outcome;

const KestrelPage &ThePage() {
  static const KestrelPage page;
  return page;
}

Outcome Kestrel(std::vector<std::string> arguments) {
  return testing_support::Run({.program = KESTREL_PROGRAM, .arguments = std::move(arguments)});
}

// The output of a report over the sample snapshot.
std::string OfSample(const std::string &report, std::vector<std::string> options) {
  options.insert(options.begin(), {"-c", SAMPLE_SNAPSHOT, "-r", report});
  const Outcome outcome = Kestrel(std::move(options));
  EXPECT_EQ(outcome.exitStatus, 0) << outcome;
  return outcome.output;
}

using Fields = std::vector<std::string>;

Fields Split(const std::string &line) {
  Fields fields = {""};
  for (const char c : line) {
    if (c == ',') {
      fields.emplace_back();
    } else {
      fields.back() += c;
    }
  }
  return fields;
}

// The rows of CSV, without the header and without the line that announces the rows of tags.
std::vector<Fields> Rows(const std::string &csv) {
  std::vector<Fields> rows;
  for (const std::string &line : Lines(csv)) {
    if (line != "Virtual tags report") rows.push_back(Split(line));
  }
  rows.erase(rows.begin());
  return rows;
}

std::string LowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

std::string UsageText() { return Kestrel({"-h"}).output; }

// The reports that the usage text lists.
std::vector<std::string> UsageReports() {
  const std::string text = UsageText();
  const size_t begin = text.find("Supported report types:\n");
  const size_t end = text.find("\n\n", begin);
  std::vector<std::string> names;
  for (const std::string &line : Lines(text.substr(begin, end - begin))) {
    if (line.ends_with("-stats")) names.push_back(line.substr(line.rfind(' ') + 1));
  }
  return names;
}

// The letters of a report's options in the usage text, sorted.
std::string UsageLetters(const std::string &report) {
  const std::string text = UsageText();
  const size_t begin = std::min(text.find("\n   '" + report + "'"), text.size());
  const size_t end = std::min(text.find("\n\n", begin), text.size());
  const std::string block = text.substr(begin, end - begin);     // empty if the report has only common options
  std::string letters = report == "dcpmm-stats" ? "qv" : "qsv";  // options of all reports
  const std::regex option("\n      -([a-z]), --");
  for (std::sregex_iterator i(block.begin(), block.end(), option); i != std::sregex_iterator(); ++i)
    letters += (*i)[1];
  std::sort(letters.begin(), letters.end());
  return letters;
}

TEST(KestrelPage, HasTheReportsOfTheUsageText) {
  std::vector<std::string> usage = UsageReports();
  std::sort(usage.begin(), usage.end());
  EXPECT_EQ(usage.size(), 19U);
  std::vector<std::string> listed = ThePage().listed();
  std::sort(listed.begin(), listed.end());
  EXPECT_EQ(listed, usage);
  std::vector<std::string> described;
  for (const auto &[name, section] : ThePage().reports())
    described.push_back(name);
  EXPECT_EQ(described, usage);
}

TEST(KestrelPage, HasTheGroupFlagsOfTheUsageText) {
  const std::string text = UsageText();
  const std::regex flag("\n {17}([a-z]+) ");
  const std::string source = Page("kestrel.1").Text();
  int flags = 0;
  for (std::sregex_iterator i(text.begin(), text.end(), flag); i != std::sregex_iterator(); ++i, ++flags)
    EXPECT_NE(source.find(".TP\n.B " + (*i)[1].str() + "\n"), source.npos) << (*i)[1];
  EXPECT_EQ(flags, 15 + 2);
}

class ReportSectionTest : public testing::TestWithParam<std::string> {
 protected:
  const ReportSection &Section() const { return ThePage().reports().at(GetParam()); }
};

TEST_P(ReportSectionTest, HasItsOptions) { EXPECT_EQ(Section().letters, UsageLetters(GetParam())); }

// Sections of reports that can read a snapshot.
class SampledSection : public ReportSectionTest {
 protected:
  // All rows, including the rows of tags.
  std::vector<Fields> RowsIn(const char *unit) const {
    std::vector<std::string> options = {"-q"};
    if (Takes('t')) options.insert(options.end(), {"-t"});
    if (Takes('u')) options.insert(options.end(), {"-u", unit});
    return Rows(OfSample(GetParam(), options));
  }

  bool Takes(char letter) const { return Section().letters.find(letter) != std::string::npos; }
};

TEST_P(SampledSection, HasTheColumnsThatTheReportDescribes) {
  const std::string text = OfSample(GetParam(), {"-q", "-v"});
  const std::regex line("\n *([^ :]+): ([^\n]*?) *(?=\n)");
  const auto descriptions = text.find("\nDescription of report header labels:\n");
  ASSERT_NE(descriptions, text.npos);
  const std::string described = text.substr(text.find('\n', descriptions + 1));
  std::vector<std::string> expected;
  for (std::sregex_iterator i(described.begin(), described.end(), line); i != std::sregex_iterator(); ++i)
    expected.push_back((*i)[1].str() + ": " + LowerCase((*i)[2]));
  std::vector<std::string> actual;
  for (const Column &column : Section().columns)
    actual.push_back(column.name + ": " + LowerCase(column.meaning));
  EXPECT_EQ(actual, expected);
}

TEST_P(SampledSection, SaysWhatIsAlwaysShown) {
  std::string expected;
  for (const Column &column : Section().columns) {
    if (column.alwaysShown) expected += (expected.empty() ? "" : ",") + column.name;
  }
  const std::string header = Lines(OfSample(GetParam(), {"-q", "-s", "none"})).at(0);
  EXPECT_EQ(header, expected);
}

// Units convert only amounts: the value in MB is the value in KB, rounded up. A value whose bits are all set is not
// converted.
TEST_P(SampledSection, SaysWhatAUnitConverts) {
  std::vector<Fields> inKB = RowsIn("kb");
  std::vector<Fields> inMB = RowsIn("mb");
  ASSERT_EQ(inKB.size(), inMB.size());
  ASSERT_FALSE(inKB.empty());
  if (GetParam() == "heap-stats") inKB.pop_back(), inMB.pop_back();  // its totals are shifted by a column
  for (size_t row = 0; row < inKB.size(); ++row) {
    for (size_t i = 0; i < Section().columns.size(); ++i) {
      const Column &column = Section().columns[i];
      const std::string &kb = inKB[row].at(i);
      std::string expected = kb;
      const bool isNone = kb.empty() || kb == "-1" || kb == "18446744073709551615";
      if (column.kind == "amount" && !isNone) expected = std::to_string((std::stoull(kb) + 1023) / 1024);
      EXPECT_EQ(inMB[row].at(i), expected) << column.name << " is " << kb << " KB in row " << row;
    }
  }
}

TEST_P(SampledSection, SaysWhatTheTotalsHave) {
  // Rules separate the header, the rows, and the row of totals if there is one.
  int parts = 0;
  bool wasRule = false;
  for (const std::string &line : Lines(OfSample(GetParam(), {}))) {
    const bool isRule = line.starts_with("----");
    parts += wasRule && !isRule;
    wasRule = isRule;
  }
  const bool hasTotals = parts == 3;
  EXPECT_EQ(Section().hasTotals, hasTotals);
  if (!hasTotals) return;
  const Fields totals = RowsIn("kb").back();
  ASSERT_EQ(totals.size(), Section().columns.size());
  for (size_t i = 0; i < totals.size(); ++i)
    EXPECT_EQ(Section().columns[i].inTotal, !totals[i].empty()) << Section().columns[i].name << ' ' << totals[i];
}

std::vector<std::string> SampledReports() {
  std::vector<std::string> reports = UsageReports();
  std::erase(reports, "dcpmm-stats");
  return reports;
}

std::string NameOf(const testing::TestParamInfo<std::string> &info) {
  std::string name = info.param;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Usage, ReportSectionTest, testing::ValuesIn(UsageReports()), NameOf);
INSTANTIATE_TEST_SUITE_P(Usage, SampledSection, testing::ValuesIn(SampledReports()), NameOf);

TEST(KestrelPage, HasTheColumnsOfTheProfiler) {
  std::string names;
  for (const Column &column : ThePage().reports().at("dcpmm-stats").columns)
    names += column.name + ' ';
  EXPECT_EQ(names, "Socket IMC Channel Event Counts ");
}

}  // namespace
}  // namespace manual
