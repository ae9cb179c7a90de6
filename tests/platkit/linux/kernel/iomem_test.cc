#include "platkit/linux/kernel/iomem.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

TEST(Iomem, EachPartOfTheKernelImage) {
  const struct {
    std::string name;
    Figure KernelImage::*part;
  } parts[] = {{"Kernel code", &KernelImage::code},
               {"Kernel rodata", &KernelImage::rodata},
               {"Kernel data", &KernelImage::data},
               {"Kernel bss", &KernelImage::bss}};
  for (const auto &part : parts) {
    ExpectFigures(
        "proc/iomem", [&part](HostFiles &files) { return ReadKernelImage(files).*part.part; },
        {{"00001000-ffffffff : System RAM\n  00001000-00001fff : " + part.name + "\n", Figure(4096)},
         {"  00001000-00001fff : " + part.name + "\n  0-f : " + part.name + "\n", Figure(4096)},
         {"  00000000-00000000 : " + part.name + "\n", kUnreadable},
         {"  2-1 : " + part.name + "\n", kUnreadable},
         {"  g-h : " + part.name + "\n", kUnreadable},
         {"  5 : " + part.name + "\n", kUnreadable},
         {"  0-f : " + part.name + "s\n", kAbsent},
         {"  0-f " + part.name + "\n", kAbsent},
         {"", kAbsent}},
        kAbsent, kAbsent);
  }
}

}  // namespace
}  // namespace platkit
