#include "platkit/linux/records/processor_records.h"

#include "platkit/linux/kernel/figure_files.h"

namespace platkit {
namespace {

// What cpuinfo says of one processor: a line that is not there is absent, one that does not parse unreadable.
struct Processor {
  Figure number, model;
};

Figure ParseFigure(std::string_view text) {
  uint64_t value = 0;
  return ParseNumber(text, value) ? Figure(value) : Figure::Unreadable();
}

// Keys of cpuinfo hold blanks: "model name" is another one than "model".
void TakeLine(std::string_view line, Processor &processor) {
  const size_t colon = line.find(':');
  if (colon == std::string_view::npos) return;
  const std::string_view key = Trim(line.substr(0, colon));
  const std::string_view value = line.substr(colon + 1);
  if (key == "processor") processor.number = processor.number.IfAbsent(ParseFigure(value));
  if (key == "model") processor.model = processor.model.IfAbsent(ParseFigure(value));
}

// Takes lines up to the empty one behind a processor; false at the end of the file.
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

HVC_ReturnStatus ReadProcessor(HostFiles &files, int64_t number, CpuRecord &record) {
  if (number < 0) return HVC_NOT_FOUND;
  LineReader lines(files, HostPath("proc/cpuinfo"));
  for (Processor processor; NextProcessor(lines, processor);) {
    if (processor.number != Figure(static_cast<uint64_t>(number))) continue;
    if (processor.model.isAbsent()) break;
    const uint64_t model = processor.model.Cell(0);
    if (model > UINT8_MAX) return HVC_IO_ERROR;
    record.model = static_cast<uint8_t>(model);
    return HVC_OK;
  }
  return lines.status() == HVC_OK ? HVC_NOT_FOUND : lines.status();
}

}  // namespace platkit
