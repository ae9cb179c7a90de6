#include "tests/faults/machine_hosts.h"
#include "tests/faults/report_case.h"

namespace faults::pshare_hint_stats {
namespace {

constexpr char kBadUnit[] = "Invalid unit specified. Choose from {mb, kb, pg}\n";

constexpr char kTableInKb[] = R"(
 PSHARE HINT STATS: <time>
 -------------------------------------------
   Unit             : KB
   Selected columns : (all)

----------------------------------------------------------
      type          totAdd       totRemove          active
----------------------------------------------------------
   regular          199984           99984          100000
     lpage           80020           20028           59992
----------------------------------------------------------
     Total          280004          120012          159980
----------------------------------------------------------
)";

constexpr char kTableInPages[] = R"(
 PSHARE HINT STATS: <time>
 -------------------------------------------
   Unit             : Page (4K)
   Selected columns : type:active

--------------------------
      type          active
--------------------------
   regular           25000
     lpage           14998
--------------------------
     Total           39995
--------------------------
Description of report header labels:
                type: Hint type (regular or large page hint)
              active: Currently active hints
)";

constexpr char kNoColumns[] = R"(
 PSHARE HINT STATS: <time>
 -------------------------------------------
   Unit             : MB
   Selected columns : (none)









Description of report header labels:
)";

constexpr char kCsvHeader[] = "type,totAdd,totRemove,active\n";

constexpr char kDescriptions[] = R"(Description of report header labels:
                type: Hint type (regular or large page hint)
              totAdd: Total hints added
           totRemove: Total hints removed
              active: Currently active hints
)";

StandinHost HostWith(uint64_t active, uint64_t added, uint64_t removed, uint64_t lpageAdded, uint64_t lpageRemoved) {
  PShareStatsRecord record = HintFigures();
  record.hintsActive = active;
  record.hintsAdded = added;
  record.hintsRemoved = removed;
  record.lpageHintsAdded = lpageAdded;
  record.lpageHintsRemoved = lpageRemoved;
  return StandinHost().AddRecord("memory_pshare_stats", {}, record);
}

constexpr ReportCase Csv(const char *name, StandinHost (*host)(), const char *options, const Text &rows) {
  return {name, host, {"-r pshareHint-stats -q", options}, {kCsvHeader, rows}};
}

class PShareHintStats : public testing::TestWithParam<ReportCase> {};

TEST_P(PShareHintStats, AnswersAs) { Check(GetParam()); }

constexpr ReportCase kFormsCases[] = {
    {"TableInKb", HintsHost, "-r pshareHint-stats", kTableInKb},
    {"TableInPages", HintsHost, "-r PSHAREHINT-STATS -u pg -s ACTIVE:type -v", kTableInPages},
    {"NoColumns", HintsHost, "-r pshareHint-stats -u mb -s cow -v", kNoColumns},
    {"NoColumnsInCsv", HintsHost, "-r pshareHint-stats -q -s ''", "\n\n\n\n"},
    Csv("CsvInMb", HintsHost, "-u mb", "regular,196,98,98\nlpage,79,20,59\nTotal,274,118,157\n"),
    Csv("CsvWithDescriptions", HintsHost, "--verbose --unit=PG",
        {"regular,49996,24996,25000\nlpage,20005,5007,14998\nTotal,70001,30003,39995\n", kDescriptions}),
    Csv("OtherOptionsAreNone", HintsHost, "-x --gid=4 -upg -l 0 -s",
        "regular,49996,24996,25000\nlpage,20005,5007,14998\nTotal,70001,30003,39995\n"),
};

INSTANTIATE_TEST_SUITE_P(Forms, PShareHintStats, testing::ValuesIn(kFormsCases), NameOf<ReportCase>);

constexpr ReportCase kFiguresCases[] = {
    Csv(
        "NoneForLargePages", [] { return HostWith(7, 100, 40, 0, 0); }, "-u pg",
        "regular,100,40,60\nlpage,0,0,0\nTotal,100,40,7\n"),
    // The counts of large-page hints exceed the counts of all hints, so the differences wrap.
    Csv(
        "MoreForLargePagesInPages", [] { return HostWith(0, 1, 2, 2, 4); }, "-u pg",
        "regular,4611686018427387903,4611686018427387902,1\n"
        "lpage,2,4,4611686018427387902\nTotal,1,2,0\n"),
    Csv(
        "MoreForLargePagesInKb", [] { return HostWith(0, 1, 2, 2, 4); }, "",
        "regular,18446744073709551612,18446744073709551608,4\n"
        "lpage,8,16,18446744073709551608\nTotal,4,8,0\n"),
    Csv(
        "MoreForLargePagesInMb", [] { return HostWith(0, 1, 2, 2, 4); }, "-u mb",
        "regular,0,0,1\nlpage,1,1,0\nTotal,1,1,0\n"),
    // UINT64_MAX is an ordinary count, not "not available".
    Csv(
        "AllOnes", [] { return HostWith(UINT64_MAX, 257, 0, 1, 0); }, "-u mb",
        "regular,1,0,1\nlpage,1,0,1\nTotal,2,0,0\n"),
    Csv(
        "AllOnesInKb", [] { return HostWith(UINT64_MAX, 257, 0, 1, 0); }, "",
        "regular,1024,0,1024\nlpage,4,0,4\nTotal,1028,0,18446744073709551612\n"),
};

INSTANTIATE_TEST_SUITE_P(Figures, PShareHintStats, testing::ValuesIn(kFiguresCases), NameOf<ReportCase>);

constexpr ReportCase kFailuresCases[] = {
    {"BytesAreNotOffered", HintsHost, "-r pshareHint-stats -u b", "", kBadUnit, 1},
    {"EmptyUnit", HintsHost, "-r pshareHint-stats -q -u ''", "", kBadUnit, 1},
    {"AnotherUnitOverrides", HintsHost, "-r pshareHint-stats -u mb -u tb", "", kBadUnit, 1},
    {"NoRecord", [] { return StandinHost(); }, "-r pshareHint-stats -v", "", "", 1},
    {"RecordOfAnotherSize", [] { return StandinHost().AddBytes("memory_pshare_stats", {}, std::string(104, 'x')); },
     "-r pshareHint-stats", "", "", 1},
};

INSTANTIATE_TEST_SUITE_P(Failures, PShareHintStats, testing::ValuesIn(kFailuresCases), NameOf<ReportCase>);

TEST(PShareHintStatsCalls, OneRecordIsReadOnce) {
  EXPECT_EQ(CallsThatCount(RunKestrel(HintsHost(), {"-r", "pshareHint-stats"})),
            Lines("NODAL_CheckSig(21) = 0\n"
                  "NODAL_ParamListCreate(1, 1) = list1\n"
                  "NODAL_Get(memory_pshare_stats, [], 208) = 0\n"
                  "NODAL_ParamListDestroy(list1)\n"));
}

TEST(PShareHintStatsCalls, ABadUnitReadsNothing) {
  EXPECT_EQ(RunKestrel(HintsHost(), {"-r", "pshareHint-stats", "-u", "b"}).calls,
            std::vector<std::string>{"NODAL_CheckSig(21) = 0"});
}

}  // namespace
}  // namespace faults::pshare_hint_stats
