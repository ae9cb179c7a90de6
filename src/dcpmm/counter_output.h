// Where the profiler's counts go: into a file of their own, or as CSV to standard output.
#ifndef KESTREL_DCPMM_COUNTER_OUTPUT_H
#define KESTREL_DCPMM_COUNTER_OUTPUT_H

#include <cstdint>
#include <cstdio>
#include <memory>

#include "platkit/status.h"
#include "src/table/column_table.h"

namespace kestrel {

// The columns of CSV; the file has them in a form of its own.
extern ColumnDesc counterColumns[5];

// What a count is of.
struct CounterPlace {
  size_t socket;
  const char *unit;     // "IMC-0"
  const char *channel;  // "Channel-0"; null for a unit without channels
};

class CounterOutput {
 public:
  explicit CounterOutput(bool csv) : csv_(csv) {}

  // Creates the file, named by the local time, in the current directory. One that cannot be had is reported on standard
  // output: HVC_FAILURE.
  [[nodiscard]] HVC_ReturnStatus CreateFile(int interval);

  // The line above the rows of CSV.
  void PrintHeader() const;

  void Put(const CounterPlace &place, const char *counter, uint64_t count) const;

  // What was put is now where it belongs, whatever becomes of the run. HVC_FAILURE if it could not be written; for the
  // file, that is reported.
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
