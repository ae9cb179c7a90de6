// nodal capture: the tree of a host as a snapshot.
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <map>
#include <optional>
#include <set>

#include "platkit/linux/files/host_files.h"
#include "platkit/snapshot/snapshot_writer.h"
#include "tools/nodal/commands.h"
#include "tools/nodal/interruption.h"
#include "tools/nodal/output.h"
#include "tools/nodal/progress.h"
#include "tools/nodal/pseudonyms.h"
#include "tools/nodal/text.h"
#include "tools/nodal/vanished.h"
#include "tools/nodal/walk.h"

namespace nodal {
namespace {

using platkit::snapshot::Header;
using platkit::snapshot::SnapshotFile;
using platkit::snapshot::SnapshotWriter;

void Check(const std::string &where, HVC_ReturnStatus status) {
  if (status != HVC_OK) throw Failure(where, status);
}

std::string HostName(const std::string &root) {
  platkit::HostFiles files(root, root == "/" ? platkit::Reach::kHost : platkit::Reach::kRootFolder);
  char buffer[platkit::snapshot::kMaxHeaderText];
  std::string_view name;
  if (files.ReadShort(platkit::HostPath("proc/sys/kernel/hostname"), buffer, name) != HVC_OK) return "";
  return std::string(name.substr(0, name.find_first_of(std::string_view("\n\0", 2))));
}

std::string Now() {
  const time_t now = std::time(nullptr);
  struct tm parts;
  char text[32];
  const size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", gmtime_r(&now, &parts));
  return {text, length};
}

Header HeaderOfSnapshot(const std::string &path) {
  SnapshotFile file;
  Check(path, file.Open(path.c_str()));
  // Its records may have other sizes than those of this program's catalogue.
  if (file.header().definitions.signature != platkit::OwnDefinitions().signature) {
    throw Failure(path, HVC_DEFINITIONS_DIFFER);
  }
  return file.header();
}

// When a root folder was saved is not known.
Header HeaderOf(const CaptureOptions &options) {
  if (!options.cache.empty()) return HeaderOfSnapshot(options.cache);
  const bool isLive = options.root.empty();
  return {.definitions = platkit::OwnDefinitions(),
          .host = HostName(isLive ? "/" : options.root),
          .time = isLive ? Now() : ""};
}

// What a capture came to.
struct Totals {
  std::set<const Node *> nodes;
  size_t records = 0;
  size_t lists = 0;
  std::map<std::string, size_t> failures;  // by the texts of their statuses
};

// Puts what was read into a snapshot.
class Compiler {
 public:
  explicit Compiler(const CaptureOptions &options) {
    if (options.anonymize) pseudonyms_.emplace(options.key);
  }

  void Add(Header header) {
    if (pseudonyms_) header.host = pseudonyms_->Of(header.host);
    Check("header", writer_.AddHeader(header));
  }

  void Add(const Reading &reading) {
    if (reading.status == HVC_NOT_FOUND && !reading.isToldOf) return;
    const std::string path = PathOf(*reading.node, ArgumentsOf(reading));
    if (reading.status != HVC_OK) {
      Check(path, writer_.AddFailure(path, reading.status));
      if (reading.status != HVC_NOT_FOUND) ++totals_.failures[StatusText(reading.status)];
      return;
    }
    totals_.nodes.insert(reading.node);
    if (reading.asRecord) {
      AddRecord(path, reading);
    } else {
      AddList(path, reading);
    }
  }

  const Totals &totals() const { return totals_; }

  HVC_ReturnStatus Write(const std::string &path) { return writer_.Write(path); }

 private:
  void AddRecord(const std::string &path, const Reading &reading) {
    std::string record = reading.record;
    const auto bytes = std::as_writable_bytes(std::span(record));
    if (pseudonyms_) pseudonyms_->Replace(*reading.node->record, bytes);
    Check(path, writer_.AddRecord(path, bytes));
    ++totals_.records;
  }

  void AddList(const std::string &path, const Reading &reading) {
    std::vector<int64_t> integers;
    std::vector<std::string> texts;
    for (const Argument &entry : reading.entries) {
      if (entry.kind == ParamKind::kInt) {
        integers.push_back(entry.integer);
      } else {
        texts.push_back(Shown(reading.node->entry.what, entry).text);
      }
    }
    const bool isOfIntegers = reading.node->entry.kind == ParamKind::kInt;
    Check(path, isOfIntegers ? writer_.AddIntegers(path, integers) : writer_.AddTexts(path, texts));
    ++totals_.lists;
  }

  Arguments ArgumentsOf(const Reading &reading) const {
    Arguments arguments;
    for (size_t i = 0; i < reading.arguments.size(); ++i)
      arguments.push_back(Shown(reading.node->arguments[i].what, reading.arguments[i]));
    return arguments;
  }

  Argument Shown(std::string_view what, const Argument &instance) const {
    return pseudonyms_ ? pseudonyms_->Of(what, instance) : instance;
  }

  std::optional<Pseudonyms> pseudonyms_;
  SnapshotWriter writer_;
  Totals totals_;
};

void ReadAll(Readings &readings, const Part &part, Progress &progress) {
  const auto announce = [&](const std::string &what, size_t visits) { progress.Begin(what, visits); };
  Walk(readings, part).Visit(announce, [&](const Node &node, bool asRecord, const Arguments &arguments) {
    readings.Read(node, asRecord, arguments);
    progress.Advance();
  });
}

// A path that was asked for leads to something.
void CheckPaths(const Part &part, Readings &readings) {
  for (const std::string &top : part.paths()) {
    const auto isBelow = [&](const auto &entry) {
      return entry.second.status != HVC_NOT_FOUND && IsAtOrBelow(entry.first, top);
    };
    if (std::ranges::none_of(readings.byPath(), isBelow)) throw Failure(top.empty() ? "/" : top, HVC_NOT_FOUND);
  }
}

std::string Summary(const std::string &path, const Totals &totals, size_t vanished, double seconds) {
  struct stat file = {};
  static_cast<void>(stat(path.c_str(), &file));
  char time[32];
  std::snprintf(time, sizeof time, "%.2f s", seconds);
  std::string text = path + ": " + Plural(totals.nodes.size(), "node") + ", " + Plural(totals.records, "record") +
                     ", " + Plural(totals.lists, "list") + ", " + std::to_string(file.st_size) + " bytes, " + time;
  for (const auto &[status, count] : totals.failures)
    text += "; " + std::to_string(count) + " not read: " + status;
  if (vanished > 0) text += "; " + std::to_string(vanished) + " vanished meanwhile";
  return text;
}

}  // namespace

void Capture(const CaptureOptions &options) {
  const auto start = std::chrono::steady_clock::now();
  HoldSignals();
  const Part part(options.only);
  Compiler compiler(options);
  compiler.Add(HeaderOf(options));
  HostTree host;
  size_t vanished = 0;
  {
    Progress progress;
    Readings readings(host, EndIfInterrupted);
    ReadAll(readings, part, progress);
    CheckPaths(part, readings);
    vanished = LeaveOutVanished(readings, host);
    for (const auto &[path, reading] : readings.byPath()) {
      if (part.Contains(path)) compiler.Add(reading);
    }
  }
  EndIfInterrupted();
  const HVC_ReturnStatus status = compiler.Write(options.snapshot);
  if (status != HVC_OK) {
    EndIfInterrupted();
    throw Failure(options.snapshot, status);
  }
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
  Complain(Summary(options.snapshot, compiler.totals(), vanished, time.count()));
}

}  // namespace nodal
