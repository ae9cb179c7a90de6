// Prints figures over time as CSV or JSON.
#ifndef NODAL_HISTORY_SERIES_PRINTER_H
#define NODAL_HISTORY_SERIES_PRINTER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace nodal {

class SeriesPrinter {
 public:
  // The values of a figure in a step. They are empty if the figure was available in no sample.
  struct Step {
    size_t samples;  // the number of samples in which the figure was available
    std::string least;
    std::string largest;
    std::string last;
  };

  virtual ~SeriesPrinter() = default;
  virtual void Begin() = 0;
  virtual void ShowValue(int64_t second, std::string_view figure, const std::string &value) = 0;
  virtual void ShowStep(int64_t second, std::string_view figure, const Step &step) = 0;
  virtual void End() = 0;
};

std::unique_ptr<SeriesPrinter> MakeSeriesPrinter(bool json, bool hasSteps);

}  // namespace nodal

#endif  // NODAL_HISTORY_SERIES_PRINTER_H
