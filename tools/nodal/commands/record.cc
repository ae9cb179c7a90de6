// nodal record: records samples of the host as a history.
#include <memory>
#include <optional>

#include "tools/nodal/commands/amounts.h"
#include "tools/nodal/commands/command.h"
#include "tools/nodal/history/record.h"
#include "tools/nodal/support/output.h"

namespace nodal {
namespace {

using platkit::history::kNanosInSecond;

struct Texts {
  std::string folder = "/var/lib/kestrel/history";
  std::string every = "5";
  std::string count;
  std::string keep = "30d";
  std::string maxSize = "1G";
  std::vector<std::string> only;
  std::string listen;
};

constexpr AmountUnit kTimes[] = {{"s", 1}, {"m", 60}, {"h", 3600}, {"d", 86'400}};
constexpr AmountUnit kSizes[] = {{"", 1}, {"K", 1 << 10}, {"M", 1 << 20}, {"G", 1 << 30}, {"T", uint64_t{1} << 40}};

int64_t ParseAge(const std::string &text) {
  constexpr uint64_t kLeast = 60;
  constexpr uint64_t kMost = uint64_t{100} * 365 * 86'400;
  const std::optional<uint64_t> seconds = ParseAmount(text, kTimes);
  if (!seconds || *seconds < kLeast || *seconds > kMost)
    throw UsageError("--keep " + text, "expected an age from 1m to 36500d, such as 30d, 12h or 90m");
  return static_cast<int64_t>(*seconds) * kNanosInSecond;
}

uint64_t ParseSize(const std::string &text) {
  constexpr uint64_t kLeast = 1 << 20;
  const std::optional<uint64_t> bytes = ParseAmount(text, kSizes);
  if (!bytes || *bytes < kLeast)
    throw UsageError("--max-size " + text, "expected a size of at least 1M, such as 500M or 2G");
  return *bytes;
}

RecordOptions OptionsOf(const Texts &texts, const SourceOptions &source) {
  if (!source.cache.empty())
    throw UsageError("--cache " + source.cache, "cannot record a snapshot, because it does not change");
  RecordOptions options;
  options.recorder.folder = texts.folder;
  options.recorder.interval = ParseInterval(texts.every);
  if (!texts.count.empty()) options.recorder.count = ParseCount(texts.count);
  options.recorder.limits.age = ParseAge(texts.keep);
  options.recorder.limits.bytes = ParseSize(texts.maxSize);
  options.only = texts.only;
  options.root = source.root;
  options.listen = texts.listen;
  return options;
}

}  // namespace

Run DeclareRecord(OptionSet &options, const SourceOptions &source) {
  const auto texts = std::make_shared<Texts>();
  options.Add("-d,--directory DIR", texts->folder, "The folder of the history, created if needed")
      .ShowDefault()
      .NotEmpty();
  options.Add("--every SECONDS", texts->every, "The time between two samples").ShowDefault();
  options.Add("--count N", texts->count, "End after this number of samples (default: unlimited)").NotEmpty();
  options.Add("--keep AGE", texts->keep, "Remove samples older than this: a number followed by s, m, h or d")
      .ShowDefault();
  options
      .Add("--max-size SIZE", texts->maxSize,
           "Remove the oldest samples when the history exceeds this size, in bytes or with K, M, G or T")
      .ShowDefault();
  options.AddRepeatable("--only PATH", texts->only, "Record only this path and everything below it; repeatable");
  options
      .Add("--listen ADDRESS:PORT", texts->listen,
           "Serve the last sample at /metrics and a health check at /healthz; the default address is 127.0.0.1")
      .NotEmpty();
  options.SetFooter(
      "After a day, only one sample per minute is kept: the one with the least available memory.\n"
      "PCI devices are recorded only with --only /hardware/pci; their registers are never recorded.");
  return [texts, &source] {
    Record(OptionsOf(*texts, source));
    return kSuccess;
  };
}

}  // namespace nodal
