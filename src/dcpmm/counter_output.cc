#include "src/dcpmm/counter_output.h"

#include <fcntl.h>

#include <cerrno>
#include <cinttypes>
#include <cstring>
#include <ctime>

#include "src/table/report_row.h"

namespace kestrel {
namespace {

// 79 characters between two newlines.
constexpr char kRule[] =
    "\n"
    "===============================================================================\n";
static_assert(sizeof kRule == 81 + 1);

constexpr char kHeadings[] = "\nSOCKET \t IMC \t CHANNEL \t \t EVENT \t \t \t\tCOUNTS \t";

HVC_ReturnStatus CannotCreate() {
  std::puts("\n Cannot Create report output file");
  return HVC_FAILURE;
}

// The hour, minute and second in the name are each one more than the clock shows. Scripts that look for these files
// rely on this.
void FormatName(const std::tm &now, char *name, size_t size) {
  std::snprintf(name, size, "dcpmm-stats-%04d%02d%02d%02d%02d%02d", now.tm_year + 1900, now.tm_mon + 1, now.tm_mday,
                now.tm_hour + 1, now.tm_min + 1, now.tm_sec + 1);
}

}  // namespace

using enum Conversion;

constinit ColumnDesc counterColumns[] = {
    {"Socket", "Socket Number", 5, kD},      {"IMC", "IMC/M2M", 20, kS},
    {"Channel", "Channel Number", 20, kS},   {"Event", "Name of the Hardware Event", 40, kS},
    {"Counts", "Number of Counts", 40, kLu},
};

HVC_ReturnStatus CounterOutput::CreateFile(int interval) {
  const std::time_t now = std::time(nullptr);
  if (now == -1) {
    std::printf("time() failed: %s\n", std::strerror(errno));
    return CannotCreate();
  }
  const std::tm *local = std::localtime(&now);
  if (local == nullptr) {
    std::printf("localtime() failed: %s\n", std::strerror(errno));
    return CannotCreate();
  }
  FormatName(*local, fileName_, sizeof fileName_);
  std::printf("Data output is being written to: %s\n", fileName_);
  // O_NOFOLLOW: an attacker may have put a symbolic link there to make root overwrite another file.
  const int descriptor = open(fileName_, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0666);
  if (descriptor >= 0) file_.reset(fdopen(descriptor, "w"));
  if (file_ == nullptr) {
    std::printf("Cannot create output file %s: %s\n", fileName_, std::strerror(errno));
    return HVC_FAILURE;
  }
  std::fprintf(file_.get(), "\nTime Interval: %d\n%s%s%s", interval, kRule, kHeadings, kRule);
  return Written(std::fflush(file_.get()) == 0);
}

void CounterOutput::PrintHeader() const {
  if (csv_) TablePrintHeader(counterColumns, true);
}

void CounterOutput::Print(const CounterPlace &place, const char *counter, uint64_t count) const {
  if (csv_) {
    const Value values[] = {place.socket, std::string_view(place.unit),
                            std::string_view(place.channel == nullptr ? "N/A" : place.channel),
                            std::string_view(counter), count};
    TablePrintRow(counterColumns, true, false, values);
  } else if (place.channel != nullptr) {
    std::fprintf(file_.get(), "\n  %zu \t %s \t %s \t %s \t \t \t %" PRIu64, place.socket, place.unit, place.channel,
                 counter, count);
  } else {
    std::fprintf(file_.get(), "\n  %zu \t %s \t\t %s \t %" PRIu64, place.socket, place.unit, counter, count);
  }
}

HVC_ReturnStatus CounterOutput::EndIteration(int number) {
  if (csv_) {
    // Flush, so that the reader of a pipe sees each iteration when it ends.
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 ? HVC_OK : HVC_FAILURE;
  }
  std::fprintf(file_.get(), "%s\nITERATION %d COMPLETED\n%s", kRule, number, kRule);
  return Written(std::fflush(file_.get()) == 0 && std::ferror(file_.get()) == 0);
}

HVC_ReturnStatus CounterOutput::Close() {
  if (file_ == nullptr) return HVC_OK;
  return Written(std::fclose(file_.release()) == 0);
}

void CounterOutput::PrintDescriptions() { TablePrintDescriptions(counterColumns); }

HVC_ReturnStatus CounterOutput::Written(bool ok) {
  if (ok) return HVC_OK;
  std::printf("Cannot write output file %s: %s\n", fileName_, std::strerror(errno));
  return HVC_FAILURE;
}

}  // namespace kestrel
