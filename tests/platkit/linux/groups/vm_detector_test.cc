#include "platkit/linux/groups/vm_detector.h"

#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

constexpr int64_t kVmm = 20'000'000;

TEST(VmDetector, QemuIsRecognizedByItsProgramName) {
  const struct {
    const char *process, *program;
    bool isMachine;
  } programs[] = {
      {"qemu-system-x86", "/usr/bin/qemu-system-x86_64", true},
      {"qemu-kvm", "/usr/libexec/qemu-kvm", true},
      {"kvm", "kvm", true},
      {"qemu-img", "/usr/bin/qemu-img", false},
      {"qemu-ga", "/usr/bin/qemu-ga", false},
      {"kvm", "/opt/kvm-tool", false},
      {"kvm", "", false},
  };
  for (const auto &program : programs) {
    SavedHost host("v2.host");
    host.Write("proc/300/status", std::string("Name:\t") + program.process + "\nVmSize: 9 kB\n");
    host.Write("proc/300/cmdline", std::string(program.program) + '\0');
    EXPECT_EQ((host.ask().Flags(300) & HVC_GROUP_VM) != 0, program.isMachine) << program.program;
    if (program.isMachine) {
      EXPECT_EQ(host.ask().Name(300), program.process) << "without a name, the process' own";
      EXPECT_CELL(host.ask().Stats(300).memSize, 9u) << "without a size, the process' own";
    }
  }
}

TEST(VmDetector, CommandLinesOfOtherProgramsAreNotRead) {
  SavedHost host("v2.host");
  host.ask().Flags(100);
  host.ask().Flags(300);
  EXPECT_EQ(host.Opens("proc/100/cmdline"), 0);
  EXPECT_EQ(host.Opens("proc/300/cmdline"), 1);
}

TEST(VmDetector, KvmListsTheOwnersOfVms) {
  SavedHost host("kvm-list.host");
  EXPECT_EQ(host.ask().Members(400), std::vector<int64_t>{kVmm + 400});
  EXPECT_EQ(host.ask().Name(400), "monitor");
  EXPECT_EQ(host.ask().Tag(401), "process");
  EXPECT_EQ(host.Opens("sys/kernel/debug/kvm"), 1);
  EXPECT_EQ(host.Opens("proc/401/fd"), 0) << "the list is the whole truth";
}

// KVM names the thread that created the machine, which may be any thread of its process.
TEST(VmDetector, AnyThreadMayHaveCreatedTheVm) {
  SavedHost host("kvm-list.host");
  host.MakeFolder("sys/kernel/debug/kvm/455-12");
  host.Write("proc/455/status", "Name:\tworker\nTgid:\t401\nPid:\t455\nVmSize: 9 kB\n");
  EXPECT_EQ(host.ask().Tag(401), "vm");
  EXPECT_EQ(host.Opens("proc/401/fd"), 0);
}

TEST(VmDetector, DescriptorsAreReadIfTheThreadHasEnded) {
  SavedHost host("kvm-list.host");
  host.Write("sys/module/kvm_intel/refcnt", "3\n");
  host.MakeFolder("sys/kernel/debug/kvm/455-9");
  EXPECT_EQ(host.ask().Tag(401), "vm");
  EXPECT_EQ(host.ask().Tag(400), "vm");
}

TEST(VmDetector, DescriptorsAreReadIfTheListIsUnreadable) {
  SavedHost host("kvm-descriptors.host");
  EXPECT_EQ(host.ask().Tag(400), "vm");
  EXPECT_EQ(host.ask().Tag(401), "process") << "of one thread";
  EXPECT_EQ(host.ask().Tag(402), "process") << "no machine among its descriptors";

  SavedHost forbidden("kvm-list.host");
  forbidden.Write("sys/module/kvm_intel/refcnt", "3\n");
  forbidden.Forbid("sys/kernel/debug");
  OrdinaryUser user;
  EXPECT_EQ(forbidden.ask().Tag(401), "vm");
}

TEST(VmDetector, DescriptorsAreReadOnlyWhileKvmIsInUse) {
  SavedHost idle("kvm-descriptors.host");
  idle.Write("sys/module/kvm/refcnt", "0\n");
  idle.Write("dev/kvm", "");
  EXPECT_EQ(idle.ask().Tag(400), "process");
  EXPECT_EQ(idle.Opens("proc/400/fd"), 0);

  SavedHost builtIn("kvm-descriptors.host");
  builtIn.Remove("sys/module");
  builtIn.Write("dev/kvm", "");
  EXPECT_EQ(builtIn.ask().Tag(400), "vm");

  SavedHost none("kvm-descriptors.host");
  none.Remove("sys/module");
  EXPECT_EQ(none.ask().Tag(400), "process");
}

TEST(VmDetector, KvmIsReadAgainWithTheHost) {
  SavedHost host("kvm-list.host");
  Asker ask = host.ask();
  EXPECT_EQ(ask.Tag(401), "process");
  host.MakeFolder("sys/kernel/debug/kvm/401-12");
  ask.Members(0);
  EXPECT_EQ(ask.Tag(401), "vm");
}

}  // namespace
}  // namespace platkit
