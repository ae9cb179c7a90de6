// zip-stats: the compression cache of each virtual machine.
#include "src/groups/mem_clients.h"
#include "src/reports/group_report.h"
#include "src/reports/reports.h"

namespace kestrel {
namespace {

struct ZipRow {
  GroupHead head;
  ZipStatsRecord zip;
};

using enum Conversion;
using enum FigureUnit;
using enum FigureSum;

// Sums include unavailable figures. All their bits are set, so each of them lowers a total by one. The counts of free
// pages have 32 bits in the record, but are shown and summed with 64 bits.
constinit auto columns = ColumnsOf<ZipRow>({
    {"name", "Virtual machine name", 20, kS, [](auto &row) { return Text(row.head.name.name); }, kInTotal},
    SchedGroupColumn<ZipRow>(),
    ParentGroupColumn<ZipRow>(),
    WorldGroupColumn<ZipRow>(),
    {"totalCache", "Total compression cache configured", 10, kLu, kKB, [](auto &row) { return row.zip.totalCache; },
     kAdd},
    {"maxCache", "Maximum compression cache", 10, kLu, kKB, [](auto &row) { return row.zip.maxCache; }, kAdd},
    {"usedCache", "Total compression cache used", 10, kLu, kKB, [](auto &row) { return row.zip.usedCache; }, kAdd},
    {"zipped", "Total memory compressed", 10, kLu, kKB, [](auto &row) { return row.zip.zipped; }, kAdd},
    {"unZipped", "Total memory decompressed", 10, kLu, kKB, [](auto &row) { return row.zip.unZipped; }, kAdd},
    {"zipRejected", "Total memory rejected", 10, kLu, kKB, [](auto &row) { return row.zip.zipRejected; }, kAdd},
    {"nrFreeHalf", "Total free half pages", 10, kLu, [](auto &row) { return uint64_t{row.zip.nrFreeHalf}; }, kAdd},
    {"nrFreeQuarter", "Total free quarter pages", 10, kLu, [](auto &row) { return uint64_t{row.zip.nrFreeQuarter}; },
     kAdd},
    {"avgZipTime", "Average compression time in usec", 10, kLu, [](auto &row) { return row.zip.avgZipTime; }, kMean},
    {"avgUnzipTime", "Average decompression time in usec", 10, kLu, [](auto &row) { return row.zip.avgUnzipTime; },
     kMean},
});

constexpr ZipRow kTotal = TotalLabel<ZipRow>();

HVC_ReturnStatus KestrelZipGetZipStats(uint32_t leaderID, ZipStatsRecord &zip) {
  return ReadClientRecord(__func__, leaderID, nodes::kZipStats, zip);
}

HVC_ReturnStatus KestrelZipGroupCallback(const GroupVisit &group) {
  ZipRow row = {};
  HVC_ReturnStatus status = ReadGroupHead(group.groupID, row.head);
  if (status == HVC_OK) status = KestrelZipGetZipStats(row.head.leaderID, row.zip);
  if (status == HVC_OK) group.PrintRow(row);
  return status;
}

constexpr GroupFrame kFrame = {
    .title = "VIRTUAL MACHINE COMPRESSION STATS",
    .dashes = 61,
    .kinds = HVC_GROUP_VM,
    .callback = KestrelZipGroupCallback,
    .totalLabel = &kTotal,
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
