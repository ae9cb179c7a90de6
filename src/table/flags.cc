#include "src/table/flags.h"

#include <strings.h>

#include <algorithm>
#include <cstring>

#include "platkit/warning.h"
#include "src/table/terminal_text.h"

namespace kestrel {

HVC_ReturnStatus FlagsParseFilter(char *text, FlagTable table, uint32_t &mask, FilterKind kind) {
  if (text == nullptr) {
    mask = kind == FilterKind::kExclusion ? 0 : UINT32_MAX;
    return HVC_OK;
  }
  mask = 0;
  char *rest = nullptr;
  for (const char *piece = strtok_r(text, ":", &rest); piece != nullptr; piece = strtok_r(nullptr, ":", &rest)) {
    const auto flag = std::ranges::find_if(table, [&](const FlagName &f) { return strcasecmp(f.name, piece) == 0; });
    if (flag == table.end()) {
      Warning("Invalid flag (%s) in filter\n", WarningText(piece).c_str());
      mask = 0;
      return HVC_BAD_PARAM;
    }
    mask |= flag->mask;
  }
  return HVC_OK;
}

NameList FlagsDescribe(uint32_t mask, FlagTable table) {
  NameList names;
  for (const FlagName &flag : table)
    names.Offer(flag.name, (mask & flag.mask) != 0);
  return names;
}

}  // namespace kestrel
