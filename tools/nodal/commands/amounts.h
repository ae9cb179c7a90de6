// Numbers in options.
#ifndef NODAL_COMMANDS_AMOUNTS_H
#define NODAL_COMMANDS_AMOUNTS_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace nodal {

struct AmountUnit {
  std::string_view name;
  uint64_t factor;
};

// Parses a whole number that is followed by one of the units. Returns std::nullopt if the text has another form or the
// product is too large.
std::optional<uint64_t> ParseAmount(const std::string &text, std::span<const AmountUnit> units);

// Parse the value of --every, in nanoseconds, and of --count. Both throw a UsageError if the text is invalid.
int64_t ParseInterval(const std::string &text);
uint64_t ParseCount(const std::string &text);

}  // namespace nodal

#endif  // NODAL_COMMANDS_AMOUNTS_H
