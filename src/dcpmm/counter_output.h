// Writes the profiler's counts to a file, or as CSV to standard output.
#ifndef KESTREL_DCPMM_COUNTER_OUTPUT_H
#define KESTREL_DCPMM_COUNTER_OUTPUT_H

#include <cstdint>
#include <cstdio>
#include <memory>

#include "platkit/status.h"
#include "src/table/column_table.h"

namespace kestrel {

// The columns of the CSV output. The file has its own format.
extern ColumnDesc counterColumns[5];

// The unit that a count comes from.
struct CounterPlace {
  size_t socket;
  const char *unit;     // "IMC-0"
  const char *channel;  // "Channel-0"; null for a unit without channels
};

class CounterOutput {
 public:
  explicit CounterOutput(bool csv) : csv_(csv) {}

  // Creates the file in the current directory and names it after the local time. On failure it prints the reason to
  // standard output and returns HVC_FAILURE.
  [[nodiscard]] HVC_ReturnStatus CreateFile(int interval);

  // Prints the CSV header. Does nothing if the counts go to a file.
  void PrintHeader() const;

  void Print(const CounterPlace &place, const char *counter, uint64_t count) const;

  // Flushes all counts so far, so that they survive if the run is aborted. If they cannot be written, returns
  // HVC_FAILURE; for a file, also prints the reason to standard output.
  [[nodiscard]] HVC_ReturnStatus EndIteration(int number);
  [[nodiscard]] HVC_ReturnStatus Close();

  static void PrintDescriptions();

 private:
  struct Closer {
    void operator()(std::FILE *file) const { std::fclose(file); }
  };

  HVC_ReturnStatus Written(bool ok);

  bool csv_;
  std::unique_ptr<std::FILE, Closer> file_;
  char fileName_[1024] = "";
};

}  // namespace kestrel

#endif  // KESTREL_DCPMM_COUNTER_OUTPUT_H
