#include "platkit/linux/kernel/pressure.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

TEST(MemoryPressure, EachLine) {
  const auto reader = [](Figure MemoryPressure::*figure) {
    return [figure](HostFiles &files) { return ReadMemoryPressure(files, HostPath(kHostPressure)).*figure; };
  };
  const std::string some = "some avg10=12.99 avg60=1.00 avg300=0.00 total=5\n";
  const std::string full = "full avg10=3.00 avg60=1.00 avg300=0.00 total=5\n";
  ExpectFigures("proc/pressure/memory", reader(&MemoryPressure::some),
                {{some + full, Figure(12)}, {full, kAbsent}, {"some avg60=1.00\n", kUnreadable}, {"", kAbsent}},
                kUnreadable, kAbsent);
  ExpectFigures("proc/pressure/memory", reader(&MemoryPressure::full),
                {{some + full, Figure(3)}, {some, kAbsent}, {"full avg10=x\n", kUnreadable}, {"full\n", kUnreadable}},
                kUnreadable, kAbsent);
}

}  // namespace
}  // namespace platkit
