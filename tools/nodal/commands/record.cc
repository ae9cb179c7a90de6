// nodal record: samples of the host, one after the other, as a history.
#include <array>
#include <charconv>
#include <cmath>
#include <memory>
#include <optional>

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

struct Unit {
  std::string_view name;
  uint64_t factor;
};

constexpr Unit kTimes[] = {{"s", 1}, {"m", 60}, {"h", 3600}, {"d", 86'400}};
constexpr Unit kSizes[] = {{"", 1}, {"K", 1 << 10}, {"M", 1 << 20}, {"G", 1 << 30}, {"T", uint64_t{1} << 40}};

// A whole number and one of the units; nullopt if the text has another form or the product is too large.
std::optional<uint64_t> ParseAmount(const std::string &text, std::span<const Unit> units) {
  uint64_t number = 0;
  uint64_t product = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) return std::nullopt;
  const std::string_view unit(end, text.data() + text.size());
  for (const Unit &known : units) {
    if (known.name == unit && !__builtin_mul_overflow(number, known.factor, &product)) return product;
  }
  return std::nullopt;
}

int64_t ParseInterval(const std::string &text) {
  constexpr double kLeast = 0.1;
  constexpr double kMost = 3600;
  double seconds = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  if (error != std::errc() || end != text.data() + text.size() || !(seconds >= kLeast && seconds <= kMost))
    throw Failure("--every " + text, "expected seconds, from 0.1 to 3600");
  return std::llround(seconds * 1000) * (kNanosInSecond / 1000);
}

int64_t ParseAge(const std::string &text) {
  constexpr uint64_t kLeast = 60;
  constexpr uint64_t kMost = uint64_t{100} * 365 * 86'400;
  const std::optional<uint64_t> seconds = ParseAmount(text, kTimes);
  if (!seconds || *seconds < kLeast || *seconds > kMost)
    throw Failure("--keep " + text, "expected an age from 1m to 36500d, such as 30d, 12h or 90m");
  return static_cast<int64_t>(*seconds) * kNanosInSecond;
}

uint64_t ParseSize(const std::string &text) {
  constexpr uint64_t kLeast = 1 << 20;
  const std::optional<uint64_t> bytes = ParseAmount(text, kSizes);
  if (!bytes || *bytes < kLeast)
    throw Failure("--max-size " + text, "expected a size of at least 1M, such as 500M or 2G");
  return *bytes;
}

uint64_t ParseCount(const std::string &text) {
  constexpr Unit kNone[] = {{"", 1}};
  const std::optional<uint64_t> count = ParseAmount(text, kNone);
  if (!count || *count == 0) throw Failure("--count " + text, "expected a number, at least 1");
  return *count;
}

RecordOptions OptionsOf(const Texts &texts, const SourceOptions &source) {
  if (!source.cache.empty())
    throw Failure("--cache " + source.cache, "a snapshot does not change; record reads a host");
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
  options.Add("-d,--directory DIR", texts->folder, "The folder of the history, created if needed").ShowDefault();
  options.Add("--every SECONDS", texts->every, "The time between two samples").ShowDefault();
  options.Add("--count N", texts->count, "End after this number of samples (default: at SIGTERM)");
  options.Add("--keep AGE", texts->keep, "Remove samples of this age: a number and s, m, h or d").ShowDefault();
  options
      .Add("--max-size SIZE", texts->maxSize, "Remove the oldest samples beyond this size: bytes, or with K, M, G or T")
      .ShowDefault();
  options.AddRepeatable("--only PATH", texts->only, "Record only this path and everything below it; repeatable");
  options
      .Add("--listen ADDRESS:PORT", texts->listen,
           "Serve the last sample at /metrics and a health check at /healthz; without an address, on 127.0.0.1")
      .NotEmpty();
  options.SetFooter(
      "After a day, one sample a minute remains: the one with the least memory available.\n"
      "PCI devices are recorded only with --only /hardware/pci; their registers are never recorded.");
  return [texts, &source] {
    Record(OptionsOf(*texts, source));
    return kSuccess;
  };
}

}  // namespace nodal
