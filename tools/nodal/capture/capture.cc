#include "tools/nodal/capture/capture.h"

#include <sys/stat.h>

#include <chrono>
#include <cstdio>
#include <new>

#include "tools/nodal/capture/capture_writer.h"
#include "tools/nodal/capture/host_reading.h"
#include "tools/nodal/capture/source_header.h"
#include "tools/nodal/support/output.h"
#include "tools/nodal/support/output_file.h"
#include "tools/nodal/support/signals.h"
#include "tools/nodal/support/text.h"
#include "tools/nodal/tree/sampled_tree.h"

namespace nodal {
namespace {

// Reading PCI devices is slow, and no report that accepts a snapshot needs them.
constexpr std::string_view kPciDevices = "/hardware/pci";

// Reads the host and adds its nodes to the writer. Returns the number of instances that vanished during the capture.
size_t ReadInto(CaptureWriter &writer, Tree &host, PathFilter &filter) {
  CachingTree tree(host, ThrowIfSignalled);
  const size_t vanished = ReadHost(tree, host, filter);
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
  if (vanished > 0) text += "; " + Plural(vanished, "instance") + " vanished during the capture";
  return text;
}

}  // namespace

void Capture(const CaptureOptions &options) {
  const auto start = std::chrono::steady_clock::now();
  CatchSignals();
  PathFilter filter(options.only, kPciDevices);
  CaptureWriter writer(PseudonymsFor(options.anonymize, options.keyFile));
  writer.AddHeader(SourceHeader(options.cache, options.root));
  const size_t vanished = ReadInto(writer, *OpenTree(options.cache, options.root), filter);
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
    // The snapshot is complete, so a missing summary is no failure.
  }
}

}  // namespace nodal
