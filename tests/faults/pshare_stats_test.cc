#include "tests/faults/hosts.h"
#include "tests/faults/report_case.h"

namespace faults::pshare_stats {
namespace {

constexpr char kBadUnit[] = "Invalid unit specified. Choose from {mb, kb, pg}\n";

constexpr char kTableInKb[] = R"(
 PSHARE STATS: <time>
 --------------------------------------
   Unit              : KB
   Peak chain length : 12
   Peak chain index  : 34567
   Peak ref.  count  : 8901
   Selected columns  : (all)

----------------------------------------------------------------------------
       cow       cow1       zero       used  reclaimed     totAdd  totRemove
----------------------------------------------------------------------------
      1028          4          0       1024    4000000 16000000000        20
----------------------------------------------------------------------------
)";

constexpr char kTableInPages[] = R"(
 PSHARE STATS: <time>
 --------------------------------------
   Unit              : Page (4K)
   Peak chain length : 12
   Peak chain index  : 34567
   Peak ref.  count  : 8901
   Selected columns  : cow:zero

---------------------
       cow       zero
---------------------
       257          0
---------------------
Description of report header labels:
                 cow: Client memory marked copy-on-write
                zero: Zeroed client memory
)";

constexpr char kNoColumns[] = R"(
 PSHARE STATS: <time>
 --------------------------------------
   Unit              : MB
   Peak chain length : 12
   Peak chain index  : 34567
   Peak ref.  count  : 8901
   Selected columns  : (none)






Description of report header labels:
)";

constexpr char kDescriptions[] = R"(Description of report header labels:
                 cow: Client memory marked copy-on-write
                cow1: Client's COWed memory with single ref
                zero: Zeroed client memory
                used: Machine memory used for backing COWed client memory
           reclaimed: Machine memory reclaimed via pshare
              totAdd: Total client memory added to pshare table
           totRemove: Total client memory removed from pshare table
)";

constexpr char kCsvHeader[] = "cow,cow1,zero,used,reclaimed,totAdd,totRemove\n";

StandinHost HostWith(uint64_t pages) {
  PShareStatsRecord record = {};
  record.cow = pages;
  return StandinHost().AddRecord("memory_pshare_stats", {}, record);
}

class PShareStats : public testing::TestWithParam<ReportCase> {};

TEST_P(PShareStats, AnswersAs) { Check(GetParam()); }

constexpr ReportCase kFormsCases[] = {
    {"TableInKb", SharingHost, "-r pshare-stats", kTableInKb},
    {"TableInPages", SharingHost, "-r pshare-stats -u pg -s zero:COW -v", kTableInPages},
    {"NoColumns", SharingHost, "-r pshare-stats -u mb -s gid -v", kNoColumns},
    {"NoColumnsInCsv", SharingHost, "-r pshare-stats -q -s ''", "\n\n"},
    {"CsvInMb", SharingHost, "-r pshare-stats -qu mb", {kCsvHeader, "2,1,0,1,3907,15625000,1\n"}},
    {"CsvWithDescriptions",
     SharingHost,
     "-r pshare-stats --csvMode --verbose --unit=PG",
     {kCsvHeader, "257,1,0,256,1000000,4000000000,5\n", kDescriptions}},
};

INSTANTIATE_TEST_SUITE_P(Forms, PShareStats, testing::ValuesIn(kFormsCases), NameOf<ReportCase>);

constexpr ReportCase kConversionsCases[] = {
    {"NothingInMb", [] { return HostWith(0); }, "-r pshare-stats -qscow -umb", "cow\n0\n"},
    {"OnePageInMb", [] { return HostWith(1); }, "-r pshare-stats -qscow -umb", "cow\n1\n"},
    {"OneMbOfPagesInMb", [] { return HostWith(256); }, "-r pshare-stats -qscow -umb", "cow\n1\n"},
    {"OnePageMoreInMb", [] { return HostWith(257); }, "-r pshare-stats -qscow -umb", "cow\n2\n"},
    // UINT64_MAX is an ordinary count, not "not available". Its amount wraps.
    {"AllOnesInKb", [] { return HostWith(UINT64_MAX); }, "-r pshare-stats -qscow", "cow\n18446744073709551612\n"},
    {"AllOnesInMb", [] { return HostWith(UINT64_MAX); }, "-r pshare-stats -qscow -umb", "cow\n0\n"},
    {"AllOnesInPages", [] { return HostWith(UINT64_MAX); }, "-r pshare-stats -qscow -upg",
     "cow\n4611686018427387903\n"},
};

INSTANTIATE_TEST_SUITE_P(Conversions, PShareStats, testing::ValuesIn(kConversionsCases), NameOf<ReportCase>);

constexpr ReportCase kFailuresCases[] = {
    {"BytesAreNotOffered", SharingHost, "-r pshare-stats -u b", "", kBadUnit, 1},
    {"UnknownUnit", SharingHost, "-r pshare-stats -u gb -q", "", kBadUnit, 1},
    {"NoRecord", [] { return StandinHost(); }, "-r pshare-stats -v", "", "", 1},
    {"RecordOfAnotherSize", [] { return StandinHost().AddBytes("memory_pshare_stats", {}, std::string(200, 'x')); },
     "-r pshare-stats -q", "", "", 1},
};

INSTANTIATE_TEST_SUITE_P(Failures, PShareStats, testing::ValuesIn(kFailuresCases), NameOf<ReportCase>);

TEST(PShareStatsCalls, OneRecordIsReadOnce) {
  EXPECT_EQ(RunKestrel(SharingHost(), {"-r", "pshare-stats"}).calls,
            Lines("NODAL_CheckSig(21) = 0\n"
                  "NODAL_ParamListCreate(1, 1) = list1\n"
                  "NODAL_Get(memory_pshare_stats, [], 208) = 0\n"
                  "NODAL_ParamListDestroy(list1)\n"));
}

TEST(PShareStatsCalls, ABadUnitReadsNothing) {
  EXPECT_EQ(RunKestrel(SharingHost(), {"-r", "pshare-stats", "-u", "b"}).calls,
            std::vector<std::string>{"NODAL_CheckSig(21) = 0"});
}

}  // namespace
}  // namespace faults::pshare_stats
