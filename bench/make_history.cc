// make_history SNAPSHOT FOLDER SAMPLES: writes a history of the saved host, with a sample every five seconds up to
// 2026-03-14T12:00:00Z. From one sample to the next, a tenth of the groups changes. Prints the bytes per group and
// sample, and the milliseconds of processor time per sample. The same arguments give the same history.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <map>
#include <vector>

#include "platkit/path.h"
#include "platkit/snapshot/snapshot_file.h"
#include "samples/history_maker.h"

namespace {

using platkit::Field;
using platkit::FieldType;
using platkit::FieldUnit;
using platkit::history::kNanosInSecond;
using platkit::history::Sample;
using platkit::history::SampleTime;
using platkit::history::SegmentWriter;
using platkit::snapshot::SnapshotFile;

constexpr int64_t kEnd = 1'773'489'600;
constexpr int64_t kInterval = 5;

class Random {
 public:
  uint64_t Below(uint64_t bound) {
    state_ = state_ * 6364136223846793005 + 1442695040888963407;
    return (state_ >> 33) % bound;
  }

 private:
  uint64_t state_ = 1;
};

// The fields of a record that change between samples: amounts in use, but not limits.
std::vector<const Field *> MovingFields(const platkit::RecordLayout &layout) {
  constexpr std::string_view kNames[] = {"consumed", "touched", "memSize", "sharedSaved",
                                         "allocTgt", "ovhd",    "swapped"};
  std::vector<const Field *> fields;
  for (const Field &field : layout.fields) {
    for (const std::string_view name : kNames) {
      if (field.name == name && field.unit == FieldUnit::KB && field.type == FieldType::kU64) fields.push_back(&field);
    }
  }
  return fields;
}

class MovingHost {
 public:
  explicit MovingHost(const char *snapshot) {
    SnapshotFile file;
    Require(file.Open(snapshot), snapshot);
    header_ = {.definitions = file.header().definitions,
               .host = "bench",
               .kernel = "bench",
               .intervalMillis = 1000 * kInterval};
    SnapshotFile::Cursor cursor(file);
    while (cursor.Next() == HVC_OK)
      Add(cursor);
  }

  const platkit::history::HostHeader &header() const { return header_; }
  size_t groups() const { return groups_; }

  // Changes the figures of a tenth of the groups.
  void Move() {
    for (auto &[group, entries] : moving_) {
      if (random_.Below(10) == 0) {
        for (const size_t entry : entries)
          Change(entry);
      }
    }
  }

  const Sample &sample() const { return sample_; }

 private:
  void Add(SnapshotFile::Cursor &cursor) {
    if (platkit::snapshot::IsHeaderKey(cursor.key())) return;
    platkit::snapshot::Value value;
    Require(cursor.Read(value), "value");
    sample_.Add(cursor.key(), value.type, value.payload);
    const platkit::PathTarget target = platkit::ParsePath(cursor.key());
    fields_.emplace_back();
    const bool isOfInstance =
        target.asRecord && target.arguments.size() == 1 && target.arguments[0].kind == platkit::ParamKind::kInt;
    if (target.node == nullptr || !isOfInstance) return;
    if (target.node->name == "sched_groups_groupName") ++groups_;
    fields_.back() = MovingFields(*target.node->record);
    if (cursor.key().starts_with("/sched/")) moving_[target.arguments[0].integer].push_back(sample_.size() - 1);
  }

  void Change(size_t entry) {
    for (const Field *field : fields_[entry]) {
      uint64_t number;
      std::byte *place = sample_.MutablePayload(entry).data() + field->offset;
      std::memcpy(&number, place, sizeof number);
      if (number < 4096 || number == UINT64_MAX) continue;
      number += 4 * random_.Below(1024) - 2048;
      std::memcpy(place, &number, sizeof number);
    }
  }

  platkit::history::HostHeader header_;
  Sample sample_;
  std::vector<std::vector<const Field *>> fields_;  // by entry
  std::map<int64_t, std::vector<size_t>> moving_;   // entries by group or client
  size_t groups_ = 0;
  Random random_;
};

double ProcessorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

}  // namespace

int main(int argc, char **argv) {
  if (argc != 4) {
    std::fputs("usage: make_history SNAPSHOT FOLDER SAMPLES\n", stderr);
    return EXIT_FAILURE;
  }
  const int64_t samples = std::atoll(argv[3]);
  MovingHost host(argv[1]);
  HistoryMaker maker(argv[2]);
  Sample sample;
  uint64_t bytes = 0;
  double seconds = 0;
  for (int64_t i = 0; i < samples; ++i) {
    const int64_t wall = kEnd - (samples - 1 - i) * kInterval;
    const SampleTime time = {wall * kNanosInSecond, wall * kNanosInSecond, wall * kNanosInSecond};
    SegmentWriter &writer = maker.WriterAt(time.wall);
    host.Move();
    CopySample(host.sample(), sample);
    const double start = ProcessorSeconds();
    Require(writer.Append(host.header(), {.time = time}, sample), "append");
    seconds += ProcessorSeconds() - start;
    bytes += writer.frameBytes();
  }
  const auto count = static_cast<double>(samples);
  std::printf("%.2f bytes, %.2f ms\n", static_cast<double>(bytes) / count / static_cast<double>(host.groups()),
              1000 * seconds / count);
  return EXIT_SUCCESS;
}
