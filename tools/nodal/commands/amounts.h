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

// A whole number and one of the units; nullopt if the text has another form or the product is too large.
std::optional<uint64_t> ParseAmount(const std::string &text, std::span<const AmountUnit> units);

// The values of --every, in nanoseconds, and --count. Throw a UsageError.
int64_t ParseInterval(const std::string &text);
uint64_t ParseCount(const std::string &text);

}  // namespace nodal

#endif  // NODAL_COMMANDS_AMOUNTS_H
