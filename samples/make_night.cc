// make_night SNAPSHOT FOLDER: writes the history of one night of the saved host, with one sample per minute from 22:00
// to 06:00. At 02:40, a program in the group "shell" starts to allocate memory. At 03:12, the host has little left. The
// program ends at 03:25. Its parent group "user" has no limit during this night. The example in README.md finds the
// program.
#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "platkit/snapshot/snapshot_file.h"
#include "samples/history_maker.h"

namespace {

using platkit::history::kNanosInSecond;
using platkit::history::Sample;
using platkit::snapshot::SnapshotFile;

constexpr int64_t kMinute = 60 * kNanosInSecond;
constexpr int64_t kStart = 1'773'439'200 * kNanosInSecond;  // 2026-03-13T22:00:00Z
constexpr int64_t kBoot = kStart - 12 * 24 * 60 * kMinute;
constexpr int kMinutes = 8 * 60 + 1;

// In minutes after kStart.
constexpr int kGrowthStarts = 4 * 60 + 40;
constexpr int kGrowthEnds = 5 * 60 + 12;
constexpr int kProgramEnds = 5 * 60 + 25;

constexpr uint64_t kKBAMinute = 720'896;  // 704 MB

// The memory that the program has allocated.
uint64_t TakenKB(int minute) {
  if (minute <= kGrowthStarts || minute >= kProgramEnds) return 0;
  return static_cast<uint64_t>(std::min(minute, kGrowthEnds) - kGrowthStarts) * kKBAMinute;
}

// A changing amount of up to 8 MB.
uint64_t RippleKB(int minute, uint64_t group) {
  return std::rotl((static_cast<uint64_t>(minute) + 1) * (group + 1) * 0x9e3779b97f4a7c15u, 20) % 2048 * 4;
}

template <typename Record, typename Change>
void ChangeRecord(Sample &sample, std::string_view path, Change change) {
  for (size_t i = 0; i < sample.size(); ++i) {
    if (sample[i].key != path) continue;
    Record record;
    const std::span<std::byte> payload = sample.MutablePayload(i);
    std::memcpy(&record, payload.data(), sizeof record);
    change(record);
    std::memcpy(payload.data(), &record, sizeof record);
    return;
  }
  Require(HVC_NOT_FOUND, std::string(path).c_str());
}

void AddToGroup(Sample &sample, uint64_t group, uint64_t amount) {
  const std::string path = "/sched/groups/" + std::to_string(group) + "/stats/memoryStats";
  ChangeRecord<GroupMemoryStatsRecord>(sample, path, [&](GroupMemoryStatsRecord &stats) {
    stats.memSize += amount;
    stats.consumed += amount;
    stats.consumedPeak = std::max(uint64_t{stats.consumedPeak}, uint64_t{stats.consumed});
    stats.memSizePeak = std::max(uint64_t{stats.memSizePeak}, uint64_t{stats.memSize});
  });
}

// The host at this minute of the night.
void Change(Sample &sample, int minute) {
  constexpr uint64_t kHost = 0, kMachines = 2, kUser = 3, kWeb = 10, kMail = 20, kAgent = 30, kShell = 31;
  const uint64_t taken = TakenKB(minute);
  uint64_t all = taken;
  AddToGroup(sample, kShell, taken);
  for (const auto &[group, parent] : {std::pair(kWeb, kMachines), {kMail, kMachines}, {kAgent, kUser}}) {
    const uint64_t amount = RippleKB(minute, group);
    AddToGroup(sample, group, amount);
    AddToGroup(sample, parent, amount);
    all += amount;
  }
  AddToGroup(sample, kUser, taken);
  ChangeRecord<GroupAllocRecord>(sample, "/sched/groups/3/memAllocationInKB",
                                 [](GroupAllocRecord &allocation) { allocation.max = HVC_KB_NONE; });
  AddToGroup(sample, kHost, all);
  uint64_t free = 0;
  ChangeRecord<ComprehensiveRecord>(sample, "/memory/comprehensive", [&](ComprehensiveRecord &memory) {
    memory.otherConsumed += all;
    memory.free -= all;
    free = memory.free;
  });
  ChangeRecord<GlobalMemoryRecord>(sample, "/sched/globalStats/memory/kestrel", [&](GlobalMemoryRecord &memory) {
    const uint64_t minimum = memory.minFree;
    memory.memState = free > 2 * minimum ? 1 : free > minimum ? 2 : 3;
  });
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 3) {
    std::fputs("usage: make_night SNAPSHOT FOLDER\n", stderr);
    return EXIT_FAILURE;
  }
  SnapshotFile file;
  Require(file.Open(argv[1]), argv[1]);
  const platkit::history::HostHeader header = {.definitions = file.header().definitions,
                                               .host = file.header().host,
                                               .kernel = "6.12.0",
                                               .intervalMillis = 60'000};
  Sample day;
  SnapshotFile::Cursor cursor(file);
  while (cursor.Next() == HVC_OK) {
    if (platkit::snapshot::IsHeaderKey(cursor.key())) continue;
    platkit::snapshot::Value value;
    Require(cursor.Read(value), "value");
    day.Add(cursor.key(), value.type, value.payload);
  }

  HistoryMaker maker(argv[2], 10 * kMinute);
  Sample sample;
  for (int minute = 0; minute < kMinutes; ++minute) {
    const int64_t wall = kStart + minute * kMinute;
    CopySample(day, sample);
    Change(sample, minute);
    Require(maker.WriterAt(wall).Append(header, {.time = {wall, wall - kBoot, wall - kBoot}}, sample), "append");
  }
  return EXIT_SUCCESS;
}
