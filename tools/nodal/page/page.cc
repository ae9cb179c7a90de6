#include "tools/nodal/page/page.h"

#include <memory>

#include "platkit/history/moment.h"
#include "tools/nodal/capture/host_reading.h"
#include "tools/nodal/capture/pseudonyms.h"
#include "tools/nodal/capture/source_header.h"
#include "tools/nodal/page/document.h"
#include "tools/nodal/page/page_reader.h"
#include "tools/nodal/page/span_reader.h"
#include "tools/nodal/support/output_file.h"
#include "tools/nodal/support/signals.h"
#include "tools/nodal/support/text.h"
#include "tools/nodal/tree/sampled_tree.h"

namespace nodal {
namespace {

// No view shows PCI devices, and reading them is slow.
constexpr std::string_view kPciDevices = "/hardware/pci";

std::string SourceInWords(const PageOptions &options) {
  if (!options.cache.empty()) return "snapshot";
  return options.root.empty() ? "running host" : "saved /proc and /sys";
}

PageData ReadPage(const PageOptions &options) {
  std::optional<Pseudonyms> pseudonyms = PseudonymsFor(options.anonymize, options.keyFile);
  platkit::snapshot::Header header = SourceHeader(options.cache, options.root);
  if (pseudonyms) AnonymizeHeader(header, *pseudonyms);
  const std::unique_ptr<Tree> host = OpenTree(options.cache, options.root);
  CachingTree tree(*host, ThrowIfSignalled);
  PathFilter filter({}, kPciDevices);
  ReadHost(tree, *host, filter);
  PageData data = ReadPageData(tree, pseudonyms ? &*pseudonyms : nullptr);
  data.host = Printable(header.host);
  data.time = Printable(header.time);
  data.source = SourceInWords(options);
  return data;
}

std::string DocumentOfSpan(const PageOptions &options) {
  std::optional<Pseudonyms> pseudonyms = PseudonymsFor(options.anonymize, options.keyFile);
  SpanReading reading = ReadSpan({.folder = options.history, .from = options.from, .to = options.to},
                                 pseudonyms ? &*pseudonyms : nullptr);
  const std::string time = platkit::history::TimeText(reading.span.seconds.back());
  platkit::snapshot::Header header = {.definitions = platkit::OwnDefinitions(), .host = reading.host, .time = time};
  if (pseudonyms) AnonymizeHeader(header, *pseudonyms);
  reading.last.host = Printable(header.host);
  reading.last.time = time;
  reading.last.source = "history";
  return SpanDocument(reading.span, reading.last);
}

}  // namespace

void WritePage(const PageOptions &options) {
  CatchSignals();
  const std::string document = options.history.empty() ? Document(ReadPage(options)) : DocumentOfSpan(options);
  ThrowIfSignalled();
  WriteFile(options.output, platkit::Readers::kOwner, document);
}

}  // namespace nodal
