// A reader reads the samples that a writer appended to a segment.
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <csignal>

#include "platkit/history/frame.h"
#include "platkit/history/frame_encoder.h"
#include "platkit/history/sample_table.h"
#include "tests/platkit/history/recording.h"

namespace platkit::history {
namespace {

class Segment : public testing::Test {
 protected:
  void ExpectSamples(int seconds) {
    ASSERT_EQ(reader_.Open(recording_.folder(), kName), HVC_OK);
    EXPECT_TRUE(reader_.damage().empty());
    ASSERT_EQ(reader_.frames().size(), static_cast<size_t>((seconds + 4) / 5));
    for (size_t i = 0; i < reader_.frames().size(); ++i) {
      Sample sample;
      ASSERT_EQ(reader_.Read(i, sample), HVC_OK) << i;
      EXPECT_EQ(EntriesOf(sample), HostAt(static_cast<int>(5 * i))) << i;
      EXPECT_EQ(reader_.frames()[i].info.time, TimeAt(static_cast<double>(5 * i)));
      EXPECT_EQ(reader_.frames()[i].entries, sample.size());
      EXPECT_EQ(reader_.host(), TestHost());
    }
  }

  Recording recording_;
  SegmentWriter writer_;
  SegmentReader reader_;
};

TEST_F(Segment, KeepsEverySample) {
  recording_.Write(kName, 300);
  ExpectSamples(300);
}

TEST_F(Segment, IsReadInAnyOrder) {
  recording_.Write(kName, 150);
  ASSERT_EQ(reader_.Open(recording_.folder(), kName), HVC_OK);
  for (const size_t frame : {29u, 3u, 4u, 4u, 0u, 17u, 12u, 11u}) {
    Sample sample;
    ASSERT_EQ(reader_.Read(frame, sample), HVC_OK) << frame;
    EXPECT_EQ(EntriesOf(sample), HostAt(static_cast<int>(5 * frame))) << frame;
  }
}

TEST_F(Segment, HasAKeyFrameEachMinute) {
  recording_.Write(kName, 300);
  ASSERT_EQ(reader_.Open(recording_.folder(), kName), HVC_OK);
  for (size_t i = 0; i < reader_.frames().size(); ++i)
    EXPECT_EQ(reader_.frames()[i].isKey, i % 12 == 0) << i;
}

TEST_F(Segment, IsContinuedWithAKeyFrame) {
  recording_.Write(kName, 50);
  ASSERT_EQ(writer_.Open(recording_.folder(), kName), HVC_OK);
  EXPECT_EQ(writer_.removedBytes(), 0u);
  recording_.Record(writer_, 50, 100);
  ExpectSamples(100);
  EXPECT_TRUE(reader_.frames()[10].isKey);
  EXPECT_FALSE(reader_.frames()[11].isKey);
}

TEST_F(Segment, BeginsAKeyFrameForAnotherHost) {
  ASSERT_EQ(writer_.Open(recording_.folder(), kName), HVC_OK);
  HostHeader rebooted = TestHost();
  rebooted.bootId[0] = std::byte{1};
  recording_.Record(writer_, 0, 10);
  recording_.Record(writer_, 10, 20, rebooted);
  ASSERT_EQ(reader_.Open(recording_.folder(), kName), HVC_OK);
  EXPECT_FALSE(reader_.frames()[1].isKey);
  EXPECT_TRUE(reader_.frames()[2].isKey);
  Sample sample;
  ASSERT_EQ(reader_.Read(1, sample), HVC_OK);
  EXPECT_EQ(reader_.host(), TestHost());
  ASSERT_EQ(reader_.Read(3, sample), HVC_OK);
  EXPECT_EQ(reader_.host(), rebooted);
}

TEST_F(Segment, GivesTheSampleBeforeBack) {
  ASSERT_EQ(writer_.Open(recording_.folder(), kName), HVC_OK);
  Sample sample = SampleOf(HostAt(0));
  ASSERT_EQ(writer_.Append(TestHost(), {.time = TimeAt(0)}, sample), HVC_OK);
  EXPECT_EQ(sample.size(), 0u);
  EXPECT_EQ(EntriesOf(writer_.last()), HostAt(0));
  sample = SampleOf(HostAt(5));
  ASSERT_EQ(writer_.Append(TestHost(), {.time = TimeAt(5)}, sample), HVC_OK);
  EXPECT_EQ(EntriesOf(sample), HostAt(0));
  writer_.Close();
  EXPECT_EQ(EntriesOf(writer_.last()), HostAt(5));
}

TEST_F(Segment, KeepsMarksAndAvailableMemory) {
  ASSERT_EQ(writer_.Open(recording_.folder(), kName), HVC_OK);
  Sample sample;
  const SampleInfo info = {.time = TimeAt(1), .availableBytes = 12345, .marks = kRecorderStarted | kThinned};
  ASSERT_EQ(writer_.Append(TestHost(), info, sample), HVC_OK);
  ASSERT_EQ(writer_.AppendEnd(TimeAt(2)), HVC_OK);
  EXPECT_EQ(writer_.segmentBytes(), Contents(recording_.scratch().Path(kName)).size());
  EXPECT_EQ(writer_.frameBytes(), sizeof(FrameHead));
  ASSERT_EQ(writer_.Append(TestHost(), info, sample), HVC_OK);
  ASSERT_EQ(reader_.Open(recording_.folder(), kName), HVC_OK);
  ASSERT_EQ(reader_.frames().size(), 3u);
  EXPECT_EQ(reader_.frames()[0].info.availableBytes, 12345u);
  EXPECT_EQ(reader_.frames()[0].info.marks, kRecorderStarted | kThinned);
  EXPECT_TRUE(reader_.frames()[1].isEnd);
  EXPECT_EQ(reader_.Read(1, sample), HVC_NOT_FOUND);
  EXPECT_EQ(reader_.Read(2, sample), HVC_OK);
}

TEST_F(Segment, IsReadableByItsOwnerOnly) {
  ASSERT_EQ(writer_.Open(recording_.folder(), kName), HVC_OK);
  struct stat info;
  ASSERT_EQ(stat(recording_.scratch().Path(kName).c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 07777, 0600u);
}

TEST_F(Segment, RefusesWhatTheFormatCannotHold) {
  Sample sample;
  EXPECT_EQ(writer_.Append(TestHost(), {.time = TimeAt(0)}, sample), HVC_BAD_PARAM);  // no segment is open
  ASSERT_EQ(writer_.Open(recording_.folder(), kName), HVC_OK);
  const auto append = [&](const Entries &entries, const HostHeader &host) {
    sample = SampleOf(entries);
    return writer_.Append(host, {.time = TimeAt(0)}, sample);
  };
  EXPECT_EQ(append({{std::string(4097, 'k'), {'R', ""}}}, TestHost()), HVC_LIMIT_EXCEEDED);
  EXPECT_EQ(append({{"/a", {'R', std::string(kMaxPayloadBytes + 1, 'p')}}}, TestHost()), HVC_LIMIT_EXCEEDED);
  EXPECT_EQ(append({{"/a", {'H', ""}}}, TestHost()), HVC_BAD_PARAM);
  HostHeader host = TestHost();
  host.host = std::string(256, 'h');
  EXPECT_EQ(append({}, host), HVC_LIMIT_EXCEEDED);
  host.host = std::string("a\0b", 3);
  EXPECT_EQ(append({}, host), HVC_BAD_PARAM);
  sample.Clear();
  sample.Add("/a", ValueType::kRecord, 0);
  sample.Add("/a", ValueType::kTexts, 0);
  EXPECT_EQ(writer_.Append(TestHost(), {.time = TimeAt(0)}, sample), HVC_ALREADY_EXISTS);
  EXPECT_EQ(sample.size(), 2u);
  EXPECT_EQ(writer_.segmentBytes(), 0u);

  // A refused sample does not disturb the samples around it.
  recording_.Record(writer_, 0, 10);
  EXPECT_EQ(append({{"/a", {'R', std::string(kMaxPayloadBytes + 1, 'p')}}}, TestHost()), HVC_LIMIT_EXCEEDED);
  recording_.Record(writer_, 10, 20);
  ExpectSamples(20);
}

TEST_F(Segment, HoldsTheLargestPayload) {
  ASSERT_EQ(writer_.Open(recording_.folder(), kName), HVC_OK);
  std::string large(kMaxPayloadBytes, '\0');
  uint32_t random = 1;
  for (char &c : large)
    c = static_cast<char>((random = random * 1664525 + 1013904223) >> 24);
  for (const char last : {'a', 'b'}) {
    large.back() = last;
    Sample sample = SampleOf({{"/a", {'R', large}}, {"/b", {'T', large}}});
    ASSERT_EQ(writer_.Append(TestHost(), {.time = TimeAt(0)}, sample), HVC_OK);
  }
  ASSERT_EQ(reader_.Open(recording_.folder(), kName), HVC_OK);
  EXPECT_LT(reader_.frames()[1].bytes, 300u);
  Sample sample;
  ASSERT_EQ(reader_.Read(1, sample), HVC_OK);
  EXPECT_TRUE(EntriesOf(sample)["/b"].second == large);
}

// A list that gains or loses one entry with each sample.
Sample LongListAt(int second) {
  return SampleOf({{"/list", {'I', std::string(kMaxPayloadBytes - (second % 2 == 0 ? 0 : 8), 1)}}});
}

TEST_F(Segment, BeginsAKeyFrameBeforeTooManyBytesMove) {
  ASSERT_EQ(writer_.Open(recording_.folder(), kName), HVC_OK);
  for (int second = 0; second < 20; ++second) {
    Sample sample = LongListAt(second);
    ASSERT_EQ(writer_.Append(TestHost(), {.time = TimeAt(second)}, sample), HVC_OK);
  }
  ASSERT_EQ(reader_.Open(recording_.folder(), kName), HVC_OK);
  ASSERT_EQ(reader_.frames().size(), 20u);
  const auto second =
      std::ranges::find(reader_.frames().begin() + 1, reader_.frames().end(), true, &SegmentReader::Frame::isKey);
  ASSERT_NE(second, reader_.frames().end());
  Sample sample;
  EXPECT_EQ(reader_.Read(static_cast<size_t>(second - reader_.frames().begin()) - 1, sample), HVC_OK);
}

TEST_F(Segment, IsDamagedIfTooManyBytesMove) {
  FrameEncoder encoder;
  Sample last = LongListAt(0);
  ASSERT_EQ(encoder.EncodeKey(TestHost(), {.time = TimeAt(0)}, last), HVC_OK);
  std::string bytes;
  uint64_t moved = 0;
  bool isWithin = true;
  for (int second = 1; isWithin; ++second) {
    bytes.append(reinterpret_cast<const char *>(encoder.frame().data()), encoder.frame().size());
    encoder.Accept();
    Sample sample = LongListAt(second);
    ASSERT_EQ(encoder.EncodeDelta({.time = TimeAt(second)}, sample, last), HVC_OK);
    last.Swap(sample);
    moved += last[0].payload.size();
    isWithin = moved <= MaxMovedBytes(bytes.size() + encoder.frame().size());
  }
  bytes.append(reinterpret_cast<const char *>(encoder.frame().data()), encoder.frame().size());
  recording_.scratch().Write(kName, bytes);
  ASSERT_EQ(reader_.Open(recording_.folder(), kName), HVC_OK);
  Sample sample;
  EXPECT_EQ(reader_.Read(reader_.frames().size() - 2, sample), HVC_OK);
  EXPECT_EQ(reader_.Read(reader_.frames().size() - 1, sample), HVC_SNAPSHOT_DAMAGED);
}

// A limit on file sizes simulates a disk that is full for one sample.
TEST_F(Segment, EndsWithAWholeFrameAfterAFailedWrite) {
  recording_.Write(kName, 20);
  ASSERT_EQ(writer_.Open(recording_.folder(), kName), HVC_OK);
  struct rlimit limit;
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
  const struct rlimit small = {.rlim_cur = writer_.segmentBytes() + 100, .rlim_max = limit.rlim_max};
  signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  Sample sample = SampleOf(HostAt(20));
  EXPECT_EQ(writer_.Append(TestHost(), {.time = TimeAt(20)}, sample), HVC_WRITE_ERROR);
  EXPECT_EQ(EntriesOf(sample), HostAt(20));
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  EXPECT_EQ(Contents(recording_.scratch().Path(kName)).size(), writer_.segmentBytes());
  ASSERT_EQ(writer_.Append(TestHost(), {.time = TimeAt(20)}, sample), HVC_OK);
  recording_.Record(writer_, 25, 40);
  ExpectSamples(40);
}

class Only : public KeyFilter {
 public:
  explicit Only(std::string key) : key_(std::move(key)) {}
  bool Contains(std::string_view key) const override { return key == key_; }
  bool MayContain(std::string_view first, std::string_view end) const override {
    return first <= key_ && (end.empty() || key_ < end);
  }

 private:
  std::string key_;
};

TEST_F(Segment, IsReadForSomeEntriesOnly) {
  recording_.Write(kName, 300);
  for (const auto &[key, value] : HostAt(15)) {
    const Only filter(key);
    reader_.Select(&filter);
    ASSERT_EQ(reader_.Open(recording_.folder(), kName), HVC_OK);
    for (size_t i = 0; i < reader_.frames().size(); ++i) {
      Sample sample;
      ASSERT_EQ(reader_.Read(i, sample), HVC_OK) << key << i;
      Entries expected = HostAt(static_cast<int>(5 * i));
      std::erase_if(expected, [&key = key](const auto &entry) { return entry.first != key; });
      EXPECT_EQ(EntriesOf(sample), expected) << key << i;
    }
  }
}

// A group's name contains the bytes of a frame. After damage, a reader must not find a frame there.
TEST_F(Segment, HasItsMagicAtTheStartOfFramesOnly) {
  const std::string frame = recording_.Write(kName, 5);
  Sample sample = SampleOf({{"/sched/groups/1/groupName", {'R', frame}}, {"/x" + std::string(kMagic), {'R', ""}}});
  ASSERT_EQ(writer_.Open(recording_.folder(), kName), HVC_OK);
  ASSERT_EQ(writer_.Append(TestHost(), {.time = TimeAt(5)}, sample), HVC_OK);
  const std::string bytes = Contents(recording_.scratch().Path(kName));
  EXPECT_EQ(bytes.find(kMagic, frame.size()), frame.size());
  EXPECT_EQ(bytes.find(kMagic, frame.size() + 1), std::string::npos);
  ASSERT_EQ(reader_.Open(recording_.folder(), kName), HVC_OK);
  ASSERT_EQ(reader_.Read(1, sample), HVC_OK);
  EXPECT_EQ(EntriesOf(sample)["/sched/groups/1/groupName"].second, frame);
}

TEST_F(Segment, NeedsASegment) {
  EXPECT_EQ(reader_.Open(recording_.folder(), kName), HVC_NOT_FOUND);
  recording_.scratch().Write(kName,
                             "some text that is longer than the fixed part of a head, which has 72 bytes, or so");
  EXPECT_EQ(reader_.Open(recording_.folder(), kName), HVC_NOT_A_SNAPSHOT);
  EXPECT_EQ(writer_.Open(recording_.folder(), kName), HVC_NOT_A_SNAPSHOT);
  recording_.scratch().Write(kName, "");
  EXPECT_EQ(reader_.Open(recording_.folder(), kName), HVC_OK);
  EXPECT_TRUE(reader_.frames().empty());
}

TEST_F(Segment, CanBeTooNew) {
  std::string bytes = recording_.Write(kName, 5);
  FrameHead head;
  std::memcpy(&head, bytes.data(), sizeof head);
  head.version = kVersion + 1;
  std::memcpy(bytes.data(), &head, sizeof head);
  head.check = snapshot::Check(std::as_bytes(std::span(bytes)).subspan(12, head.headBytes - 12));
  std::memcpy(bytes.data(), &head, sizeof head);
  recording_.scratch().Write(kName, bytes);
  EXPECT_EQ(reader_.Open(recording_.folder(), kName), HVC_SNAPSHOT_TOO_NEW);
  EXPECT_EQ(writer_.Open(recording_.folder(), kName), HVC_SNAPSHOT_TOO_NEW);
}

}  // namespace
}  // namespace platkit::history
