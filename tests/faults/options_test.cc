// Common options of the reports: units, levels, start group, filters, column selections.
#include "tests/faults/hosts.h"
#include "tests/faults/report_case.h"

namespace faults::options {
namespace {

constexpr char kBadUnit[] = "Invalid unit specified. Choose from {mb, kb, pg}\n";
constexpr char kAllGroups[] = "gid\n0\n1\n4\n5\n7\n";

// Runs group-stats over the small host with one column in CSV.
constexpr ReportCase Gids(const char *name, const char *options, const char *output, const char *errors = "",
                          int exitStatus = 0) {
  return {name, SmallHost, {"-r group-stats -q -s gid", options}, output, errors, exitStatus};
}

class Options : public testing::TestWithParam<ReportCase> {};

TEST_P(Options, AnswerAs) { Check(GetParam()); }

constexpr ReportCase kLevelsCases[] = {
    Gids("One", "-l 1", "gid\n0\n"),
    Gids("Two", "--level 2", "gid\n0\n1\n4\n7\n"),
    Gids("Twelve", "-l 12", kAllGroups),
    Gids("Zero", "-l 0", "", "Invalid level 0, must be > 0\n", 1),
    Gids("NotANumber", "-l abc", "", "Invalid level abc, must be > 0\n", 1),
    Gids("Empty", "-l ''", "", "Invalid level , must be > 0\n", 1),
    Gids("LowBitsZero", "-l 4294967296", "", "Invalid level 4294967296, must be > 0\n", 1),
    Gids("LowBitsOne", "-l 4294967297", "gid\n0\n"),
    Gids("StartsWithANumber", "-l 1x", "gid\n0\n"),
    Gids("Thirteen", "-l 13", kAllGroups, "Specified level 13 too high, reseting to 12\n"),
    Gids("Negative", "-l -1", kAllGroups, "Specified level -1 too high, reseting to 12\n"),
    Gids("BeyondEveryNumber", "-l 99999999999999999999", kAllGroups,
         "Specified level 99999999999999999999 too high, reseting to 12\n"),
    Gids("TheLastCounts", "-l 2 -l 1", "gid\n0\n"),
    Gids("TooHighAndThenZero", "-l 13 -l 0", "",
         "Specified level 13 too high, reseting to 12\nInvalid level 0, must be > 0\n", 1),
    Gids("ZeroEndsTheParsing", "-l 0 -l 13 -u b", "", "Invalid level 0, must be > 0\n", 1),
    Gids("ZeroComesBeforeABadUnit", "-u b -l 0", "", "Invalid level 0, must be > 0\n", 1),
    Gids("WithoutItsArgument", "-l", kAllGroups),
};

INSTANTIATE_TEST_SUITE_P(Levels, Options, testing::ValuesIn(kLevelsCases), NameOf<ReportCase>);

constexpr ReportCase kStartGroupsCases[] = {
    Gids("Inner", "-g 4", "gid\n4\n5\n"),
    Gids("Leaf", "--gid=7", "gid\n7\n"),
    Gids("Absent", "-g 3", "gid\n", "", 1),
    Gids("NotANumber", "-g abc", kAllGroups),
    Gids("LowBitsZero", "-g 4294967296", kAllGroups),
    Gids("LowBitsFour", "-g -4294967292", "gid\n4\n5\n"),
    Gids("StartsWithANumber", "-g 4x", "gid\n4\n5\n"),
    Gids("TheLastCounts", "-g 3 -g 4", "gid\n4\n5\n"),
};

INSTANTIATE_TEST_SUITE_P(StartGroups, Options, testing::ValuesIn(kStartGroupsCases), NameOf<ReportCase>);

constexpr ReportCase kUnitsCases[] = {
    Gids("UpperCase", "-u MB", kAllGroups),
    Gids("MixedCase", "--unit Kb", kAllGroups),
    Gids("Pages", "-upg", kAllGroups),
    Gids("Bytes", "-u b", "", kBadUnit, 1),
    Gids("Empty", "-u ''", "", kBadUnit, 1),
    Gids("TooLong", "-u kbs", "", kBadUnit, 1),
    Gids("TheLastCounts", "-u b -u mb", kAllGroups),
    Gids("BeforeTheFilters", "-i xx -u b", "", kBadUnit, 1),
};

INSTANTIATE_TEST_SUITE_P(Units, Options, testing::ValuesIn(kUnitsCases), NameOf<ReportCase>);

constexpr ReportCase kFiltersCases[] = {
    // The groups' flags: group 0 has pre, 1 pre and sys, 4 co, 5 vm and lf, 7 sys.
    Gids("OneFlag", "-i vm", "gid\n5\n"),
    Gids("TwoFlags", "-i vm:sys", "gid\n1\n5\n7\n"),
    Gids("AnyCase", "--iFilter VM:Sys", "gid\n1\n5\n7\n"),
    Gids("EmptyPieces", "-i :vm::sys:", "gid\n1\n5\n7\n"),
    Gids("NoPieces", "-i :", "gid\n"),
    Gids("EmptyInclusion", "-i ''", "gid\n"),
    Gids("EmptyExclusion", "-e ''", kAllGroups),
    Gids("Exclusion", "-e pre", "gid\n4\n5\n7\n"),
    Gids("ExclusionWins", "-i sys --eFilter pre", "gid\n7\n"),
    Gids("TheLastCounts", "-i xx -i vm", "gid\n5\n"),
    Gids("UnknownFlag", "-i xx", "", "Invalid flag (xx) in filter\n", 1),
    Gids("UnknownSecondFlag", "-i vm:xx:yy", "", "Invalid flag (xx) in filter\n", 1),
    Gids("UnknownFlagInExclusion", "-e sys:zz", "", "Invalid flag (zz) in filter\n", 1),
    Gids("InclusionIsReadFirst", "-e zz -i xx", "", "Invalid flag (xx) in filter\n", 1),
    Gids("StartOfAFlagsName", "-i v", "", "Invalid flag (v) in filter\n", 1),
    Gids("EveryFlag", "-i pre:lf:vm:uw:sys:tw:pr:sd:np:ke:ug:co:sc:vmm:usr", kAllGroups),
};

INSTANTIATE_TEST_SUITE_P(Filters, Options, testing::ValuesIn(kFiltersCases), NameOf<ReportCase>);

constexpr ReportCase kUnknownCases[] = {
    Gids("ShortOption", "-x -l 1", "gid\n0\n"),
    Gids("LongOption", "--lunch -l 1", "gid\n0\n"),
    Gids("LongOptionWithAWord", "--lunch=12 -l 1", "gid\n0\n"),
    Gids("GlobalOptions", "-h -f -c -l 1", "gid\n0\n"),
    Gids("Words", "lunch -l 1 time", "gid\n0\n"),
    Gids("AfterTheEndOfOptions", "-- -l 1", kAllGroups),
};

INSTANTIATE_TEST_SUITE_P(Unknown, Options, testing::ValuesIn(kUnknownCases), NameOf<ReportCase>);

constexpr ReportCase Selected(const char *name, const char *selection, const char *output) {
  return {name, SmallHost, {"-r group-stats -q -l 1 -s", selection}, output};
}

constexpr ReportCase kSelectionsCases[] = {
    Selected("OrderIsTheTables", "tag:NAME:gid", "gid,name,tag\n0,host,top\n"),
    Selected("TheKeyStays", "name", "gid,name\n0,host\n"),
    Selected("UnknownNames", "lunch:time", "gid\n0\n"),
    Selected("NoPieces", "::", "gid\n0\n"),
    Selected("Empty", "''", "gid\n0\n"),
    Selected("StartOfAName", "min:na", "gid,min\n0,1001\n"),
    Selected("NamesUpTo128Characters",
             "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"
             "xxxxxxxxxxxxxxxxxx:name",
             "gid,name\n0,host\n"),
    Selected("NamesCutAt128Characters",
             "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"
             "xxxxxxxxxxxxxxxxxxx:name",
             "gid\n0\n"),
    // The truncated name is the name of another column.
    Selected("NamesCutToAnother",
             "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"
             "xxxxxxxxxxxxxxxxxxx:minLimit",
             "gid,min\n0,1001\n"),
};

INSTANTIATE_TEST_SUITE_P(Selections, Options, testing::ValuesIn(kSelectionsCases), NameOf<ReportCase>);

TEST(OptionCalls, NothingIsReadForBadOptions) {
  for (const std::vector<std::string> &options : {std::vector<std::string>{"-l", "0"}, {"-u", "b"}, {"-i", "xx"}}) {
    std::vector<std::string> arguments = {"-r", "group-stats"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const StandinRun run = RunKestrel(SmallHost(), arguments);
    EXPECT_EQ(run.outcome.output, "");
    EXPECT_EQ(run.calls, std::vector<std::string>{"NODAL_CheckSig(21) = 0"});
  }
}

}  // namespace
}  // namespace faults::options
