// The command line before the report's own options.
#include "tests/faults/hosts.h"
#include "tests/faults/report_case.h"
#include "tests/support/scratch.h"

namespace faults {
namespace {

constexpr char kOutOfSequence[] = "Unexpected or out-of-sequence argument detected\n";
constexpr char kMismatch[] =
    "0xbad0021: md5 signature mismatch with running hvcore built on kernel-77. (vs tool-78 for app sysinfo)\n";
constexpr char kSharingCsv[] = "cow,cow1,zero,used,reclaimed,totAdd,totRemove\n1028,4,0,1024,4000000,16000000000,20\n";

std::string Usage() {
  std::string text = testing_support::ReadFile(USAGE_TEXT);
  return text.replace(text.find("%s"), 2, KESTREL_PROGRAM);
}

StandinHost WithOtherDefinitions() { return SharingHost().Signature(0x0bad0021, "kernel-77", "tool-78"); }

StandinHost WithCaches() { return SharingHost().AddCache("/host.cache").AddCache("/other cache").AddCache(""); }

class FrontEnd : public testing::TestWithParam<ReportCase> {};

constexpr char kUsage[] = "<usage>";  // replaced by Usage()

TEST_P(FrontEnd, AnswersAs) {
  const ReportCase &expected = GetParam();
  const std::string output = expected.output.JoinedBy("");
  Check(expected.host(), expected.arguments.JoinedBy(" "), output == kUsage ? Usage() : output,
        expected.errors.JoinedBy(""), expected.exitStatus);
}

constexpr ReportCase kUsageCases[] = {
    {"ShortHelp", SharingHost, "-h", kUsage},
    {"LongHelp", SharingHost, "--help", kUsage},
    {"HelpBeforeAReport", SharingHost, "-h -r pshare-stats", kUsage},
    {"HelpBeforeAnErrorIsSeen", SharingHost, "-h -x", kUsage},
    {"HelpOpensNoCache", SharingHost, "-c /absent -h", kUsage},
    {"HelpChecksNoDefinitions", WithOtherDefinitions, "-h", kUsage},
    {"NoArguments", SharingHost, "", kUsage},
    {"OnlyAWord", SharingHost, "pshare-stats", kUsage},
    {"OnlyACache", WithCaches, "-c /host.cache", kUsage},
    {"UnknownReport", SharingHost, "-r lunch-stats", kUsage, "Invalid report lunch-stats\n", 1},
    {"EmptyReport", SharingHost, "-r ''", kUsage, "Invalid report \n", 1},
    {"StartOfAReportsName", SharingHost, "-r pshare", kUsage, "Invalid report pshare\n", 1},
    {"UnknownReportBeforeItsCache", SharingHost, "-c /absent -r no", kUsage, "Invalid report no\n", 1},
    {"UnknownReportBeforeTheDefinitions", WithOtherDefinitions, "-r no", kUsage, "Invalid report no\n", 1},
    {"UnknownOption", SharingHost, "-x -r pshare-stats", kUsage, kOutOfSequence, 1},
    {"UnknownLongOption", SharingHost, "--lunch -r pshare-stats", kUsage, kOutOfSequence, 1},
    {"ReportOptionTooEarly", SharingHost, "-u mb -r pshare-stats", kUsage, kOutOfSequence, 1},
    {"ReportWithoutAName", SharingHost, "-r", kUsage, kOutOfSequence, 1},
    {"CacheWithoutAPath", SharingHost, "-c", kUsage, kOutOfSequence, 1},
    {"ShortForceWithoutAWord", SharingHost, "-f", kUsage, kOutOfSequence, 1},
    {"LongForceWithAWord", SharingHost, "--force=yes -r pshare-stats", kUsage, kOutOfSequence, 1},
};

INSTANTIATE_TEST_SUITE_P(Usage, FrontEnd, testing::ValuesIn(kUsageCases), NameOf<ReportCase>);

constexpr ReportCase kReportsCases[] = {
    {"UpperCase", SharingHost, "-r PSHARE-STATS -q", kSharingCsv},
    {"OneWord", SharingHost, "-rpshare-stats -q", kSharingCsv},
    {"LongOption", SharingHost, "--report pshare-stats -q", kSharingCsv},
    {"LongOptionInOneWord", SharingHost, "--report=pshare-stats -q", kSharingCsv},
    {"WordsAreSkipped", SharingHost, "lunch -r pshare-stats -q", kSharingCsv},
    {"HelpIsTheReports", SharingHost, "-r pshare-stats -h -q", kSharingCsv},
    {"ASecondReportIsNotSeen", SharingHost, "-r pshare-stats -r no -q", kSharingCsv},
    {"ShortForceEatsTheNextWord", SharingHost, "-f -r pshare-stats", kUsage},
    {"ShortForceEatsItsOwnWord", SharingHost, "-fx -r pshare-stats -q", kSharingCsv},
    {"LongForceEatsNothing", SharingHost, "--force -r pshare-stats -q", kSharingCsv},
    {"AFailingReport", [] { return StandinHost(); }, "-r pshare-stats", "", "", 1},
};

INSTANTIATE_TEST_SUITE_P(Reports, FrontEnd, testing::ValuesIn(kReportsCases), NameOf<ReportCase>);

constexpr ReportCase kCachesCases[] = {
    {"Opened", WithCaches, "-c /host.cache -r pshare-stats -q", kSharingCsv},
    {"LongOption", WithCaches, "'--cache=/other cache' -r pshare-stats -q", kSharingCsv},
    {"EmptyPath", WithCaches, "-c '' -r pshare-stats -q", kSharingCsv},
    {"TheLastCounts", WithCaches, "-c /absent -c /host.cache -r pshare-stats -q", kSharingCsv},
    {"Absent", WithCaches, "-c /absent -r pshare-stats", "",
     "Couldn't open cache file /absent, error code: 195887107\n", 1},
    {"AbsentWithoutAReport", WithCaches, "-c /absent", "", "Couldn't open cache file /absent, error code: 195887107\n",
     1},
    {"Damaged", [] { return WithCaches().Fail({.operation = "NODAL_UseCache", .status = 0x0bad001f}); },
     "-c /host.cache -r pshare-stats", "", "Couldn't open cache file /host.cache, error code: 195887135\n", 1},
    {"StatusAboveTheSignedRange",
     [] { return WithCaches().Fail({.operation = "NODAL_UseCache", .status = 0xfffffffe}); },
     "-c /host.cache -r pshare-stats", "", "Couldn't open cache file /host.cache, error code: 4294967294\n", 1},
    {"ProfilerHasNone", WithCaches, "-c /host.cache -r dcpmm-stats", "", "DCPMM report does not work on cache file\n",
     1},
    {"AfterTheReportItIsTheReports", SharingHost, "-r pshare-stats -c /absent -q", kSharingCsv},
};

INSTANTIATE_TEST_SUITE_P(Caches, FrontEnd, testing::ValuesIn(kCachesCases), NameOf<ReportCase>);

constexpr ReportCase kDefinitionsCases[] = {
    {"Differ", WithOtherDefinitions, "-r pshare-stats", "", {kMismatch, "Version check failed\n"}, 1},
    {"DifferWithoutAReport", WithOtherDefinitions, "", "", {kMismatch, "Version check failed\n"}, 1},
    {"ForcedByTheLongOption", WithOtherDefinitions, "--force -r pshare-stats -q", kSharingCsv, kMismatch},
    {"ForcedByTheShortOption", WithOtherDefinitions, "-f it -r pshare-stats -q", kSharingCsv, kMismatch},
    {"ForcedWithoutAReport", WithOtherDefinitions, "--force", kUsage, kMismatch},
    {"ForcedAndTheReportFails", [] { return StandinHost().Signature(0x0bad0021, "kernel-77", "tool-78"); },
     "--force -r pshare-stats", "", kMismatch, 1},
    {"ForcedTooLate", WithOtherDefinitions, "-r pshare-stats --force", "", {kMismatch, "Version check failed\n"}, 1},
    {"BuildTextOfTwentyCharactersAndMore",
     [] { return SharingHost().Signature(0x0bad0001, "abcdefghijklmnopqrstuvwxyz", "tool"); }, "-r pshare-stats", "",
     "0xbad0001: md5 signature mismatch with running hvcore built on abcdefghijklmnopqrst. (vs tool for "
     "app sysinfo)\nVersion check failed\n",
     1},
};

INSTANTIATE_TEST_SUITE_P(Definitions, FrontEnd, testing::ValuesIn(kDefinitionsCases), NameOf<ReportCase>);

TEST(FrontEndCalls, HelpAndUsageErrorsDoNotTouchThePlatform) {
  for (const std::vector<std::string> &arguments :
       {std::vector<std::string>{"-c", "/host.cache", "-h"}, {"-r", "no"}, {"-x"}, {"-c", "/x", "-r", "dcpmm-stats"}}) {
    EXPECT_TRUE(RunKestrel(WithCaches(), arguments).calls.empty()) << arguments[0];
  }
}

TEST(FrontEndCalls, TheCacheIsOpenedBeforeTheDefinitionsAreRead) {
  const StandinRun run = RunKestrel(WithCaches(), {"-c", "/host.cache", "-r", "pshare-stats"});
  ASSERT_GE(run.calls.size(), 2u) << run;
  EXPECT_EQ(run.calls[0], "NODAL_UseCache(/host.cache, 0) = 0");
  EXPECT_EQ(run.calls[1], "NODAL_CheckSig(21) = 0");
}

TEST(FrontEndCalls, TheDefinitionsAreReadWithoutAReport) {
  EXPECT_EQ(RunKestrel(SharingHost(), {}).calls, std::vector<std::string>{"NODAL_CheckSig(21) = 0"});
}

TEST(FrontEndCalls, NothingIsReadAfterDefinitionsThatDiffer) {
  EXPECT_EQ(RunKestrel(WithOtherDefinitions(), {"-r", "pshare-stats"}).calls,
            std::vector<std::string>{"NODAL_CheckSig(21) = 0x0bad0021"});
}

}  // namespace
}  // namespace faults
