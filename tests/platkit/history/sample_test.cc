#include "platkit/history/sample.h"

#include "tests/platkit/history/recording.h"

namespace platkit::history {
namespace {

TEST(Sample, SortsItsEntries) {
  Sample sample;
  for (const char *key : {"/b", "/a", "/c"})
    sample.Add(key, ValueType::kRecord, std::as_bytes(std::span(std::string_view(key))));
  sample.Sort();
  std::string keys;
  for (size_t i = 0; i < sample.size(); ++i) {
    keys += sample[i].key;
    EXPECT_EQ(sample[i].payload.back(), std::byte{static_cast<unsigned char>(sample[i].key.back())});
  }
  EXPECT_EQ(keys, "/a/b/c");
}

TEST(Sample, FindsEntries) {
  const Sample sample = SampleOf({{"/a", {'R', "1"}}, {"/c", {'T', "3"}}});
  Entry entry;
  ASSERT_TRUE(sample.Find("/c", entry));
  EXPECT_EQ(entry.type, ValueType::kTexts);
  EXPECT_FALSE(sample.Find("/b", entry));
  EXPECT_FALSE(sample.Find("/d", entry));
  EXPECT_FALSE(sample.Find("", entry));
}

TEST(Sample, KeepsItsMemory) {
  Sample sample = SampleOf({{"/a", {'R', "1234"}}});
  const std::byte *payload = sample[0].payload.data();
  sample.Clear();
  EXPECT_EQ(sample.size(), 0u);
  EXPECT_EQ(sample.Add("/b", ValueType::kRecord, 4).data(), payload);
}

TEST(Sample, HoldsEmptyPayloads) {
  Sample sample;
  sample.Add("/a", ValueType::kTexts, 0);
  EXPECT_TRUE(sample[0].payload.empty());
  EXPECT_EQ(sample[0].key, "/a");
}

}  // namespace
}  // namespace platkit::history
