#include "platkit/linux/kernel/figure_files.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

TEST(FigureFiles, AFileOfOneAmount) {
  ExpectFigures(
      "amount", [](HostFiles &files) { return ReadAmount(files, HostPath("amount")); },
      {{"12\n", Figure(12)},
       {"0", Figure(0)},
       {"max\n", kUnlimited},
       {"9223372036854771712\n", kUnlimited},
       {"", kUnreadable},
       {"maximum\n", kUnreadable},
       {"-1\n", kUnreadable},
       {"1 2\n", kUnreadable},
       {"18446744073709551616\n", kUnreadable},
       {std::string(100, '1'), kUnreadable}},
      kUnreadable, kAbsent);
}

TEST(FigureFiles, AFileOfKeys) {
  const auto read = [](HostFiles &files) {
    Figure figure;
    const WantedFigure wanted[] = {{"key", &figure}};
    ReadFigures(files, HostPath("keys"), wanted);
    return figure;
  };
  ExpectFigures("keys", read,
                {{"key: 12 kB\n", Figure(12)},
                 {"other 1\nkey 12", Figure(12)},
                 {"key 12\nkey 13\n", Figure(12)},
                 {"keys 1\nke 2\nkex 3\n", kAbsent},
                 {"key x\n", kUnreadable},
                 {"key max\n", kUnreadable},
                 {"key\n", kAbsent},
                 {std::string(9000, 'x') + "\nkey 1\n", Figure(1)},
                 {"", kAbsent}},
                kUnreadable, kAbsent);
}

}  // namespace
}  // namespace platkit
