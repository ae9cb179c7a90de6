#include "tools/nodal/page/figure_changes.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include <utility>

#include "platkit/history/byte_stream.h"

namespace nodal {
namespace {

using platkit::history::AppendVarint;
using platkit::history::ToUnsigned;

enum Token : uint64_t { kNoRecordToken, kUnreadableToken, kAllOnesToken, kLargeToken, kFirstNumberToken };

// Scripts could not compute exactly with larger numbers.
constexpr int64_t kLarge = int64_t{1} << 50;

bool IsLarge(int64_t number) { return number >= kLarge || number <= -kLarge; }

bool IsSmallNumber(const FigureValue &value) { return value.kind == FigureValue::kNumber && !IsLarge(value.number); }

int64_t CommonDivisor(std::span<const FigureChanges> rows) {
  int64_t divisor = 0;
  for (const FigureChanges &changes : rows) {
    for (const FigureChange &change : changes) {
      if (IsSmallNumber(change.value)) divisor = std::gcd(divisor, change.value.number);
      if (divisor == 1) return 1;
    }
  }
  return std::max<int64_t>(divisor, 1);
}

void AppendTokens(const FigureChanges &changes, int64_t divisor, std::string &bytes) {
  int64_t last = 0;
  for (const auto &[instant, value] : changes) {
    if (IsSmallNumber(value)) {
      AppendVarint(bytes, kFirstNumberToken + ToUnsigned((value.number - last) / divisor));
      last = value.number;
    } else if (value.kind == FigureValue::kNumber) {
      AppendVarint(bytes, kLargeToken);
      bytes.append(reinterpret_cast<const char *>(&value.number), sizeof value.number);
    } else {
      AppendVarint(bytes, value.kind == FigureValue::kAllOnes      ? kAllOnesToken
                          : value.kind == FigureValue::kUnreadable ? kUnreadableToken
                                                                   : kNoRecordToken);
    }
  }
}

bool IsSmallChange(const FigureValue &from, const FigureValue &to, double part) {
  if (!IsSmallNumber(from) || !IsSmallNumber(to)) return false;
  const auto difference = static_cast<double>(to.number - from.number);
  return std::abs(difference) <= part * std::abs(static_cast<double>(from.number));
}

}  // namespace

bool AddValue(FigureChanges &changes, uint32_t instant, FigureValue value) {
  if (value == (changes.empty() ? FigureValue() : changes.back().value)) return false;
  changes.push_back({instant, value});
  return true;
}

FigureValue ValueAt(const FigureChanges &changes, uint32_t instant) {
  const auto next = std::ranges::upper_bound(changes, instant, {}, &FigureChange::instant);
  return next == changes.begin() ? FigureValue() : std::prev(next)->value;
}

FigureChanges WithoutSmallChanges(const FigureChanges &changes, double part) {
  FigureChanges kept;
  for (const FigureChange &change : changes) {
    if (kept.empty() || !IsSmallChange(kept.back().value, change.value, part)) kept.push_back(change);
  }
  return kept;
}

std::string EncodedColumn(std::span<const FigureChanges> rows) {
  std::string bytes;
  const int64_t divisor = CommonDivisor(rows);
  AppendVarint(bytes, static_cast<uint64_t>(divisor));
  for (const FigureChanges &changes : rows)
    AppendVarint(bytes, changes.size());
  for (const FigureChanges &changes : rows) {
    uint32_t last = 0;
    for (const FigureChange &change : changes)
      AppendVarint(bytes, change.instant - std::exchange(last, change.instant));
  }
  for (const FigureChanges &changes : rows)
    AppendTokens(changes, divisor, bytes);
  return bytes;
}

}  // namespace nodal
