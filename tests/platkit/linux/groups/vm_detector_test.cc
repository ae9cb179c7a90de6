#include "platkit/linux/groups/vm_detector.h"

#include "platkit/linux/groups/group_tree.h"
#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

const std::string kScopeLine = "0::/machine.slice/machine-qemu\\x2d1\\x2dweb.scope/libvirt/emulator\n";
const std::string kRoot = "Uid:\t0\t0\t0\t0\n";
const std::string kUser = "Uid:\t1000\t1000\t1000\t1000\n";

// Replaces the machine of the saved host.
void Start(SavedHost &host, const std::string &name, const std::string &program, const std::string &user = kRoot) {
  host.Write("proc/300/status", "Name:\t" + name + "\n" + user + "VmSize: 9 kB\nThreads:\t6\n");
  host.Write("proc/300/cmdline", program + '\0' + "-name" + '\0' + "guest=web" + '\0');
  host.Remove("proc/300/exe");
  host.MakeLink("proc/300/exe", program);
}

TEST(VmDetector, RootsQemuIsRecognizedByItsProgram) {
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
    host.Write("proc/300/status",
               std::string("Name:\t") + program.process + "\n" + kRoot + "VmSize: 90 kB\nVmData: 8 kB\nVmStk: 1 kB\n");
    host.Write("proc/300/cmdline", std::string(program.program) + '\0');
    host.Remove("proc/300/exe");
    if (*program.program != '\0') host.MakeLink("proc/300/exe", program.program);
    EXPECT_EQ((host.ask().Flags(300) & HVC_GROUP_VM) != 0, program.isMachine) << program.program;
    EXPECT_EQ(host.ask().Name(300), program.process) << "without a guest's name, the process' own";
    EXPECT_CELL(host.ask().Stats(300).memSize, 9u) << "without a size, the process' own";
  }
}

TEST(VmDetector, ANameAndACommandLineAreNoEvidence) {
  const struct {
    std::string what, user;
  } claims[] = {
      {"an ordinary user", kUser},
      {"a program that becomes root", "Uid:\t1000\t0\t0\t0\n"},
      {"the other way round", "Uid:\t0\t1000\t1000\t1000\n"},
      {"root in a container", kRoot + "NSpid:\t300\t12\n"},
      {"a system user", "Uid:\t64055\t64055\t64055\t64055\n"},
      {"an unknown user", ""},
      {"an unknown user", "Uid:\t0\t0\t0\n"},
      {"an unknown user", "Uid:\tx\t0\t0\t0\n"},
  };
  for (const auto &claim : claims) {
    SavedHost host("v2.host");
    Start(host, "qemu-system-x86", "/usr/bin/qemu-system-x86_64", claim.user);
    EXPECT_EQ(host.ask().Tag(300), "process") << claim.what;
    EXPECT_EQ(host.ask().Name(300), "qemu-system-x86") << claim.what;
    EXPECT_CELL(host.ask().Record(nodes::sched_globalStats_numVMs).numVMs, 0u) << claim.what;
    EXPECT_EQ(host.Opens("proc/300/cmdline"), 0) << claim.what;
  }
}

TEST(VmDetector, AControlGroupForVmsIsEvidence) {
  SavedHost host("v2.host");
  Start(host, "qemu-system-x86", "/usr/bin/qemu-system-x86_64", kUser);
  host.Write("proc/300/cgroup", kScopeLine);
  {
    host.Remove("proc/300/exe");  // an ordinary user cannot read it
    OrdinaryUser user;
    EXPECT_EQ(host.ask().Tag(300), "vm") << "for all users";
    EXPECT_EQ(host.ask().Name(300), "web");
    EXPECT_CELL(host.ask().Record(nodes::sched_globalStats_numVMs).numVMs, 1u);
  }
  SavedHost helper("v2.host");
  Start(helper, "swtpm", "/usr/bin/swtpm", kUser);
  helper.Write("proc/300/cgroup", kScopeLine);
  EXPECT_EQ(helper.ask().Tag(300), "process") << "a helper of the machine";
  Start(helper, "qemu-pr-helper", "/usr/bin/qemu-pr-helper", kUser);
  helper.ask().Members(0);
  EXPECT_EQ(helper.ask().Tag(300), "process");
}

TEST(VmDetector, TheControlGroupCountsFromTheTopOfTheHierarchy) {
  SavedHost host("v2.host");
  Start(host, "qemu-system-x86", "/usr/bin/qemu-system-x86_64", kUser);
  host.Write("proc/300/cgroup", "0::/user.slice/user@1000.service" + kScopeLine.substr(3));
  EXPECT_EQ(host.ask().Tag(300), "process");

  SavedHost part("v2.host");
  Start(part, "qemu-system-x86", "/usr/bin/qemu-system-x86_64", kUser);
  part.Write("proc/self/mountinfo", "31 23 0:28 /docker/7 /sys/fs/cgroup rw - cgroup2 cgroup2 rw\n");
  part.Write("proc/300/cgroup", "0::/docker/7" + kScopeLine.substr(3));
  EXPECT_EQ(part.ask().Tag(300), "process") << "only a part is mounted";
}

TEST(VmDetector, AProgramOfAnotherNameIsNoQemuOfRoot) {
  SavedHost host("v2.host");
  Start(host, "qemu-system-x86", "/usr/bin/qemu-system-x86_64");
  host.Remove("proc/300/exe");
  host.MakeLink("proc/300/exe", "/usr/bin/sudo");
  EXPECT_EQ(host.ask().Tag(300), "process") << "that a user linked to";
  host.Remove("proc/300/exe");
  host.ask().Members(0);
  EXPECT_EQ(host.ask().Tag(300), "process") << "whose link an ordinary user may not read";
}

TEST(VmDetector, WhatAUserClaimsIsMarked) {
  SavedHost host("kvm-list.host");
  const auto name = [&host](const std::string &user, const std::string &guest) {
    host.Write("proc/400/status", "Name:\tmonitor\nTgid:\t400\n" + user + "VmSize: 9 kB\nThreads:\t3\n");
    host.Write("proc/400/cmdline", "/opt/monitor" + std::string(1, '\0') + "-name" + '\0' + guest + '\0');
    host.ask().Members(0);
    EXPECT_EQ(host.ask().Tag(400), "vm");
    return host.ask().Name(400);
  };
  EXPECT_EQ(name(kRoot, "web"), "web");
  EXPECT_EQ(name(kUser, "web"), "web (uid 1000)");
  EXPECT_EQ(name(kUser, ""), "monitor (uid 1000)");
  EXPECT_EQ(name(kUser, "web (uid 0)"), "web (uid 0) (uid 1000)");
  EXPECT_EQ(name(kUser, std::string(100, 'w')), std::string(52, 'w') + " (uid 1000)") << "the mark remains";
  EXPECT_EQ(name("", "web"), "web (uid ?)");
  EXPECT_EQ(name(kRoot + "NSpid:\t400\t1\n", "web"), "web (uid 0)");
  host.Write("proc/400/cgroup", kScopeLine);
  EXPECT_EQ(name(kUser, "web"), "web") << "by libvirt";
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
  EXPECT_EQ(host.ask().Members(400), std::vector<int64_t>{kFirstVm + 400});
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
  host.MakeLink("proc/401/fd/12", "anon_inode:kvm-vm");
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

// A host without KVM's list of VMs, on which the processes 1000, 1001, ... have descriptors. The last descriptor of
// each process is a VM.
class ManyDescriptors {
 public:
  ManyDescriptors(int processes, int descriptors) : host_("kvm-descriptors.host") {
    for (int pid = 1000; pid < 1000 + processes; ++pid) {
      const std::string folder = "proc/" + std::to_string(pid);
      host_.Write(folder + "/status", "Name:\tmany\n" + kRoot + "VmSize: 9 kB\nThreads:\t2\n");
      for (int i = 1; i <= descriptors; ++i)
        host_.MakeLink(folder + "/fd/" + std::to_string(i), i < descriptors ? "/dev/null" : "anon_inode:kvm-vm");
    }
    for (const char *pid : {"400", "401", "402"})
      host_.Remove(std::string("proc/") + pid);
  }

  // The number of VMs that are found within these limits.
  Figure Count(size_t perProcess, size_t inAll) {
    GroupTree tree(files_, reader_, {.perProcess = perProcess, .inAll = inAll});
    Figure count;
    EXPECT_EQ(tree.CountVms(count), HVC_OK);
    return count;
  }

 private:
  SavedHost host_;
  HostFiles files_{host_.Path(""), Reach::kRootFolder};
  GroupReader reader_{files_};
};

TEST(VmDetector, ThereIsALimitOnTheDescriptorsOfAProcess) {
  ManyDescriptors host(1, 6);
  EXPECT_EQ(host.Count(6, 100), Figure(1));
  EXPECT_EQ(host.Count(0, 100), Figure(0));
}

TEST(VmDetector, ThereIsALimitOnAllDescriptors) {
  ManyDescriptors host(3, 6);
  EXPECT_EQ(host.Count(6, 18), Figure(3));
  EXPECT_EQ(host.Count(6, 0), Figure::Unreadable()) << "not known";
  EXPECT_EQ(host.Count(0, 0), Figure(0)) << "the limit of a process comes first";
}

TEST(VmDetector, TheLimitOnAllDescriptorsHoldsForAWhile) {
  SavedHost host("kvm-descriptors.host");
  Clock::Time now;
  HostFiles files(host.Path(""), Reach::kRootFolder);
  files.UseClock(Clock([&now] { return now; }));
  GroupReader reader(files);
  VmDetector detector(files, reader, {.perProcess = 2, .inAll = 2});
  const VmDetector::Candidate owner = {.pid = 400, .name = "monitor", .threads = 3, .user = {}};
  for (int round = 0; round < 2; ++round) {
    while (detector.Detect(owner).options.has_value()) {
    }
    EXPECT_TRUE(detector.Detect(owner).isUnknown);
    now += kFreshTime;
  }
  EXPECT_TRUE(detector.Detect(owner).options.has_value());
}

TEST(VmDetector, KvmIsReadAgainWithTheHost) {
  SavedHost host("kvm-list.host");
  Asker ask = host.ask();
  EXPECT_EQ(ask.Tag(401), "process");
  host.MakeFolder("sys/kernel/debug/kvm/401-12");
  host.MakeLink("proc/401/fd/12", "anon_inode:kvm-vm");
  ask.Members(0);
  EXPECT_EQ(ask.Tag(401), "vm");
}

}  // namespace
}  // namespace platkit
