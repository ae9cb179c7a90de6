// The names of a group's flags, as filters accept them and reports print them.
#ifndef KESTREL_GROUPS_GROUP_FLAGS_H
#define KESTREL_GROUPS_GROUP_FLAGS_H

#include <algorithm>
#include <array>
#include <iterator>

#include "platkit/group_flags.h"
#include "src/table/flags.h"

namespace kestrel {

inline constexpr auto GroupFlagNames = [] {
  std::array<FlagName, std::size(platkit::kGroupFlagNames)> names = {};
  std::ranges::transform(platkit::kGroupFlagNames, names.begin(), [](const auto &of) {
    return FlagName{of.flag, of.name};
  });
  return names;
}();

}  // namespace kestrel

#endif  // KESTREL_GROUPS_GROUP_FLAGS_H
