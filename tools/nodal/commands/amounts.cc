#include "tools/nodal/commands/amounts.h"

#include <charconv>
#include <cmath>

#include "tools/nodal/support/output.h"

namespace nodal {

std::optional<uint64_t> ParseAmount(const std::string &text, std::span<const AmountUnit> units) {
  uint64_t number = 0;
  uint64_t product = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) return std::nullopt;
  const std::string_view unit(end, text.data() + text.size());
  for (const AmountUnit &known : units) {
    if (known.name == unit && !__builtin_mul_overflow(number, known.factor, &product)) return product;
  }
  return std::nullopt;
}

int64_t ParseInterval(const std::string &text) {
  constexpr double kLeast = 0.1;
  constexpr double kMost = 3600;
  constexpr int64_t kNanosInMilli = 1'000'000;
  double seconds = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  if (error != std::errc() || end != text.data() + text.size() || !(seconds >= kLeast && seconds <= kMost))
    throw UsageError("--every " + text, "expected a number of seconds from 0.1 to 3600");
  return std::llround(seconds * 1000) * kNanosInMilli;
}

uint64_t ParseCount(const std::string &text) {
  constexpr AmountUnit kNone[] = {{"", 1}};
  const std::optional<uint64_t> count = ParseAmount(text, kNone);
  if (!count || *count == 0) throw UsageError("--count " + text, "expected a number of at least 1");
  return *count;
}

}  // namespace nodal
