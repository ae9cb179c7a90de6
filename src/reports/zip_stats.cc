// zip-stats: the compression cache of each virtual machine.
#include "platkit/nodes.h"
#include "src/groups/mem_clients.h"
#include "src/reports/group_report.h"
#include "src/reports/reports.h"

namespace kestrel {
namespace {

struct ZipStatsRow {
  GroupHead head;
  // Narrow in the record, but shown and summed in 64 bits.
  uint64_t nrFreeHalf;
  uint64_t nrFreeQuarter;
  ZipStatsRecord zip;
};

using enum Conversion;
using enum FigureSum;
using namespace head_columns;
using Row = ZipStatsRow;

// The totals take every figure as it is: one that is not available, all ones, lowers its total by one.
constinit ColumnDesc columns[] = {
    {"name", "Virtual machine name", 20, kS, kInTotal, kName},
    kSchedGrp,
    kParSchedGroup,
    kWorldGrp,
    {"totalCache", "Total compression cache configured", 10, kLu, kInTotal, KB(zip.totalCache).Sum(kAdd)},
    {"maxCache", "Maximum compression cache", 10, kLu, kInTotal, KB(zip.maxCache).Sum(kAdd)},
    {"usedCache", "Total compression cache used", 10, kLu, kInTotal, KB(zip.usedCache).Sum(kAdd)},
    {"zipped", "Total memory compressed", 10, kLu, kInTotal, KB(zip.zipped).Sum(kAdd)},
    {"unZipped", "Total memory decompressed", 10, kLu, kInTotal, KB(zip.unZipped).Sum(kAdd)},
    {"zipRejected", "Total memory rejected", 10, kLu, kInTotal, KB(zip.zipRejected).Sum(kAdd)},
    {"nrFreeHalf", "Total free half pages", 10, kLu, kInTotal, PLAIN(nrFreeHalf).Sum(kAdd)},
    {"nrFreeQuarter", "Total free quarter pages", 10, kLu, kInTotal, PLAIN(nrFreeQuarter).Sum(kAdd)},
    {"avgZipTime", "Average compression time in usec", 10, kLu, kInTotal, PLAIN(zip.avgZipTime).Sum(kMean)},
    {"avgUnzipTime", "Average decompression time in usec", 10, kLu, kInTotal, PLAIN(zip.avgUnzipTime).Sum(kMean)},
};

constinit Row totals = TotalRow<Row>();

HVC_ReturnStatus PutRow(const GroupVisit &group) {
  Row row = {};
  HVC_ReturnStatus status = ReadGroupHead(group.groupID, row.head);
  if (status == HVC_OK) {
    status =
        ReadClientRecord("KestrelZipGetZipStats", row.head.leaderID, NODAL_NODE_sched_memClients_memzipInfo, row.zip);
  }
  if (status != HVC_OK) return status;

  row.nrFreeHalf = row.zip.nrFreeHalf;
  row.nrFreeQuarter = row.zip.nrFreeQuarter;
  group.Put(row);
  return HVC_OK;
}

constexpr GroupFrame kFrame = {
    .title = "VIRTUAL MACHINE COMPRESSION STATS",
    .dashes = 61,
    .kinds = HVC_GROUP_VM,
    .visit = PutRow,
    .totals = &totals,
};

}  // namespace

constinit const Report kZipStats = {
    .name = "zip-stats",
    .summary = "the compression cache of each virtual machine",
    .options = kGroupOptions,
    .columns = columns,
    .sums = Sums::kTotalRow,
    .frame = &kFrame,
    .run = RunGroupReport,
};

}  // namespace kestrel
