// Flag tables: the names of the bits of a mask, as filters take them and reports print them.
#ifndef KESTREL_TABLE_FLAGS_H
#define KESTREL_TABLE_FLAGS_H

#include <cstdint>
#include <span>

#include "platkit/status.h"
#include "src/table/name_list.h"

namespace kestrel {

struct FlagName {
  uint32_t mask;
  const char *name;
};

using FlagTable = std::span<const FlagName>;

enum class FilterKind { kInclusion, kExclusion };

// Reads a filter: names separated by ':', case ignored. Null includes everything or excludes nothing; a text without
// names is the empty mask of either kind. An unknown name gets a warning, an empty mask and HVC_BAD_PARAM. `text` is
// split in place.
[[nodiscard]] HVC_ReturnStatus FlagsParseFilter(char *text, FlagTable table, uint32_t &mask, FilterKind kind);

// The names of a mask's bits in table order, separated by ':'; "(all)" or "(none)".
NameList FlagsDescribe(uint32_t mask, FlagTable table);

}  // namespace kestrel

#endif  // KESTREL_TABLE_FLAGS_H
