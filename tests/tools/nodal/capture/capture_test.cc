#include <signal.h>

#include <algorithm>
#include <functional>
#include <memory>

#include "platkit/node_ref.h"
#include "platkit/path.h"
#include "platkit/snapshot/snapshot_source.h"
#include "platkit/source.h"
#include "tests/linux/deep_folders.h"
#include "tests/linux/saved_host.h"
#include "tests/tools/nodal/program.h"
#include "tools/nodal/capture/capture.h"
#include "tools/nodal/support/output.h"

namespace {

std::string Dumped(const std::string &snapshot) { return Nodal("dump " + testing_support::Quoted(snapshot)).out; }

// The part of the dump with the nodes.
std::string NodesOf(const std::string &snapshot) {
  const std::string dump = Dumped(snapshot);
  return dump.substr(std::min(dump.find("  \"nodes\""), dump.size()));
}

Outcome CaptureSample(const Scratch &scratch, const std::string &words = "", const std::string &name = "captured") {
  return Nodal("--cache " + kSample + " capture -o " + scratch.Path(name) + " " + words);
}

// The paths of the nodes in a snapshot.
std::vector<std::string> Paths(const std::string &snapshot) {
  std::vector<std::string> paths;
  std::istringstream lines(NodesOf(snapshot));
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("    \"/")) paths.push_back(line.substr(5, line.find('"', 5) - 5));
  }
  return paths;
}

// A host that reads `before` until a certain node is read, and `after` from then on.
class ChangingHost : public platkit::Source {
 public:
  ChangingHost(const std::string &before, const std::string &after, std::string turningPoint)
      : turningPoint_(std::move(turningPoint)) {
    EXPECT_EQ(platkit::OpenSnapshot(before.c_str(), now_), HVC_OK);
    EXPECT_EQ(platkit::OpenSnapshot(after.c_str(), after_), HVC_OK);
  }

  HVC_ReturnStatus Get(const platkit::Node &node, platkit::Arguments arguments, std::span<std::byte> record) override {
    Turn(node, arguments);
    return now_->Get(node, arguments, record);
  }
  HVC_ReturnStatus List(const platkit::Node &node, platkit::Arguments arguments, platkit::ParamList &list) override {
    Turn(node, arguments);
    return now_->List(node, arguments, list);
  }

 private:
  void Turn(const platkit::Node &node, platkit::Arguments arguments) {
    platkit::PathWriter path;
    platkit::WritePath(node, arguments, path);
    if (after_ != nullptr && path.view() == turningPoint_) now_ = std::move(after_);
  }

  std::unique_ptr<platkit::Source> now_, after_;
  std::string turningPoint_;
};

// The JSON of a group.
std::string GroupOf(int64_t id, int64_t parent, const std::string &flags, const std::string &members,
                    const std::string &clients) {
  const std::string path = "\"/sched/groups/" + std::to_string(id) + "/";
  std::string text = path + "groupName\": {\"name\": \"g" + std::to_string(id) + "\"}," + path +
                     "groupFlags\": {\"flags\": " + flags + "}," + path +
                     "parentGroupID\": {\"parentGroupID\": " + std::to_string(parent) + "}," + path +
                     "members/groups\": [" + members + "]," + path + "members/memClients\": [" + clients + "]";
  if (!clients.empty()) text += "," + path + "groupLeaderID\": {\"leaderID\": " + clients + "}";
  return text;
}

std::string ClientOf(int64_t id) {
  return ",\"/sched/memClients/" + std::to_string(id) + "/kestrel/uw\": {\"memSize\": 1}";
}

// Groups 5 and 7 are user worlds below the host; 8 is a child of 7.
constexpr char kWorld[] = "8";
std::string Before() {
  return HostOf(GroupOf(0, -1, "2049", "5, 7", "") + "," + GroupOf(5, 0, kWorld, "", "5") + "," +
                GroupOf(7, 0, kWorld, "8", "7") + "," + GroupOf(8, 7, "4096", "", "") + ClientOf(5) + ClientOf(7));
}
std::string After() {
  return HostOf(GroupOf(0, -1, "2049", "5", "") + "," + GroupOf(5, 0, kWorld, "", "5") + ClientOf(5));
}

class Capture : public testing::Test {
 protected:
  ~Capture() override { platkit::UseSource(nullptr); }

  // Captures a host that changes when `turningPoint` is read, and returns the messages.
  std::string CaptureChange(const std::string &turningPoint) {
    const std::string before = Built(scratch_, Before(), "before");
    platkit::UseSource(std::make_unique<ChangingHost>(before, Built(scratch_, After(), "after"), turningPoint));
    testing::internal::CaptureStderr();
    nodal::Capture({.snapshot = scratch_.Path("captured"), .only = {}, .cache = before});
    return testing::internal::GetCapturedStderr();
  }

  Scratch scratch_;
};

TEST_F(Capture, OfASnapshotHasAllButPciDevices) {
  const Outcome outcome = CaptureSample(scratch_);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  std::vector<std::string> expected = Paths(SAMPLE_SNAPSHOT);
  std::erase_if(expected, [](const std::string &path) { return path.starts_with("/hardware/pci"); });
  EXPECT_EQ(Paths(scratch_.Path("captured")), expected);

  CaptureSample(scratch_, "--only / --only /hardware/pci", "whole");
  expected = Paths(SAMPLE_SNAPSHOT);
  std::erase_if(expected, [](const std::string &path) { return path.find("/pciConfigReg/") != std::string::npos; });
  EXPECT_EQ(Paths(scratch_.Path("whole")), expected);
  EXPECT_EQ(Nodal("verify " + scratch_.Path("whole")).status, 0);
}

TEST_F(Capture, PrintsASummary) {
  const Outcome outcome = CaptureSample(scratch_);
  EXPECT_EQ(outcome.out, "");
  EXPECT_TRUE(outcome.err.starts_with("nodal: " + scratch_.Path("captured") + ": 42 nodes, 212 records, 55 lists, " +
                                      std::to_string(Contents(scratch_.Path("captured")).size()) + " bytes, "))
      << outcome.err;
  EXPECT_TRUE(outcome.err.ends_with(" s\n"));
  EXPECT_EQ(outcome.err.find('\r'), std::string::npos);
}

TEST_F(Capture, ABarOnATerminal) {
  if (!testing_support::HasTerminals()) GTEST_SKIP() << "no pseudo-terminals here";
  const testing_support::Outcome outcome =
      testing_support::Run({.program = NODAL_PROGRAM,
                            .arguments = {"--cache", SAMPLE_SNAPSHOT, "capture", "-o", scratch_.Path("captured")},
                            .output = testing_support::OutputTo::kTerminal,
                            .errorsToOutput = true});
  EXPECT_EQ(outcome.exitStatus, 0) << outcome;
  EXPECT_TRUE(outcome.output.starts_with("\r[....")) << outcome;
  EXPECT_NE(outcome.output.find("] group: 1 of 180"), std::string::npos) << outcome;
  EXPECT_NE(outcome.output.find(" \rnodal: "), std::string::npos) << outcome;
}

TEST_F(Capture, AGroupThatVanishes) {
  const std::string said = CaptureChange("/sched/groups/5/groupName");
  EXPECT_TRUE(said.ends_with("; 2 instances vanished during the capture\n")) << said;
  EXPECT_EQ(NodesOf(scratch_.Path("captured")), NodesOf(scratch_.Path("after")));
}

TEST_F(Capture, AWorldThatVanishesAfterItsGroupWasRead) {
  const std::string said = CaptureChange("/sched/memClients/5/kestrel/uw");
  EXPECT_NE(said.find(" vanished during the capture\n"), std::string::npos) << said;
  EXPECT_EQ(NodesOf(scratch_.Path("captured")), NodesOf(scratch_.Path("after")));
}

TEST_F(Capture, NothingVanishesWithoutAChange) {
  const std::string said = CaptureChange("none");
  EXPECT_EQ(said.find("vanished"), std::string::npos) << said;
  EXPECT_EQ(NodesOf(scratch_.Path("captured")), NodesOf(scratch_.Path("before")));
}

TEST_F(Capture, InstancesWithoutRecordsAreReported) {
  const std::string host =
      Built(scratch_, HostOf(GroupOf(0, -1, "2049", "5", "") + "," + GroupOf(5, 0, kWorld, "", "5")));
  EXPECT_EQ(Nodal("verify " + host).status, 1);
  const std::string captured = scratch_.Path("captured");
  EXPECT_EQ(Nodal("--cache " + host + " capture -o " + captured).status, 0);
  EXPECT_EQ(Nodal("get /sched/groups/5/members/memClients --cache " + captured).out, "5\n");
  EXPECT_NE(Dumped(captured).find("\"failed:/sched/memClients/5/remapTypes\": {\"status\":\"Not found\"}"),
            std::string::npos);
  EXPECT_EQ(Nodal("get /sched/memClients/5/remapTypes --cache " + captured).err,
            "nodal: /sched/memClients/5/remapTypes: Not found\n");
  EXPECT_EQ(Nodal("verify " + captured).status, 0);
}

TEST_F(Capture, GroupsThatCannotBeListedAreCounted) {
  platkit::SavedHost host("v2.host");
  const platkit::DeepFolders folders(host.Path("sys/fs/cgroup/system.slice"));
  const std::string root = "--root " + host.Path("") + " ";
  const std::string captured = scratch_.Path("captured");
  const Outcome outcome = Nodal(root + "capture -o " + captured);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_TRUE(outcome.err.ends_with("; 1 unreadable: Name too long\n")) << outcome.err;
  EXPECT_EQ(Nodal(root + "metrics --prefix '' --only group --only reading_failures | tail -n 2").out,
            "reading_failures 1\n# EOF\n");
  EXPECT_EQ(Nodal("verify " + captured).status, 0);
}

TEST_F(Capture, UnreadableNodesFailInTheSnapshotToo) {
  const std::string host = Built(scratch_, HostOf(GroupOf(0, -1, "2049", "", "") +
                                                  R"(, "failed:/system/heaps": {"status": "No permission"},
                                                     "failed:/memory/memInfo": {"status": "I/O error"},
                                                     "failed:/memory/comprehensive": {"status": 4000000000})"));
  const std::string captured = scratch_.Path("captured");
  const Outcome outcome = Nodal("--cache " + host + " capture -o " + captured);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_TRUE(outcome.err.ends_with(
      "; 1 unreadable: I/O error; 1 unreadable: No permission; 1 unreadable: Status 4000000000\n"))
      << outcome.err;
  EXPECT_EQ(Nodal("get /system/heaps --cache " + captured).err, "nodal: /system/heaps: No permission\n");
  EXPECT_EQ(Nodal("get /memory/memInfo --cache " + captured).err, "nodal: /memory/memInfo: I/O error\n");
  EXPECT_EQ(NodesOf(captured), NodesOf(host));
  const Outcome verified = Nodal("verify " + captured);
  EXPECT_EQ(verified.out, captured + ": 3 records, 2 lists, 3 failures, no problems\n");
}

TEST_F(Capture, Parts) {
  EXPECT_EQ(CaptureSample(scratch_, "--only /memory/memInfo --only /system/heaps/").status, 0);
  EXPECT_EQ(Paths(scratch_.Path("captured")),
            (std::vector<std::string>{"/memory/memInfo", "/system/heaps", "/system/heaps/main/stats",
                                      "/system/heaps/net/stats", "/system/heaps/storage/stats"}));
  EXPECT_EQ(CaptureSample(scratch_, "--only /sched/groups/10").status, 0);
  for (const std::string &path : Paths(scratch_.Path("captured")))
    EXPECT_TRUE(path.starts_with("/sched/groups/10/")) << path;
  EXPECT_EQ(Nodal("get /sched/groups/10/members/groups --cache " + scratch_.Path("captured")).out,
            Nodal("get /sched/groups/10/members/groups --cache " + kSample).out);
}

TEST_F(Capture, PartsThatAreNotThere) {
  EXPECT_EQ(CaptureSample(scratch_, "--only /nowhere").err, "nodal: /nowhere: Not found\n");
  EXPECT_EQ(CaptureSample(scratch_, "--only /memory --only /sched/groups/99").err,
            "nodal: /sched/groups/99: Not found\n");
  EXPECT_EQ(CaptureSample(scratch_, "--only memory").err, "nodal: --only memory: path must begin with '/'\n");
  EXPECT_TRUE(scratch_.Names().empty());
  EXPECT_EQ(CaptureSample(scratch_, "--key-file x").status, 2);
  EXPECT_EQ(CaptureSample(scratch_, "--anonymize --key-file ''").status, 2);
}

TEST_F(Capture, AKeyOnTheCommandLineIsRefused) {
  for (const char *words : {"--anonymize --key secret", "--anonymize --key=secret", "--key secret"}) {
    const Outcome outcome = CaptureSample(scratch_, words);
    EXPECT_EQ(outcome.status, 2) << words;
    EXPECT_EQ(outcome.err,
              "nodal: --key: every user could see the key in the list of processes; use --key-file"
              " (see nodal capture --help)\n");
  }
  EXPECT_TRUE(scratch_.Names().empty());
}

TEST_F(Capture, Anonymous) {
  ASSERT_EQ(CaptureSample(scratch_, "--anonymize", "one").status, 0);
  ASSERT_EQ(CaptureSample(scratch_, "--anonymize", "other").status, 0);
  EXPECT_NE(Contents(scratch_.Path("one")), Contents(scratch_.Path("other")));
  const Outcome verified = Nodal("verify " + scratch_.Path("one"));
  EXPECT_EQ(verified.status, 0) << verified.out;
  EXPECT_TRUE(verified.out.ends_with(": 212 records, 55 lists, no problems\n")) << verified.out;

  const std::string dump = Dumped(scratch_.Path("one"));
  for (const char *name : {"web-01", "mail-01", "prod", "storage", "b81d4c36", "e45a7b90", "heap-large"}) {
    EXPECT_NE(Dumped(SAMPLE_SNAPSHOT).find(name), std::string::npos) << name;
    EXPECT_EQ(dump.find(name), std::string::npos) << name;
  }
  EXPECT_NE(dump.find("/system/buddy/memmap-00-lo/comprehensive"), std::string::npos);
}

TEST_F(Capture, TheTimeAndTheHostAreThoseOfTheSource) {
  CaptureSample(scratch_);
  const auto header = [](const std::string &snapshot) {
    const std::string dump = Dumped(snapshot);
    return dump.substr(0, dump.find("\"nodes\""));
  };
  EXPECT_EQ(header(scratch_.Path("captured")), header(SAMPLE_SNAPSHOT));

  std::filesystem::create_directories(scratch_.Path("root/proc/sys/kernel"));
  scratch_.Write("root/proc/sys/kernel/hostname", "alpha\n");
  ASSERT_EQ(Nodal("--root " + scratch_.Path("root") + " capture -o " + scratch_.Path("saved")).status, 0);
  EXPECT_NE(header(scratch_.Path("saved")).find("\"host\": \"alpha\",\n  \"time\": \"\""), std::string::npos);
  // As in all names of a host, a question mark replaces what cannot be printed.
  scratch_.Write("root/proc/sys/kernel/hostname", "a\x1b[2J\xc2\x9b,b\xff\n");
  ASSERT_EQ(Nodal("--root " + scratch_.Path("root") + " capture -o " + scratch_.Path("saved")).status, 0);
  EXPECT_NE(header(scratch_.Path("saved")).find("\"host\": \"a?[2J??b?\""), std::string::npos);

  const std::string other = Built(scratch_, R"({"format": 1, "signature": "other"})", "other");
  EXPECT_EQ(Nodal("--cache " + other + " capture -o " + scratch_.Path("x")).err,
            "nodal: " + other + ": System-information definitions differ\n");
}

TEST_F(Capture, TheRunningHost) {
  const std::string captured = scratch_.Path("captured");
  const Outcome outcome = Nodal("capture -o " + captured);
  ASSERT_EQ(outcome.status, 0) << outcome.err;
  const Outcome verified = Nodal("verify " + captured);
  EXPECT_EQ(verified.status, 0) << verified.out;
  EXPECT_EQ(Nodal("get /sched/groups/0/groupName --cache " + captured).out, "name  host\n");
}

TEST_F(Capture, AFileThatDoesNotFitIsRemoved) {
  const Outcome full = Nodal("--version >/dev/null; ulimit -f 1; " + kNodal + " --cache " + kSample + " capture -o " +
                             scratch_.Path("captured"));
  EXPECT_EQ(full.status, 1);
  EXPECT_EQ(full.err, "nodal: " + scratch_.Path("captured") + ": File too large\n");
  EXPECT_TRUE(scratch_.Names().empty());
  EXPECT_EQ(Nodal("capture -o " + scratch_.Path("missing/file")).status, 1);
}

// Reads the sample, and sends the program a signal when the heaps are read.
class Interrupting : public ChangingHost {
 public:
  explicit Interrupting(int signal) : ChangingHost(SAMPLE_SNAPSHOT, SAMPLE_SNAPSHOT, ""), signal_(signal) {}

  HVC_ReturnStatus List(const platkit::Node &node, platkit::Arguments arguments, platkit::ParamList &list) override {
    if (node.id == platkit::nodes::system_heaps.id()) raise(signal_);
    return ChangingHost::List(node, arguments, list);
  }

 private:
  int signal_;
};

[[noreturn]] void CaptureInterrupted(int signal, const std::string &snapshot) {
  platkit::UseSource(std::make_unique<Interrupting>(signal));
  try {
    nodal::Capture({.snapshot = snapshot, .only = {}, .cache = SAMPLE_SNAPSHOT});
  } catch (const nodal::Failure &failure) {
    nodal::Complain(failure.what());
    _exit(1);
  }
  _exit(0);
}

TEST_F(Capture, AnInterruptedCaptureWritesNothing) {
  const std::string snapshot = scratch_.Path("captured");
  EXPECT_EXIT(CaptureInterrupted(SIGINT, snapshot), testing::ExitedWithCode(1), "interrupted by a signal: Interrupt");
  EXPECT_EXIT(CaptureInterrupted(SIGTERM, snapshot), testing::ExitedWithCode(1), "interrupted by a signal: Terminated");
  EXPECT_TRUE(scratch_.Names().empty());
}

}  // namespace
