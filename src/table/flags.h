// Flag tables: the names of the bits of a mask, as filters accept them and reports print them.
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

// Parses a filter: names separated by ':', ignoring case. Null includes everything or excludes nothing; a text without
// names gives an empty mask. For an unknown name it warns, clears the mask and returns HVC_BAD_PARAM. It changes
// `text`.
[[nodiscard]] HVC_ReturnStatus FlagsParseFilter(char *text, FlagTable table, uint32_t &mask, FilterKind kind);

// The names of the flags that share a bit with the mask, in table order, separated by ':'; "(all)" or "(none)".
NameList FlagsDescribe(uint32_t mask, FlagTable table);

}  // namespace kestrel

#endif  // KESTREL_TABLE_FLAGS_H
