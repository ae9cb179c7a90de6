#include "platkit/linux/kernel/uptime.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

TEST(Uptime, InMilliseconds) {
  ExpectFigures("proc/uptime", ReadUptime,
                {{"350735.47 234388.90\n", Figure(350735470)},
                 {"0.01 0.00\n", Figure(10)},
                 {"12.30", Figure(12300)},
                 {"12.3 4.00\n", kUnreadable},
                 {"12 4\n", kUnreadable},
                 {"-1.00 0.00\n", kUnreadable},
                 {"99999999999999999999.00 0.00\n", kUnreadable},
                 {"18446744073709551615.00 0.00\n", kUnreadable},
                 {"", kUnreadable}},
                kUnreadable, kUnreadable);
}

}  // namespace
}  // namespace platkit
