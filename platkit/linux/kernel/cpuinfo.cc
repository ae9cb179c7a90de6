#include "platkit/linux/kernel/cpuinfo.h"

#include "platkit/linux/files/line_reader.h"
#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/kernel/figure_files.h"

namespace platkit {
namespace {

// Keys may contain blanks: "model name" is not "model".
void TakeLine(std::string_view line, Processor &processor) {
  if (line.find(':') == std::string_view::npos) return;
  TextScanner scanner(line);
  const std::string_view key = Trim(scanner.TakeUntil(':'));
  if (key == "processor") processor.number = processor.number.IfAbsent(ParseFigure(scanner.rest()));
  if (key == "vendor_id") processor.isIntel = Trim(scanner.rest()) == "GenuineIntel";
  if (key == "cpu family") processor.family = processor.family.IfAbsent(ParseFigure(scanner.rest()));
  if (key == "model") processor.model = processor.model.IfAbsent(ParseFigure(scanner.rest()));
}

// Reads the lines of the next processor, and the empty line after them. Returns false at the end of the file.
bool NextProcessor(LineReader &lines, Processor &processor) {
  processor = {};
  bool any = false;
  for (std::string_view line; lines.Next(line); any = true) {
    if (Trim(line).empty()) return true;
    TakeLine(line, processor);
  }
  return any;
}

}  // namespace

HVC_ReturnStatus FindProcessor(HostFiles &files, uint64_t number, Processor &processor) {
  LineReader lines(files, HostPath("proc/cpuinfo"));
  while (NextProcessor(lines, processor)) {
    if (processor.number != Figure(number)) continue;
    const bool hasKnownModels = processor.isIntel && processor.family == Figure(6);
    return hasKnownModels && !processor.model.isAbsent() ? HVC_OK : HVC_NOT_FOUND;
  }
  return lines.status() == HVC_OK ? HVC_NOT_FOUND : lines.status();
}

}  // namespace platkit
