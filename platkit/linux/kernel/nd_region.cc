#include "platkit/linux/kernel/nd_region.h"

#include <algorithm>
#include <cstdint>

#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/kernel/nd_devices.h"

namespace platkit {
namespace {

constexpr uint64_t kMaxModules = 64;  // modules of one interleaved region

}  // namespace

bool IsPersistentRegion(HostFiles &files, std::string_view region) {
  const std::string type = ReadNdText(files, region, "devtype");
  return type.empty() || type == "nd_pmem";
}

std::string ReadRegionCookie(HostFiles &files, std::string_view region) {
  const std::string text = ReadNdText(files, region, "set_cookie");
  uint64_t cookie = 0;
  return ParseHexNumber(text, cookie) && cookie != 0 ? text.substr(2) : std::string();
}

Figure ReadRegionStart(HostFiles &files, std::string_view region) {
  uint64_t start = 0;
  return ParseHexNumber(ReadNdText(files, region, "resource"), start) ? Figure(start) : Figure::Unreadable();
}

// A mapping such as "nmem0,0,268435456,0" contains a module, and the range of the module that belongs to the region.
std::vector<std::string> ReadRegionModules(HostFiles &files, std::string_view region) {
  std::vector<std::string> modules;
  const uint64_t count = std::min(ReadNdFigure(files, region, "mappings").Cell(0), kMaxModules);
  for (uint64_t i = 0; i < count; ++i) {
    const std::string mapping = ReadNdText(files, region, "mapping" + std::to_string(i));
    const std::string_view module = TextScanner(mapping).TakeUntil(',');
    uint64_t number = 0;
    if (ParseNdNumber(module, "nmem", number)) modules.emplace_back(module);
  }
  return modules;
}

}  // namespace platkit
