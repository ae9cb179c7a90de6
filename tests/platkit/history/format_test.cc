// A segment of version 1. It was not written by nodal, but by a program that only follows docs/history.md. Every later
// version must read it.
#include "platkit/history/frame.h"
#include "tests/platkit/history/recording.h"

namespace platkit::history {
namespace {

// The segment has three frames:
//
// - a key frame with each coding of a new entry
// - a delta frame with each coding of a change, a mask, and a compressed chunk
// - an end frame
constexpr std::string_view kSegment =
    "9f6e6f64616c480a99aa2ce97a000000d100000001004b0100000000040000000000d5dd00e779180010a5d4e800000000282e8cd100"
    "0000001000000000000002000000040000002600000026000000f4b103d4000000000000000048000000310000003100000042821096"
    "0000000003000000450002002f6103736967056275696c6405616c70686103362e31000102030405060708090a0b0c0d0e0f88270002"
    "2f61001001000000020000000300000004000000020162011001020a010101016c0710140501017408056d61696e009f6e6f64616c48"
    "0ace3af2dc92000000b60000000100440099aa2ce90400000000f2da0702e779180010a5d4e800000000282e8cd1000000ffffffffff"
    "ffffff030055000500000054555555545555558eb91b525455555554555555075555555855555558555555cde067ea55555555565555"
    "551655555543555555175555559a9751e45155555551555555105557557a2f5554455654575b5c50553b3021557de07aa87517385555"
    "6d55577a2f55692d5455c5d5449f6e6f64616c480ad38b6af0480000004800000001004500000000000000000000e4e03103e7791800"
    "10a5d4e800000000282e8cd1000000ffffffffffffffff0000000000000000";

std::string FromHex(std::string_view digits) {
  std::string bytes;
  for (size_t i = 0; i < digits.size(); i += 2)
    bytes += static_cast<char>(std::stoi(std::string(digits.substr(i, 2)), nullptr, 16));
  return bytes;
}

std::string Words(std::initializer_list<uint32_t> words) {
  std::string bytes;
  for (const uint32_t word : words)
    bytes.append(reinterpret_cast<const char *>(&word), sizeof word);
  return bytes;
}

TEST(Version1, StaysReadable) {
  Recording recording;
  recording.scratch().Write("segment", FromHex(kSegment));
  SegmentReader reader;
  ASSERT_EQ(reader.Open(recording.folder(), "segment"), HVC_OK);
  EXPECT_TRUE(reader.damage().empty());
  ASSERT_EQ(reader.frames().size(), 3u);
  Sample sample;
  ASSERT_EQ(reader.Read(0, sample), HVC_OK);
  EXPECT_EQ(EntriesOf(sample), (Entries{{"/a", {'R', Words({1, 2, 3, 4})}},
                                        {"/ab", {'R', Words({1, 7, 2, 4})}},
                                        {"/l", {'I', Integers({10, 7})}},
                                        {"/t", {'T', std::string("main\0", 5)}}}));
  ASSERT_EQ(reader.Read(1, sample), HVC_OK);
  EXPECT_EQ(EntriesOf(sample), (Entries{{"/a", {'R', Words({1, 2, 3, 5})}},
                                        {"/l", {'I', Integers({10, 7})}},
                                        {"/t", {'T', std::string("main\0net\0", 9)}},
                                        {"/z", {'R', std::string(60, 'x')}}}));
  EXPECT_TRUE(reader.frames()[2].isEnd);

  const SampleInfo info = {.time = {.wall = kStart, .boot = 1000 * kNanosInSecond, .monotonic = 900 * kNanosInSecond},
                           .availableBytes = 4096,
                           .marks = kRecorderStarted};
  EXPECT_EQ(reader.frames()[0].info.time, info.time);
  EXPECT_EQ(reader.frames()[0].info.availableBytes, info.availableBytes);
  EXPECT_EQ(reader.frames()[0].info.marks, info.marks);
  EXPECT_EQ(reader.frames()[1].info.availableBytes, SampleInfo::kUnknown);
  HostHeader host = {.definitions = {.signature = "sig", .build = "build"}, .host = "alpha", .kernel = "6.1"};
  for (size_t i = 0; i < host.bootId.size(); ++i)
    host.bootId[i] = static_cast<std::byte>(i);
  host.intervalMillis = 5000;
  EXPECT_EQ(reader.host(), host);
}

}  // namespace
}  // namespace platkit::history
