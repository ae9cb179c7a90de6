#include "platkit/history/payload_coding.h"

#include <gtest/gtest.h>

#include "platkit/history/entry_chunk.h"
#include "tests/platkit/history/recording.h"

namespace platkit::history {
namespace {

Payload BytesOf(const std::string &text) { return std::as_bytes(std::span(text)); }

std::string TextOf(Payload payload) { return {reinterpret_cast<const char *>(payload.data()), payload.size()}; }

std::string Hex(Payload bytes) {
  std::string text;
  for (const std::byte byte : bytes) {
    char digits[4];
    std::snprintf(digits, sizeof digits, "%02x", std::to_integer<unsigned>(byte));
    text += digits;
  }
  return text;
}

TEST(Varint, KeepsEveryValue) {
  for (const uint64_t value : {uint64_t{0}, uint64_t{127}, uint64_t{128}, uint64_t{1} << 35, UINT64_MAX}) {
    ByteVector bytes;
    AppendVarint(bytes, value);
    uint64_t read;
    ByteReader reader(bytes);
    ASSERT_TRUE(reader.Varint(read));
    EXPECT_EQ(read, value);
    EXPECT_TRUE(reader.isAtEnd());
    bytes.pop_back();
    EXPECT_FALSE(ByteReader(bytes).Varint(read));
  }
}

TEST(Varint, MapsSignedIntegersToSmallOnes) {
  EXPECT_EQ(ToUnsigned(0), 0u);
  EXPECT_EQ(ToUnsigned(-1), 1u);
  EXPECT_EQ(ToUnsigned(1), 2u);
  for (const int64_t value : {int64_t{0}, int64_t{-5}, INT64_MAX, INT64_MIN})
    EXPECT_EQ(ToSigned(ToUnsigned(value)), value);
}

TEST(Varint, RefusesMoreThan64Bits) {
  const ByteVector bytes(11, std::byte{0x80});
  uint64_t value;
  EXPECT_FALSE(ByteReader(bytes).Varint(value));
}

struct WordsCase {
  std::string reference, payload, coded;
};

TEST(Words, AreTheDifferences) {
  const WordsCase cases[] = {
      {Integers({1, 2, 3}), Integers({1, 2, 3}), "06"},
      {Integers({1, 2, 3}), Integers({1, 3, 3}), "02010203"},
      {Integers({1}), Integers({0}), "00010101"},
      {Integers({1}), Integers({-1}), "00020301"},
      {Integers({1, 2, 3}), Integers({1, 2, 5}), "04010401"},
      {"1234ab", "1234bb", "010102"},
      {"", "", ""},
  };
  for (const WordsCase &words : cases) {
    ByteVector coded;
    AppendWords(BytesOf(words.payload), BytesOf(words.reference), coded);
    EXPECT_EQ(Hex(coded), words.coded);
    std::string payload = words.reference;
    ByteReader reader(coded), skipping(coded);
    EXPECT_TRUE(ApplyWords(reader, std::as_writable_bytes(std::span(payload))));
    EXPECT_EQ(payload, words.payload);
    EXPECT_TRUE(reader.isAtEnd());
    EXPECT_TRUE(SkipWords(skipping, payload.size()));
    EXPECT_TRUE(skipping.isAtEnd());
  }
}

TEST(Words, RefuseWhatDoesNotFit) {
  const std::vector<ByteVector> bad = {
      {},                                                            // covers no words
      {std::byte{4}},                                                // more equal words than the payload has
      {std::byte{1}, std::byte{0}},                                  // no differing words after the equal ones
      {std::byte{0}, std::byte{4}, std::byte{2}},                    // more differing words than the payload has
      {std::byte{2}, std::byte{1}, std::byte{0x80}, std::byte{16}},  // a difference beyond the last byte
      {std::byte{0}, std::byte{1}, std::byte{0xff}, std::byte{0xff}, std::byte{0xff}, std::byte{0xff}, std::byte{0x1f}},
  };
  for (const ByteVector &coded : bad) {
    std::string payload = Integers({1}) + "a";
    ByteReader reader(coded);
    EXPECT_FALSE(ApplyWords(reader, std::as_writable_bytes(std::span(payload)))) << Hex(coded);
  }
}

TEST(Steps, AreTheDifferencesToTheWordBefore) {
  const std::string payload = Integers({10, 11, 9});
  ByteVector coded;
  AppendSteps(BytesOf(payload), coded);
  EXPECT_EQ(Hex(coded), "140203");
  std::string read(payload.size(), '\0');
  ByteReader reader(coded);
  EXPECT_TRUE(ReadSteps(reader, std::as_writable_bytes(std::span(read))));
  EXPECT_EQ(read, payload);
  coded.pop_back();
  ByteReader cut(coded);
  EXPECT_FALSE(ReadSteps(cut, std::as_writable_bytes(std::span(read))));
}

TEST(Splice, FindsTheMiddle) {
  const auto splice = [](const std::string &payload, const std::string &reference) {
    const Splice found = FindSplice(BytesOf(payload), BytesOf(reference));
    return std::pair(found.start, found.end);
  };
  EXPECT_EQ(splice("abXcd", "abcd"), std::pair(size_t{2}, size_t{2}));
  EXPECT_EQ(splice("aa", "aaa"), std::pair(size_t{2}, size_t{0}));
  EXPECT_EQ(splice("", "abc"), std::pair(size_t{0}, size_t{0}));
  EXPECT_EQ(splice("abc", "abc"), std::pair(size_t{3}, size_t{0}));
}

TEST(EntryChunk, KeepsEveryEntry) {
  const Sample sample = SampleOf(HostAt(0));
  EntryChunkWriter writer;
  for (size_t i = 0; i < sample.size(); ++i)
    writer.Add(sample[i]);
  EXPECT_EQ(writer.firstKey(), sample[0].key);
  EntryChunkReader reader(writer.raw());
  for (size_t i = 0; i < sample.size(); ++i) {
    Entry entry;
    ASSERT_FALSE(reader.isAtEnd());
    ASSERT_TRUE(reader.Next(entry)) << i;
    EXPECT_EQ(entry.key, sample[i].key);
    EXPECT_EQ(entry.type, sample[i].type);
    EXPECT_EQ(TextOf(entry.payload), TextOf(sample[i].payload));
  }
  EXPECT_TRUE(reader.isAtEnd());
}

// The names share no words, but the figures do.
TEST(EntryChunk, StoresFiguresAsDifferences) {
  EntryChunkWriter writer;
  const std::string first = Integers({1, 2, 3, 4, 5, 6, 7, 8}), second = Integers({1, 2, 3, 4, 5, 6, 7, 9});
  writer.Add({"/a", ValueType::kRecord, BytesOf(first)});
  const size_t before = writer.raw().size();
  writer.Add({"/b", ValueType::kRecord, BytesOf(second)});
  EXPECT_EQ(Hex(std::span(writer.raw()).subspan(before)), "01016201400e010201");
}

TEST(EntryChunk, RefusesMalformedEntries) {
  const auto isRead = [](std::initializer_list<int> bytes) {
    ByteVector raw;
    for (const int byte : bytes)
      raw.push_back(static_cast<std::byte>(byte));
    EntryChunkReader reader(raw);
    Entry entry;
    return reader.Next(entry);
  };
  EXPECT_TRUE(isRead({0, 1, 'a', 0, 1, 'x'}));
  EXPECT_FALSE(isRead({1, 1, 'a', 0, 1, 'x'}));         // shares more bytes with the previous key than that key has
  EXPECT_FALSE(isRead({0, 2, 'a'}));                    // a truncated key
  EXPECT_FALSE(isRead({0, 0x81, 0x20}));                // a key of 4097 bytes
  EXPECT_FALSE(isRead({0, 1, 'a', 3 << 2, 1, 'x'}));    // an unknown type
  EXPECT_FALSE(isRead({0, 1, 'a', 1, 8, 1}));           // words without a reference
  EXPECT_FALSE(isRead({0, 1, 'a', 2, 1, 0, 0, 'x'}));   // a splice, which is allowed in changes only
  EXPECT_FALSE(isRead({0, 1, 'a', 3, 0x80, 0x80, 4}));  // 64 KB of integers
  EXPECT_FALSE(isRead({0, 1, 'a', 0, 2, 'x'}));         // a truncated payload
}

}  // namespace
}  // namespace platkit::history
