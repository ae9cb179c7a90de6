#include "tools/nodal/page/figure_changes.h"

#include <gtest/gtest.h>

#include <cstring>

namespace nodal {
namespace {

// Decodes columns as the script of the page does.
class Decoder {
 public:
  explicit Decoder(std::string bytes) : bytes_(std::move(bytes)) {}

  std::vector<FigureChanges> Column(size_t rows) {
    const auto divisor = static_cast<int64_t>(Varint());
    std::vector<FigureChanges> column(rows);
    for (FigureChanges &changes : column)
      changes.resize(Varint());
    for (FigureChanges &changes : column) {
      uint32_t last = 0;
      for (FigureChange &change : changes)
        last = change.instant = last + static_cast<uint32_t>(Varint());
    }
    for (FigureChanges &changes : column) {
      int64_t last = 0;
      for (FigureChange &change : changes)
        change.value = Value(divisor, last);
    }
    return column;
  }

  bool isAtEnd() const { return place_ == bytes_.size(); }

 private:
  uint64_t Varint() {
    uint64_t number = 0;
    for (int shift = 0;; shift += 7) {
      const auto byte = static_cast<uint8_t>(bytes_.at(place_++));
      number |= uint64_t{byte & 0x7fu} << shift;
      if (byte < 0x80) return number;
    }
  }

  FigureValue Value(int64_t divisor, int64_t &last) {
    constexpr FigureValue::Kind kKinds[] = {FigureValue::kNoRecord, FigureValue::kUnreadable, FigureValue::kAllOnes};
    const uint64_t token = Varint();
    if (token < 3) return {.kind = kKinds[token]};
    if (token == 3) {
      int64_t large = 0;
      std::memcpy(&large, bytes_.data() + place_, sizeof large);
      place_ += sizeof large;
      return NumberValue(large);
    }
    const auto mapped = static_cast<int64_t>(token - 4);
    last += (mapped % 2 != 0 ? -(mapped + 1) / 2 : mapped / 2) * divisor;
    return NumberValue(last);
  }

  const std::string bytes_;
  size_t place_ = 0;
};

void ExpectRoundTrip(const std::vector<FigureChanges> &rows) {
  Decoder decoder(EncodedColumn(rows));
  EXPECT_EQ(decoder.Column(rows.size()), rows);
  EXPECT_TRUE(decoder.isAtEnd());
}

TEST(FigureChanges, KeepOnlyChanges) {
  FigureChanges changes;
  EXPECT_FALSE(AddValue(changes, 0, {}));
  EXPECT_TRUE(AddValue(changes, 1, NumberValue(0)));
  EXPECT_FALSE(AddValue(changes, 2, NumberValue(0)));
  EXPECT_TRUE(AddValue(changes, 4, {.kind = FigureValue::kAllOnes}));
  EXPECT_EQ(ValueAt(changes, 0), FigureValue());
  EXPECT_EQ(ValueAt(changes, 3), NumberValue(0));
  EXPECT_EQ(ValueAt(changes, 9).kind, FigureValue::kAllOnes);
}

TEST(EncodedColumn, KeepsAllValues) {
  ExpectRoundTrip({});
  ExpectRoundTrip({{}, {}});
  ExpectRoundTrip({{{0, NumberValue(4096)}, {3, NumberValue(8192)}, {1440, NumberValue(0)}},
                   {},
                   {{7, NumberValue(-12)}, {8, {.kind = FigureValue::kUnreadable}}, {9, NumberValue(4)}}});
  ExpectRoundTrip({{{0, {.kind = FigureValue::kAllOnes}}, {5, {.kind = FigureValue::kNoRecord}}}});
}

// A script cannot compute exactly with numbers this large. Smaller numbers beside them must stay exact.
TEST(EncodedColumn, KeepsLargeNumbers) {
  ExpectRoundTrip(
      {{{0, NumberValue(3)}, {1, NumberValue(INT64_MAX)}, {2, NumberValue(INT64_MIN)}, {3, NumberValue(5)}}});
}

TEST(EncodedColumn, TakesOneByteForSmallSteps) {
  const std::string bytes = EncodedColumn(
      std::vector<FigureChanges>{{{0, NumberValue(40960)}, {1, NumberValue(45056)}, {2, NumberValue(36864)}}});
  // The divisor 4096 takes two bytes; then one count, three gaps and three tokens.
  EXPECT_EQ(bytes.size(), 2u + 1 + 3 + 3);
}

TEST(SmallChanges, AreOmitted) {
  const FigureChanges all = {{0, NumberValue(1000)}, {1, NumberValue(1009)}, {2, NumberValue(1011)},
                             {3, NumberValue(1002)}, {4, NumberValue(0)},    {5, {.kind = FigureValue::kAllOnes}},
                             {6, NumberValue(1)}};
  EXPECT_EQ(WithoutSmallChanges(all, 0.01),
            (FigureChanges{{0, NumberValue(1000)}, {2, NumberValue(1011)}, {4, NumberValue(0)}, all[5], all[6]}));
  EXPECT_EQ(WithoutSmallChanges(all, 0), all);
}

// Small changes in one direction must not add up to a large change that is omitted.
TEST(SmallChanges, DoNotAddUp) {
  FigureChanges all;
  for (uint32_t i = 0; i < 100; ++i)
    all.push_back({i, NumberValue(1000 + 5 * i)});
  const FigureChanges kept = WithoutSmallChanges(all, 0.01);
  for (const auto &[instant, value] : all) {
    const auto shown = static_cast<double>(ValueAt(kept, instant).number);
    EXPECT_LE(std::abs(shown - static_cast<double>(value.number)), 0.01 * shown);
  }
}

}  // namespace
}  // namespace nodal
