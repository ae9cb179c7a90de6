#include "tools/nodal/snapshot/open_failure.h"

#include <array>
#include <cstring>
#include <fstream>
#include <optional>

#include "platkit/snapshot/format.h"
#include "tools/nodal/history/moment_file.h"
#include "tools/nodal/support/text.h"

namespace nodal {
namespace {

namespace snapshot = platkit::snapshot;

struct TableHead {
  uint32_t position;
  uint32_t slots;
};

// Returns the size that the file's own table of contents requires: each hash table starts where the previous one ends.
// Returns std::nullopt if the table of contents is damaged or incomplete.
std::optional<uint64_t> RequiredSize(std::ifstream &file) {
  std::array<TableHead, snapshot::kTables> tables;
  static_assert(sizeof tables == snapshot::kContentsBytes);
  if (!file.read(reinterpret_cast<char *>(tables.data()), sizeof tables)) return std::nullopt;
  uint64_t end = tables[0].position;
  for (const TableHead &table : tables) {
    if (table.position != end) return std::nullopt;
    end += uint64_t{table.slots} * snapshot::kSlotBytes;
  }
  return end;
}

std::optional<std::string> TruncationText(const std::string &path) {
  std::ifstream file(path, std::ios::binary);
  const std::optional<uint64_t> required = RequiredSize(file);
  if (!required || !file.seekg(0, std::ios::end)) return std::nullopt;
  const auto size = static_cast<uint64_t>(file.tellg());
  if (size >= *required) return std::nullopt;
  return "truncated at byte " + std::to_string(size) + " (expected " + std::to_string(*required) + ")";
}

}  // namespace

Failure OpenFailure(const std::string &path, HVC_ReturnStatus status) {
  if (IsMoment(path)) return MomentFailure(path, status);
  switch (status) {
    case HVC_NOT_FOUND: return {path, std::strerror(ENOENT)};
    case HVC_NO_PERMISSION: return {path, std::strerror(EACCES)};
    case HVC_SNAPSHOT_DAMAGED: return {path, TruncationText(path).value_or(StatusText(status))};
    default: return {path, status};
  }
}

}  // namespace nodal
