// The command line up to the report's own options.
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

TEST_P(FrontEnd, AnswersAs) { Check(GetParam()); }

INSTANTIATE_TEST_SUITE_P(
    Usage, FrontEnd,
    testing::Values(
        ReportCase{"ShortHelp", SharingHost(), {"-h"}, Usage(), "", 0},
        ReportCase{"LongHelp", SharingHost(), {"--help"}, Usage(), "", 0},
        ReportCase{"HelpBeforeAReport", SharingHost(), {"-h", "-r", "pshare-stats"}, Usage(), "", 0},
        ReportCase{"HelpBeforeAnErrorIsSeen", SharingHost(), {"-h", "-x"}, Usage(), "", 0},
        ReportCase{"HelpOpensNoCache", SharingHost(), {"-c", "/absent", "-h"}, Usage(), "", 0},
        ReportCase{"HelpChecksNoDefinitions", WithOtherDefinitions(), {"-h"}, Usage(), "", 0},
        ReportCase{"NoArguments", SharingHost(), {}, Usage(), "", 0},
        ReportCase{"OnlyAWord", SharingHost(), {"pshare-stats"}, Usage(), "", 0},
        ReportCase{"OnlyACache", WithCaches(), {"-c", "/host.cache"}, Usage(), "", 0},
        ReportCase{"UnknownReport", SharingHost(), {"-r", "lunch-stats"}, Usage(), "Invalid report lunch-stats\n", 1},
        ReportCase{"EmptyReport", SharingHost(), {"-r", ""}, Usage(), "Invalid report \n", 1},
        ReportCase{"StartOfAReportsName", SharingHost(), {"-r", "pshare"}, Usage(), "Invalid report pshare\n", 1},
        ReportCase{"UnknownReportBeforeItsCache",
                   SharingHost(),
                   {"-c", "/absent", "-r", "no"},
                   Usage(),
                   "Invalid report no\n",
                   1},
        ReportCase{"UnknownReportBeforeTheDefinitions",
                   WithOtherDefinitions(),
                   {"-r", "no"},
                   Usage(),
                   "Invalid report no\n",
                   1},
        ReportCase{"UnknownOption", SharingHost(), {"-x", "-r", "pshare-stats"}, Usage(), kOutOfSequence, 1},
        ReportCase{"UnknownLongOption", SharingHost(), {"--lunch", "-r", "pshare-stats"}, Usage(), kOutOfSequence, 1},
        ReportCase{
            "ReportOptionTooEarly", SharingHost(), {"-u", "mb", "-r", "pshare-stats"}, Usage(), kOutOfSequence, 1},
        ReportCase{"ReportWithoutAName", SharingHost(), {"-r"}, Usage(), kOutOfSequence, 1},
        ReportCase{"CacheWithoutAPath", SharingHost(), {"-c"}, Usage(), kOutOfSequence, 1},
        ReportCase{"ShortForceWithoutAWord", SharingHost(), {"-f"}, Usage(), kOutOfSequence, 1},
        ReportCase{
            "LongForceWithAWord", SharingHost(), {"--force=yes", "-r", "pshare-stats"}, Usage(), kOutOfSequence, 1}),
    NameOf<ReportCase>);

INSTANTIATE_TEST_SUITE_P(
    Reports, FrontEnd,
    testing::Values(
        ReportCase{"UpperCase", SharingHost(), {"-r", "PSHARE-STATS", "-q"}, kSharingCsv, "", 0},
        ReportCase{"OneWord", SharingHost(), {"-rpshare-stats", "-q"}, kSharingCsv, "", 0},
        ReportCase{"LongOption", SharingHost(), {"--report", "pshare-stats", "-q"}, kSharingCsv, "", 0},
        ReportCase{"LongOptionInOneWord", SharingHost(), {"--report=pshare-stats", "-q"}, kSharingCsv, "", 0},
        ReportCase{"WordsAreSkipped", SharingHost(), {"lunch", "-r", "pshare-stats", "-q"}, kSharingCsv, "", 0},
        ReportCase{"HelpIsTheReports", SharingHost(), {"-r", "pshare-stats", "-h", "-q"}, kSharingCsv, "", 0},
        ReportCase{
            "ASecondReportIsNotSeen", SharingHost(), {"-r", "pshare-stats", "-r", "no", "-q"}, kSharingCsv, "", 0},
        ReportCase{"ShortForceEatsTheNextWord", SharingHost(), {"-f", "-r", "pshare-stats"}, Usage(), "", 0},
        ReportCase{"ShortForceEatsItsOwnWord", SharingHost(), {"-fx", "-r", "pshare-stats", "-q"}, kSharingCsv, "", 0},
        ReportCase{"LongForceEatsNothing", SharingHost(), {"--force", "-r", "pshare-stats", "-q"}, kSharingCsv, "", 0},
        ReportCase{"AFailingReport", StandinHost(), {"-r", "pshare-stats"}, "", "", 1}),
    NameOf<ReportCase>);

INSTANTIATE_TEST_SUITE_P(
    Caches, FrontEnd,
    testing::Values(
        ReportCase{"Opened", WithCaches(), {"-c", "/host.cache", "-r", "pshare-stats", "-q"}, kSharingCsv, "", 0},
        ReportCase{
            "LongOption", WithCaches(), {"--cache=/other cache", "-r", "pshare-stats", "-q"}, kSharingCsv, "", 0},
        ReportCase{"EmptyPath", WithCaches(), {"-c", "", "-r", "pshare-stats", "-q"}, kSharingCsv, "", 0},
        ReportCase{"TheLastCounts",
                   WithCaches(),
                   {"-c", "/absent", "-c", "/host.cache", "-r", "pshare-stats", "-q"},
                   kSharingCsv,
                   "",
                   0},
        ReportCase{"Absent",
                   WithCaches(),
                   {"-c", "/absent", "-r", "pshare-stats"},
                   "",
                   "Couldn't open cache file /absent, error code: 195887107\n",
                   1},
        ReportCase{"AbsentWithoutAReport",
                   WithCaches(),
                   {"-c", "/absent"},
                   "",
                   "Couldn't open cache file /absent, error code: 195887107\n",
                   1},
        ReportCase{"Damaged",
                   WithCaches().Fail({.operation = "NODAL_UseCache", .status = 0x0bad001f}),
                   {"-c", "/host.cache", "-r", "pshare-stats"},
                   "",
                   "Couldn't open cache file /host.cache, error code: 195887135\n",
                   1},
        ReportCase{"StatusAboveTheSignedRange",
                   WithCaches().Fail({.operation = "NODAL_UseCache", .status = 0xfffffffe}),
                   {"-c", "/host.cache", "-r", "pshare-stats"},
                   "",
                   "Couldn't open cache file /host.cache, error code: 4294967294\n",
                   1},
        ReportCase{"ProfilerHasNone",
                   WithCaches(),
                   {"-c", "/host.cache", "-r", "dcpmm-stats"},
                   "",
                   "DCPMM report does not work on cache file\n",
                   1},
        ReportCase{"AfterTheReportItIsTheReports",
                   SharingHost(),
                   {"-r", "pshare-stats", "-c", "/absent", "-q"},
                   kSharingCsv,
                   "",
                   0}),
    NameOf<ReportCase>);

INSTANTIATE_TEST_SUITE_P(
    Definitions, FrontEnd,
    testing::Values(
        ReportCase{"Differ",
                   WithOtherDefinitions(),
                   {"-r", "pshare-stats"},
                   "",
                   std::string(kMismatch) + "Version check failed\n",
                   1},
        ReportCase{"DifferWithoutAReport",
                   WithOtherDefinitions(),
                   {},
                   "",
                   std::string(kMismatch) + "Version check failed\n",
                   1},
        ReportCase{"ForcedByTheLongOption",
                   WithOtherDefinitions(),
                   {"--force", "-r", "pshare-stats", "-q"},
                   kSharingCsv,
                   kMismatch,
                   0},
        ReportCase{"ForcedByTheShortOption",
                   WithOtherDefinitions(),
                   {"-f", "it", "-r", "pshare-stats", "-q"},
                   kSharingCsv,
                   kMismatch,
                   0},
        ReportCase{"ForcedWithoutAReport", WithOtherDefinitions(), {"--force"}, Usage(), kMismatch, 0},
        ReportCase{"ForcedAndTheReportFails",
                   StandinHost().Signature(0x0bad0021, "kernel-77", "tool-78"),
                   {"--force", "-r", "pshare-stats"},
                   "",
                   kMismatch,
                   1},
        ReportCase{"ForcedTooLate",
                   WithOtherDefinitions(),
                   {"-r", "pshare-stats", "--force"},
                   "",
                   std::string(kMismatch) + "Version check failed\n",
                   1},
        ReportCase{"BuildTextOfTwentyCharactersAndMore",
                   SharingHost().Signature(0x0bad0001, "abcdefghijklmnopqrstuvwxyz", "tool"),
                   {"-r", "pshare-stats"},
                   "",
                   "0xbad0001: md5 signature mismatch with running hvcore built on abcdefghijklmnopqrst. (vs tool for "
                   "app sysinfo)\nVersion check failed\n",
                   1}),
    NameOf<ReportCase>);

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
