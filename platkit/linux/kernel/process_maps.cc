#include "platkit/linux/kernel/process_maps.h"

#include "platkit/linux/files/text_scanner.h"

namespace platkit {
namespace {

// Parses "start-end permissions offset major:minor inode [name]". Permissions are four characters, as in "rw-p". A line
// without a name may end with blanks.
bool ParseMapping(std::string_view line, Mapping &mapping) {
  TextScanner scanner(line);
  const auto takeHex = [&scanner](uint64_t &number, std::string_view separator) {
    return scanner.TakeNumber(number, 16) && scanner.Take(separator);
  };
  if (!takeHex(mapping.start, "-") || !takeHex(mapping.end, " ")) return false;
  const std::string_view permissions = scanner.TakeUntil(' ');
  if (permissions.size() != 4) return false;
  mapping.isReadable = permissions[0] == 'r';
  mapping.isWritable = permissions[1] == 'w';
  mapping.isExecutable = permissions[2] != '-';
  uint64_t offset = 0, major = 0, minor = 0;
  if (!takeHex(offset, " ") || !takeHex(major, ":") || !takeHex(minor, " ")) return false;
  mapping.device = major << 32 | minor;
  if (!scanner.TakeNumber(mapping.inode)) return false;
  scanner.SkipBlanks();
  mapping.name = scanner.rest();
  return mapping.start < mapping.end;
}

}  // namespace

bool ProcessMaps::Next(Mapping &mapping) {
  for (std::string_view line; lines_.Next(line);) {
    if (ParseMapping(line, mapping)) return true;
  }
  return false;
}

}  // namespace platkit
