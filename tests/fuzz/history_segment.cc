// Reads a segment of any bytes in order, in reverse order, and with a filter. Each read of a sample must give the same
// result.
//
// First, the target sets the checksums in the input, because mutated inputs almost never have the right ones.
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <map>

#include "platkit/history/frame.h"
#include "platkit/history/sample_table.h"
#include "platkit/history/segment_reader.h"
#include "tests/fuzz/target.h"

namespace {

using namespace platkit::history;  // NOLINT(google-build-using-namespace): the target is about this namespace alone

using Entries = std::map<std::string, std::string>;

// Sets the checksums of the frame at the start of the bytes, and the base of a delta frame. Returns the frame's size,
// or the number of bytes to skip if no frame starts here.
size_t SetChecksums(std::span<std::byte> bytes, uint32_t &base) {
  FrameHead head;
  if (bytes.size() < sizeof head) return bytes.size();
  std::memcpy(&head, bytes.data(), sizeof head);
  if (!IsPossibleHead(head, bytes.size())) return 1;
  head.mask = 0;
  if (head.kind == FrameKind::kDelta) head.base = base;
  size_t entry = sizeof head, chunkStart = head.headBytes;
  for (uint16_t i = 0; i < head.chunks; ++i) {
    Chunk chunk;
    if (entry + sizeof chunk > head.headBytes) break;
    std::memcpy(&chunk, bytes.data() + entry, sizeof chunk);
    if (chunkStart + chunk.storedBytes > head.frameBytes) break;
    chunk.check = platkit::snapshot::Check(bytes.subspan(chunkStart, chunk.storedBytes));
    std::memcpy(bytes.data() + entry, &chunk, sizeof chunk);
    entry += sizeof chunk + chunk.keyBytes;
    chunkStart += chunk.storedBytes;
  }
  std::memcpy(bytes.data(), &head, sizeof head);
  head.check = platkit::snapshot::Check(bytes.subspan(offsetof(FrameHead, headBytes), head.headBytes - 12));
  std::memcpy(bytes.data(), &head, sizeof head);
  base = head.check;
  return head.frameBytes;
}

int OpenMemory(std::span<const std::byte> bytes) {
  const int fd = memfd_create("segment", MFD_CLOEXEC);
  REQUIRE(fd >= 0);
  REQUIRE(write(fd, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
  return fd;
}

class Prefix : public KeyFilter {
 public:
  explicit Prefix(std::string prefix) : prefix_(std::move(prefix)) {}
  bool Contains(std::string_view key) const override { return key.starts_with(prefix_); }
  bool MayContain(std::string_view first, std::string_view end) const override {
    return (end.empty() || prefix_ < end) && first.substr(0, prefix_.size()) <= prefix_;
  }

 private:
  std::string prefix_;
};

struct Reading {
  HVC_ReturnStatus status;
  Entries entries;

  bool operator==(const Reading &) const = default;
};

Reading Read(SegmentReader &reader, size_t frame) {
  Sample sample;
  Reading reading = {reader.Read(frame, sample), {}};
  if (reading.status != HVC_OK) return reading;
  REQUIRE(sample.size() <= kMaxEntries);
  for (size_t i = 0; i < sample.size(); ++i) {
    const Entry entry = sample[i];
    const std::string payload(reinterpret_cast<const char *>(entry.payload.data()), entry.payload.size());
    REQUIRE(reading.entries.emplace(entry.key, static_cast<char>(entry.type) + payload).second);
  }
  return reading;
}

// Compares only the samples that are intact: a reader with a filter skips chunks, so it misses damage in them.
void CompareFiltered(SegmentReader &reader, const std::vector<Reading> &readings) {
  const Prefix filter("/sched/groups/1");
  reader.Select(&filter);
  for (size_t i = 0; i < readings.size(); ++i) {
    if (readings[i].status != HVC_OK) continue;
    Entries expected = readings[i].entries;
    std::erase_if(expected, [&](const auto &entry) { return !filter.Contains(entry.first); });
    REQUIRE((Read(reader, i) == Reading{HVC_OK, expected}));
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  constexpr size_t kFrames = 32;
  std::vector<std::byte> bytes(reinterpret_cast<const std::byte *>(data),
                               reinterpret_cast<const std::byte *>(data) + size);
  uint32_t base = 0;
  for (size_t start = 0; start < bytes.size();)
    start += SetChecksums(std::span(bytes).subspan(start), base);
  SegmentReader reader;
  if (reader.Open(OpenMemory(bytes)) != HVC_OK) return 0;
  std::vector<Reading> readings;
  for (size_t i = 0; i < std::min(kFrames, reader.frames().size()); ++i)
    readings.push_back(Read(reader, i));
  for (size_t i = readings.size(); i-- > 0;)
    REQUIRE(Read(reader, i) == readings[i]);
  CompareFiltered(reader, readings);
  return 0;
}
