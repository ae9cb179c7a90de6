#include "tools/nodal/capture/source_header.h"

#include <ctime>

#include "platkit/history/moment.h"
#include "platkit/linux/files/host_files.h"
#include "platkit/linux/files/printable.h"
#include "tools/nodal/capture/vocabulary.h"
#include "tools/nodal/snapshot/snapshot_entries.h"
#include "tools/nodal/support/output.h"

namespace nodal {
namespace {

using platkit::snapshot::Header;

std::string HostName(const std::string &root) {
  platkit::HostFiles files(root, root == "/" ? platkit::Reach::kHost : platkit::Reach::kRootFolder);
  char buffer[platkit::snapshot::kMaxHeaderText];
  std::string_view name;
  if (files.ReadShort(platkit::HostPath("proc/sys/kernel/hostname"), buffer, name) != HVC_OK) return "";
  name = name.substr(0, name.find_first_of(std::string_view("\n\0", 2)));
  return platkit::PrintableName(name, name.size());
}

Header HeaderOfSnapshot(const std::string &path) {
  const OpenedSnapshot opened(path);
  // A snapshot of another version may have records of other sizes.
  if (!HaveOwnSignature(opened.file.header().definitions)) {
    throw Failure(path, HVC_DEFINITIONS_DIFFER);
  }
  return opened.file.header();
}

}  // namespace

Header SourceHeader(const std::string &cache, const std::string &root) {
  if (!cache.empty()) return HeaderOfSnapshot(cache);
  const bool isLive = root.empty();
  return {.definitions = platkit::OwnDefinitions(),
          .host = HostName(isLive ? "/" : root),
          .time = isLive ? platkit::history::TimeText(std::time(nullptr)) : ""};
}

void AnonymizeHeader(Header &header, Pseudonyms &pseudonyms) {
  if (!header.time.empty() && !IsHeaderTime(header.time)) {
    throw Failure("header", "the time does not have the form 2026-03-14T09:26:53Z");
  }
  header.host = pseudonyms.Of(header.host);
  header.definitions = platkit::OwnDefinitions();
}

}  // namespace nodal
