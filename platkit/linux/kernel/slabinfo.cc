#include "platkit/linux/kernel/slabinfo.h"

#include <utility>

#include "platkit/linux/files/line_reader.h"
#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/kernel/figure_files.h"

namespace platkit {
namespace {

// Parses "name active total size perSlab pagesPerSlab : tunables ... : slabdata activeSlabs slabs shared". The name may
// contain blanks, so the numbers are parsed from the end. Returns false if the line has another form.
bool ParseCache(std::string_view line, SlabCache &cache) {
  constexpr std::string_view kSlabData = " : slabdata";
  const size_t tunables = line.find(" : tunables");
  const size_t slabData = line.find(kSlabData);
  if (line.starts_with('#') || tunables == std::string_view::npos) return false;
  TextScanner start(line.substr(0, tunables));
  cache.pagesPerSlab = ParseFigure(start.TakeLastWord());
  cache.objectsPerSlab = ParseFigure(start.TakeLastWord());
  cache.objectSize = ParseFigure(start.TakeLastWord());
  cache.objects = ParseFigure(start.TakeLastWord());
  cache.activeObjects = ParseFigure(start.TakeLastWord());
  cache.name = start.rest().substr(0, start.rest().find_last_not_of(' ') + 1);
  TextScanner data(slabData == std::string_view::npos ? "" : line.substr(slabData + kSlabData.size()));
  data = TextScanner(data.TakeUntil(':'));
  data.TakeWord();
  cache.slabs = ParseFigure(data.TakeWord());
  return !cache.name.empty();
}

}  // namespace

Slabinfo ReadSlabinfo(HostFiles &files) {
  Slabinfo info;
  LineReader lines(files, HostPath("proc/slabinfo"));
  for (std::string_view line; lines.Next(line);) {
    SlabCache cache;
    if (ParseCache(line, cache)) info.caches.push_back(std::move(cache));
  }
  info.status = lines.status();
  return info;
}

}  // namespace platkit
