#include "tools/nodal/capture/capture.h"

#include <sys/stat.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <new>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/files/printable.h"
#include "tools/nodal/capture/capture_writer.h"
#include "tools/nodal/capture/key_file.h"
#include "tools/nodal/capture/vanished.h"
#include "tools/nodal/snapshot/snapshot_entries.h"
#include "tools/nodal/support/output.h"
#include "tools/nodal/support/output_file.h"
#include "tools/nodal/support/progress.h"
#include "tools/nodal/support/signals.h"
#include "tools/nodal/support/text.h"
#include "tools/nodal/tree/walk.h"

namespace nodal {
namespace {

using platkit::snapshot::Header;

// Reading them is slow, and no report that accepts a snapshot needs them.
constexpr std::string_view kPciDevices = "/hardware/pci";

std::string HostName(const std::string &root) {
  platkit::HostFiles files(root, root == "/" ? platkit::Reach::kHost : platkit::Reach::kRootFolder);
  char buffer[platkit::snapshot::kMaxHeaderText];
  std::string_view name;
  if (files.ReadShort(platkit::HostPath("proc/sys/kernel/hostname"), buffer, name) != HVC_OK) return "";
  name = name.substr(0, name.find_first_of(std::string_view("\n\0", 2)));
  return platkit::PrintableName(name, name.size());
}

std::string Now() {
  const time_t now = std::time(nullptr);
  struct tm parts;
  char text[32];
  const size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", gmtime_r(&now, &parts));
  return {text, length};
}

Header HeaderOfSnapshot(const std::string &path) {
  const OpenedSnapshot opened(path);
  // Its record sizes may differ from this program's catalogue.
  if (opened.file.header().definitions.signature != platkit::OwnDefinitions().signature) {
    throw Failure(path, HVC_DEFINITIONS_DIFFER);
  }
  return opened.file.header();
}

// The time at which a root folder was saved is unknown.
Header HeaderOf(const CaptureOptions &options) {
  if (!options.cache.empty()) return HeaderOfSnapshot(options.cache);
  const bool isLive = options.root.empty();
  return {.definitions = platkit::OwnDefinitions(),
          .host = HostName(isLive ? "/" : options.root),
          .time = isLive ? Now() : ""};
}

std::optional<Pseudonyms> PseudonymsFor(const CaptureOptions &options) {
  if (!options.anonymize) return std::nullopt;
  if (options.keyFile.empty()) return Pseudonyms(PseudonymKey::Random());
  return Pseudonyms(PseudonymKey::FromSecret(KeyFile(options.keyFile).secret()));
}

void ReadAll(CachingTree &tree, const PathFilter &filter) {
  Progress progress;
  const auto announce = [&](const std::string &what, size_t visits) { progress.Begin(what, visits); };
  Walk(tree, filter).Visit(announce, [&](const Node &node, bool asRecord, const Arguments &arguments) {
    tree.Read(node, asRecord, arguments);
    progress.Advance();
  });
}

void RequireAllFound(PathFilter &filter, CachingTree &tree) {
  for (const auto &[path, answer] : tree.answers()) {
    if (answer.status != HVC_NOT_FOUND) filter.MarkFound(path);
  }
  filter.RequireAllFound();
}

// Reads the host and adds its nodes to the writer. Returns the number of instances that vanished during the capture.
size_t ReadInto(CaptureWriter &writer, PathFilter &filter) {
  HostTree host;
  CachingTree tree(host, ThrowIfSignalled);
  ReadAll(tree, filter);
  RequireAllFound(filter, tree);
  const size_t vanished = OmitVanished(tree, host);
  for (const auto &[path, answer] : tree.answers()) {
    if (filter.Contains(path)) writer.Add(answer);
  }
  return vanished;
}

off_t SizeOf(int fd) {
  struct stat file = {};
  static_cast<void>(fstat(fd, &file));
  return file.st_size;
}

std::string Summary(const std::string &path, const CaptureTotals &totals, off_t size, size_t vanished, double seconds) {
  char time[32];
  std::snprintf(time, sizeof time, "%.2f s", seconds);
  std::string text = path + ": " + Plural(totals.nodes.size(), "node") + ", " + Plural(totals.records, "record") +
                     ", " + Plural(totals.lists, "list") + ", " + std::to_string(size) + " bytes, " + time;
  for (const auto &[status, count] : totals.unreadable)
    text += "; " + std::to_string(count) + " unreadable: " + status;
  if (vanished > 0) text += "; " + std::to_string(vanished) + " vanished during the capture";
  return text;
}

}  // namespace

void Capture(const CaptureOptions &options) {
  const auto start = std::chrono::steady_clock::now();
  CatchSignals();
  PathFilter filter(options.only, kPciDevices);
  CaptureWriter writer(PseudonymsFor(options));
  writer.AddHeader(HeaderOf(options));
  const size_t vanished = ReadInto(writer, filter);
  ThrowIfSignalled();
  off_t size = 0;
  WriteFile(options.snapshot, platkit::Readers::kOwner, [&](int fd) {
    const HVC_ReturnStatus status = writer.WriteTo(fd);
    size = SizeOf(fd);
    return status;
  });
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
  try {
    Complain(Summary(options.snapshot, writer.totals(), size, vanished, time.count()));
  } catch (const std::bad_alloc &) {
    // The snapshot is complete.
  }
}

}  // namespace nodal
