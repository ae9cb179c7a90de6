#include "platkit/linux/kernel/guests_file.h"

#include <xxhash.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>

#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/kernel/figure_files.h"
#include "platkit/linux/kernel/process_status.h"
#include "platkit/linux/kernel/uptime.h"

namespace platkit {
namespace {

// Enough for more than 5,000 guests.
constexpr size_t kMaxGuestsFile = size_t{4} << 20;

constexpr std::string_view kFirstLine = "kestrel-guests 1\n";
constexpr int kMaxPeriods = 3;

constexpr std::string_view kKeys[] = {"memory-kb",
                                      "balloon-kb",
                                      "balloon-target-kb",
                                      "balloon-driver",
                                      "guest-total-kb",
                                      "guest-free-kb",
                                      "guest-usable-kb",
                                      "guest-disk-caches-kb",
                                      "guest-swapped-in-kb",
                                      "guest-swapped-out-kb",
                                      "guest-major-faults",
                                      "guest-huge-pages-allocated",
                                      "guest-huge-pages-refused",
                                      "written-kb",
                                      "left-to-write-kb",
                                      "dirty-pages-per-second"};
static_assert(std::size(kKeys) == kGuestFigures);

std::string Line(std::string_view key, uint64_t value) { return std::string(key) + ' ' + std::to_string(value) + '\n'; }

bool TakeLine(TextScanner &scanner, std::string_view key, uint64_t &value) {
  TextScanner line(scanner.TakeUntil('\n'));
  return line.TakeWord() == key && ParseNumber(line.rest(), value);
}

bool ParseGuest(TextScanner line, GuestFigures &guest) {
  uint64_t pid = 0;
  const bool isParsed = ParseNumber(line.TakeWord(), pid) && ParseNumber(line.rest(), guest.startTicks);
  guest.pid = static_cast<int64_t>(pid);
  return isParsed && pid > 0 && pid <= static_cast<uint64_t>(kMaxPid);
}

// Later versions may add keys, which are skipped.
bool TakeGuestLine(std::string_view text, std::vector<GuestFigures> &guests) {
  TextScanner line(text);
  const std::string_view key = line.TakeWord();
  if (key == "guest") return ParseGuest(line, guests.emplace_back());
  if (guests.empty()) return false;
  uint64_t value = 0;
  const auto *known = std::ranges::find(kKeys, key);
  if (!ParseNumber(line.rest(), value)) return false;
  if (known != std::end(kKeys)) guests.back().figures[static_cast<size_t>(known - std::begin(kKeys))] = Figure(value);
  return true;
}

bool HasChecksum(std::string_view text, std::string_view &lines) {
  const size_t size = GuestsFileChecksum({}).size();
  if (text.size() < size) return false;
  lines = text.substr(0, text.size() - size);
  return text.substr(lines.size()) == GuestsFileChecksum(lines);
}

bool IsCurrent(const GuestsFile &file, Figure uptime) {
  const uint64_t now = uptime.Cell(0);
  return now != HVC_KB_NONE && now >= file.uptime && now - file.uptime < kMaxPeriods * file.period;
}

}  // namespace

std::string_view KeyOf(GuestFigure figure) { return kKeys[static_cast<size_t>(figure)]; }

std::string GuestsFileChecksum(std::string_view lines) {
  char line[64];
  const uint64_t sum = XXH64(lines.data(), lines.size(), 0);
  const int size = std::snprintf(line, sizeof line, "checksum %016" PRIx64 "\n", sum);
  return {line, static_cast<size_t>(size)};
}

std::string FormatGuestsFile(const GuestsFile &file) {
  std::string text(kFirstLine);
  text += Line("uptime-ms", file.uptime) + Line("period-ms", file.period);
  for (const GuestFigures &guest : file.guests) {
    text += "guest " + std::to_string(guest.pid) + ' ' + std::to_string(guest.startTicks) + '\n';
    for (size_t i = 0; i < kGuestFigures; ++i) {
      if (!guest.figures[i].isAbsent()) text += Line(kKeys[i], guest.figures[i].Cell(0));
    }
  }
  return text + GuestsFileChecksum(text);
}

bool ParseGuestsFile(std::string_view text, GuestsFile &file) {
  std::string_view lines;
  if (!HasChecksum(text, lines)) return false;
  TextScanner scanner(lines);
  if (!scanner.Take(kFirstLine)) return false;
  if (!TakeLine(scanner, "uptime-ms", file.uptime) || !TakeLine(scanner, "period-ms", file.period)) return false;
  if (file.period > kMaxGuestsPeriod) return false;
  while (!scanner.AtEnd()) {
    if (!TakeGuestLine(scanner.TakeUntil('\n'), file.guests)) return false;
  }
  std::ranges::sort(file.guests, {}, &GuestFigures::pid);
  return true;
}

std::vector<GuestFigures> ReadGuestsFile(HostFiles &files) {
  std::string text;
  GuestsFile file;
  if (files.ReadTrusted(HostPath(kGuestsFile), kMaxGuestsFile, text) != HVC_OK) return {};
  if (!ParseGuestsFile(text, file) || !IsCurrent(file, ReadUptime(files))) return {};
  return std::move(file.guests);
}

}  // namespace platkit
