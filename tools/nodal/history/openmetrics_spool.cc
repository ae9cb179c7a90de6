#include "tools/nodal/history/openmetrics_spool.h"

#include <array>
#include <cerrno>
#include <cstring>

#include "tools/nodal/support/output.h"

namespace nodal {
namespace {

constexpr std::string_view kCounterEnding = "_total";

[[noreturn]] void ThrowError() { throw Failure("temporary file", std::strerror(errno)); }

// Returns the OpenMetrics name of a metric family. The samples of a counter have an ending that the family's name
// lacks.
std::string_view FamilyName(const Metric &metric) {
  std::string_view name = metric.name;
  if (metric.type == MetricType::kCounter && name.ends_with(kCounterEnding)) name.remove_suffix(kCounterEnding.size());
  return name;
}

std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '\\' || c == '"') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

}  // namespace

void OpenMetricsSpool::SetTime(int64_t millis) {
  char text[32];
  std::snprintf(text, sizeof text, " %lld.%03d\n", static_cast<long long>(millis / 1000),
                static_cast<int>(millis % 1000));
  time_ = text;
}

void OpenMetricsSpool::AddSample(const Labels &labels, double value) {
  File &file = files_[metric_];
  if (file == nullptr) file.reset(std::tmpfile());
  if (file == nullptr) ThrowError();
  std::string line = prefix_ + std::string(metric_->name);
  if (!labels.text().empty()) line += "{" + labels.text() + "}";
  line += " " + NumberText(value) + time_;
  if (std::fwrite(line.data(), 1, line.size(), file.get()) != line.size()) ThrowError();
}

std::string OpenMetricsSpool::Description(const Metric &metric) const {
  const std::string name = prefix_ + std::string(FamilyName(metric));
  const bool isCounter = metric.type == MetricType::kCounter;
  return "# TYPE " + name + (isCounter ? " counter\n" : " gauge\n") + "# HELP " + name + " " + Escaped(metric.help) +
         "\n";
}

void OpenMetricsSpool::WriteTo(const std::function<void(std::string_view text)> &write) {
  std::array<char, 1 << 16> buffer;
  for (const auto &[metric, file] : files_) {
    if (std::fflush(file.get()) != 0 || std::fseek(file.get(), 0, SEEK_SET) != 0) ThrowError();
    write(Description(*metric));
    while (const size_t size = std::fread(buffer.data(), 1, buffer.size(), file.get()))
      write({buffer.data(), size});
    if (std::ferror(file.get()) != 0) ThrowError();
  }
  write("# EOF\n");
}

}  // namespace nodal
