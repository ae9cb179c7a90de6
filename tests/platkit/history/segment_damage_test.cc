// Truncated and overwritten segments. Whatever the damage, a sample is read as it was written, or not at all.
#include <algorithm>
#include <cstring>

#include "platkit/history/frame.h"
#include "tests/platkit/history/recording.h"

namespace platkit::history {
namespace {

constexpr int kSeconds = 75;  // two key frames

class SegmentDamage : public testing::Test {
 protected:
  SegmentDamage() : whole_(recording_.Write(kName, kSeconds)) {
    SegmentReader reader;
    EXPECT_EQ(reader.Open(recording_.folder(), kName), HVC_OK);
    frames_ = reader.frames();
  }

  struct Outcome {
    HVC_ReturnStatus status;   // of opening
    std::vector<int> seconds;  // of the samples that were read
    uint64_t damagedBytes = 0;
    bool hasIncompleteEnd = false;
  };

  Outcome Read(const std::string &bytes) {
    recording_.scratch().Write("damaged", bytes);
    SegmentReader reader;
    Outcome outcome = {.status = reader.Open(recording_.folder(), "damaged"), .seconds = {}};
    if (outcome.status != HVC_OK) return outcome;
    for (const DamagedPart &part : reader.damage()) {
      outcome.damagedBytes += part.bytes;
      outcome.hasIncompleteEnd = outcome.hasIncompleteEnd || part.isIncompleteEnd;
    }
    for (size_t i = 0; i < reader.frames().size(); ++i) {
      Sample sample;
      const HVC_ReturnStatus status = reader.Read(i, sample);
      EXPECT_TRUE(status == HVC_OK || status == HVC_SNAPSHOT_DAMAGED) << std::hex << status;
      if (status != HVC_OK) continue;
      const int64_t passed = reader.frames()[i].info.time.wall - kStart;
      outcome.seconds.push_back(static_cast<int>(passed / kNanosInSecond));
      EXPECT_EQ(EntriesOf(sample), HostAt(outcome.seconds.back()));
      EXPECT_EQ(reader.host(), TestHost());
    }
    return outcome;
  }

  // The frame that the byte is in.
  size_t FrameAt(size_t position) const {
    size_t frame = 0;
    while (frame + 1 < frames_.size() && frames_[frame + 1].start <= position)
      ++frame;
    return frame;
  }

  // The samples that remain if a frame is lost: those before that frame, and those from the next key frame on.
  std::vector<int> SecondsWithout(size_t lost) const {
    std::vector<int> seconds;
    bool isLost = false;
    for (size_t i = 0; i < frames_.size(); ++i) {
      isLost = i == lost || (isLost && !frames_[i].isKey);
      if (!isLost) seconds.push_back(static_cast<int>(5 * i));
    }
    return seconds;
  }

  Recording recording_;
  std::string whole_;
  std::vector<SegmentReader::Frame> frames_;
};

TEST_F(SegmentDamage, CutAtEveryLength) {
  for (size_t size = 0; size < whole_.size(); ++size) {
    const Outcome outcome = Read(whole_.substr(0, size));
    ASSERT_EQ(outcome.status, HVC_OK) << size;
    const size_t whole = size < frames_[1].start ? 0 : FrameAt(size);
    std::vector<int> expected;
    for (size_t i = 0; i < whole; ++i)
      expected.push_back(static_cast<int>(5 * i));
    EXPECT_EQ(outcome.seconds, expected) << size;
    EXPECT_EQ(outcome.damagedBytes, size - frames_[whole].start) << size;
    EXPECT_EQ(outcome.hasIncompleteEnd, size != frames_[whole].start) << size;
  }
}

// A recorder that was killed continues the segment with the next sample.
TEST_F(SegmentDamage, CutAndContinued) {
  for (size_t size = 0; size < whole_.size(); size += 7) {
    recording_.scratch().Write(kName, whole_.substr(0, size));
    SegmentWriter writer;
    ASSERT_EQ(writer.Open(recording_.folder(), kName), HVC_OK);
    const size_t whole = size < frames_[1].start ? 0 : FrameAt(size);
    EXPECT_EQ(writer.removedBytes(), size - frames_[whole].start);
    recording_.Record(writer, kSeconds, kSeconds + 10);
    const Outcome outcome = Read(Contents(recording_.scratch().Path(kName)));
    EXPECT_EQ(outcome.seconds.size(), whole + 2) << size;
    EXPECT_EQ(outcome.damagedBytes, 0u) << size;
  }
}

TEST_F(SegmentDamage, FlippedAtEveryByte) {
  for (size_t i = 0; i < whole_.size(); ++i) {
    std::string bytes = whole_;
    bytes[i] = static_cast<char>(static_cast<unsigned char>(bytes[i]) ^ 1u << i % 8);
    const Outcome outcome = Read(bytes);
    ASSERT_EQ(outcome.status, HVC_OK) << i;
    EXPECT_EQ(outcome.seconds, SecondsWithout(FrameAt(i))) << i;
  }
}

TEST_F(SegmentDamage, OverwrittenFrames) {
  for (size_t i = 0; i < frames_.size(); ++i) {
    for (const char fill : {'\0', '\xff'}) {
      std::string bytes = whole_;
      bytes.replace(frames_[i].start, frames_[i].bytes, frames_[i].bytes, fill);
      const Outcome outcome = Read(bytes);
      ASSERT_EQ(outcome.status, HVC_OK) << i;
      EXPECT_EQ(outcome.seconds, SecondsWithout(i)) << i;
      EXPECT_EQ(outcome.damagedBytes, frames_[i].bytes) << i;
      EXPECT_FALSE(outcome.hasIncompleteEnd) << i;
    }
  }
}

TEST_F(SegmentDamage, RemovedAndRepeatedFrames) {
  for (size_t i = 0; i < frames_.size(); ++i) {
    std::string without = whole_, repeated = whole_;
    without.erase(frames_[i].start, frames_[i].bytes);
    repeated.insert(frames_[i].start, whole_, frames_[i].start, frames_[i].bytes);
    EXPECT_EQ(Read(without).seconds, SecondsWithout(i)) << i;
    Read(repeated);  // checks the samples
  }
}

TEST_F(SegmentDamage, BytesBetweenFrames) {
  for (size_t i = 1; i < frames_.size(); ++i) {
    std::string bytes = whole_;
    bytes.insert(frames_[i].start, "abc");
    const Outcome outcome = Read(bytes);
    EXPECT_EQ(outcome.seconds.size(), frames_.size()) << i;
    EXPECT_EQ(outcome.damagedBytes, 3u) << i;
  }
}

// Excessive sizes in a frame with correct checksums. The reader does not allocate memory for them.
class HostileFrame : public SegmentDamage {
 protected:
  void Change(const std::function<void(FrameHead &head, Chunk &chunk)> &change) {
    for (size_t i = 0; i < 2; ++i) {
      std::string bytes = whole_;
      char *frame = bytes.data() + frames_[i].start;
      FrameHead head;
      Chunk chunk;
      std::memcpy(&head, frame, sizeof head);
      std::memcpy(&chunk, frame + sizeof head, sizeof chunk);
      change(head, chunk);
      std::memcpy(frame, &head, sizeof head);
      std::memcpy(frame + sizeof head, &chunk, sizeof chunk);
      const size_t checkedBytes = std::clamp<size_t>(head.headBytes, 12, whole_.size() - frames_[i].start) - 12;
      head.check = snapshot::Check(std::as_bytes(std::span(frame + 12, checkedBytes)));
      std::memcpy(frame, &head, sizeof head);
      const Outcome outcome = Read(bytes);
      ASSERT_EQ(outcome.status, HVC_OK);
      EXPECT_EQ(outcome.seconds, SecondsWithout(i));
    }
  }
};

TEST_F(HostileFrame, ClaimsLargeSizes) {
  Change([](FrameHead &head, Chunk &) { head.frameBytes = UINT32_MAX; });
  Change([](FrameHead &head, Chunk &) { head.headBytes = UINT32_MAX; });
  Change([](FrameHead &head, Chunk &) { head.headBytes = 0; });
  Change([](FrameHead &head, Chunk &) { head.chunks = UINT16_MAX; });
  Change([](FrameHead &head, Chunk &) { head.entries = UINT32_MAX; });
  Change([](FrameHead &head, Chunk &) { head.nextId = UINT32_MAX; });
  Change([](FrameHead &, Chunk &chunk) { chunk.rawBytes = UINT32_MAX; });
  Change([](FrameHead &, Chunk &chunk) { chunk.rawBytes = kMaxChunkBytes; });
  Change([](FrameHead &, Chunk &chunk) { chunk.rawBytes = 0; });
  Change([](FrameHead &, Chunk &chunk) { chunk.storedBytes = UINT32_MAX; });
  Change([](FrameHead &, Chunk &chunk) { chunk.storedBytes = 0; });
  Change([](FrameHead &, Chunk &chunk) { chunk.keyBytes = UINT16_MAX; });
  Change([](FrameHead &, Chunk &chunk) { chunk.lastId = UINT32_MAX; });
  Change([](FrameHead &, Chunk &chunk) { chunk.firstId = chunk.lastId + 1; });
  Change([](FrameHead &, Chunk &chunk) { chunk.kind = static_cast<ChunkKind>('x'); });
  Change([](FrameHead &head, Chunk &) { head.kind = static_cast<FrameKind>('x'); });
}

// A delta frame does not fit into another chain: its base is the frame that it followed.
TEST_F(HostileFrame, ContinuesAnotherFrame) {
  std::string bytes = whole_;
  bytes.replace(frames_[13].start, frames_[13].bytes, whole_, frames_[1].start, frames_[1].bytes);
  EXPECT_EQ(Read(bytes).seconds, SecondsWithout(13));
}

}  // namespace
}  // namespace platkit::history
