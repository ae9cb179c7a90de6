#include "platkit/linux/kernel/process_exe.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

TEST(ProcessExe, NameOfTheProgram) {
  const struct {
    const char *link, *name;
  } programs[] = {
      {"/usr/bin/qemu-system-x86_64", "qemu-system-x86_64"},
      {"/usr/bin/qemu-system-x86_64 (deleted)", "qemu-system-x86_64"},
      {"/init", "init"},
      {"init", "init"},
      {"/usr/bin/", ""},
      {"/opt/a program", "a program"},
  };
  for (const auto &program : programs) {
    KernelFiles kernel;
    kernel.host().MakeLink("proc/7/exe", program.link);
    EXPECT_EQ(ReadProgramName(kernel.files(), 7), program.name) << program.link;
  }
}

TEST(ProcessExe, ALinkThatCannotBeRead) {
  KernelFiles kernel;
  EXPECT_EQ(ReadProgramName(kernel.files(), 7), "");
  EXPECT_EQ(ReadProgramName(kernel.With("proc/7/exe", "no link"), 7), "");
  kernel.host().MakeLink("proc/8/exe", "/init");
  kernel.host().Forbid("proc/8");
  OrdinaryUser user;
  EXPECT_EQ(ReadProgramName(kernel.files(), 8), "");
}

}  // namespace
}  // namespace platkit
