// Runs the programs while allocations fail: their own, those of libplatkit, and those of the C and C++ libraries.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <functional>

#include "src/dcpmm/uncore.h"
#include "tests/linux/saved_host.h"
#include "tests/support/process.h"
#include "tests/support/report_names.h"
#include "tests/support/scratch.h"
#include "tests/support/text.h"

namespace stress {
namespace {

using testing_support::Command;
using testing_support::Outcome;
using testing_support::ScratchDirectory;

// Per command and kind of shortage. every_allocation_test fails each allocation of the library once.
constexpr uint64_t kTries = 50;

class ShortMemory : public testing::Test {
 protected:
  void SetUp() override {
#ifdef KESTREL_SANITIZE
    GTEST_SKIP() << "the sanitizers have their own malloc";
#endif
  }
};

struct Program {
  Command command;
  const char *library = SHORT_MEMORY_LIBRARY;
};

Outcome RunWith(const Program &program, const std::string &variable, const std::string &value) {
  Command command = program.command;
  testing_support::Preload(command, program.library);
  command.environment.emplace_back(variable, value);
  Outcome outcome = testing_support::Run(command);
  outcome.output = testing_support::MaskTimes(outcome.output);
  return outcome;
}

// A run with enough memory.
struct WholeRun {
  Outcome outcome;
  uint64_t allocations;
};

WholeRun RunWhole(const Program &program) {
  const ScratchDirectory scratch;
  const std::string count = scratch.File("count");
  Outcome outcome = RunWith(program, "COUNT_ALLOCATIONS", count);
  return {.outcome = std::move(outcome), .allocations = std::stoull(testing_support::ReadFile(count))};
}

// Calls `check` with the outcome of runs of the command in which an allocation fails, alone or with all later ones:
// with each of the first ones, and with some of the rest.
void FailAllocations(const Program &program, uint64_t allocations,
                     const std::function<void(const Outcome &, const std::string &)> &check) {
  ASSERT_GT(allocations, 0u);
  const uint64_t step = std::max<uint64_t>(1, allocations / kTries);
  // Skips the first allocation, with which the C++ library reserves memory for exceptions.
  for (uint64_t k = 2; k <= allocations && !testing::Test::HasFailure(); k += k < kTries / 2 ? 1 : step) {
    for (const std::string lasts : {"", "+"}) {
      const std::string which = std::to_string(k) + lasts;
      check(RunWith(program, "FAIL_ALLOCATION", which), "allocation " + which);
    }
  }
}

// Reports that end without a message if the library refuses some list.
bool MayEndSilently(const std::string &report) {
  return report == "buddy-stats" || report == "asyncremap-stats" || report.starts_with("pmem-");
}

void ExpectMessageOrSame(const Program &program, bool hasMessages) {
  const auto [whole, allocations] = RunWhole(program);
  ASSERT_EQ(whole.exitStatus, 0) << whole;
  FailAllocations(program, allocations, [&, &whole = whole](const Outcome &run, const std::string &where) {
    EXPECT_EQ(run.signal, 0) << where << ": " << run;
    EXPECT_TRUE(run.exitStatus == 0 || run.exitStatus == 1) << where << ": " << run;
    const bool hasMessage = run.errors != whole.errors || run.exitStatus != whole.exitStatus;
    EXPECT_TRUE(!hasMessages || hasMessage || run.output == whole.output) << where << ": " << run << "not: " << whole;
  });
}

TEST_F(ShortMemory, InReportsOverASnapshot) {
  for (const std::string &report : testing_support::SavedHostReportNames(KESTREL_PROGRAM)) {
    SCOPED_TRACE(report);
    ExpectMessageOrSame({{.program = KESTREL_PROGRAM, .arguments = {"-c", SAMPLE_SNAPSHOT, "-r", report, "-q"}}},
                        !MayEndSilently(report));
  }
}

TEST_F(ShortMemory, InReportsOverASavedHost) {
  platkit::SavedHost host("two-nodes.host");
  for (const std::string &report : testing_support::SavedHostReportNames(KESTREL_PROGRAM)) {
    SCOPED_TRACE(report);
    ExpectMessageOrSame({{.program = KESTREL_PROGRAM, .arguments = {"-c", host.Path(""), "-r", report, "-q"}},
                         SHORT_MEMORY_OF_ROOT_LIBRARY},
                        !MayEndSilently(report));
  }
}

TEST_F(ShortMemory, InReportsOverTheRunningHost) {
  for (const std::string &report : testing_support::SavedHostReportNames(KESTREL_PROGRAM)) {
    SCOPED_TRACE(report);
    ExpectMessageOrSame({{.program = KESTREL_PROGRAM, .arguments = {"-r", report, "-q"}}}, false);
  }
}

// The limit of address space from which memory runs out depends on the machine, so many limits are tried.
TEST_F(ShortMemory, ByTheLimitOfAddressSpace) {
  platkit::SavedHost host;
  for (int pid = 1; pid <= 2000; ++pid) {
    const std::string number = std::to_string(pid);
    host.Write("proc/" + number + "/status", "Name:\tp\nTgid:\t" + number + "\nVmSize:\t10 kB\nVmRSS:\t5 kB\n");
  }
  const auto run = [&](const std::string &limit) {
    const std::string script = "ulimit -v " + limit + "; exec \"$@\"";
    return RunWith(
        {{.program = "/bin/sh",
          .arguments = {"-c", script, "sh", KESTREL_PROGRAM, "-c", host.Path(""), "-r", "group-stats", "-q"}},
         SHORT_MEMORY_OF_ROOT_LIBRARY},
        "FAIL_ALLOCATION", "0");
  };
  const Outcome whole = run("unlimited");
  ASSERT_EQ(whole.exitStatus, 0) << whole;
  bool hasRunOut = false;
  Outcome limited = {};
  for (int limit = 5'000; limited.exitStatus != 0 && limit < 50'000; limit += 100) {
    limited = run(std::to_string(limit));
    const bool isLoaded = limited.exitStatus != 126 && limited.exitStatus != 127;
    if (!isLoaded || limited.exitStatus == 0) continue;
    EXPECT_EQ(limited.exitStatus, 1) << limit << " KB: " << limited;
    EXPECT_TRUE(limited.errors.ends_with(" failure: Out of memory\n")) << limit << " KB: " << limited;
    hasRunOut = true;
  }
  EXPECT_TRUE(hasRunOut);
  EXPECT_EQ(limited.output, whole.output);
}

// A host with modules of persistent memory.
void WriteModules(platkit::SavedHost &host) {
  host.Write("proc/cpuinfo", "processor\t: 0\nvendor_id\t: GenuineIntel\ncpu family\t: 6\nmodel\t\t: 85\n");
  host.MakeFolder("sys/bus/nd/devices/nmem0");
  for (const kestrel::UnitPlace &unit : kestrel::kUnitPlaces) {
    std::array<char, 64> name;
    std::snprintf(name.data(), name.size(), "sys/bus/pci/devices/0000:3a:%02x.%x", unit.slot, unit.function);
    const std::string device(name.data());
    host.Write(device + "/vendor", "0x8086\n");
    host.Write(device + "/device", "0x2042\n");
    host.Write(device + "/config", std::string(4096, '\0'));
  }
}

// The profiler's messages go to standard output.
TEST_F(ShortMemory, InTheProfiler) {
  platkit::SavedHost host;
  WriteModules(host);
  const Program program = {{.program = KESTREL_PROGRAM,
                            .arguments = {"-r", "dcpmm-stats", "-q", "-i", "1"},
                            .environment = {{"ROOT_FOLDER", host.Path("")}}},
                           SHORT_MEMORY_OF_ROOT_LIBRARY};
  const auto [whole, allocations] = RunWhole(program);
  ASSERT_EQ(whole.exitStatus, 0) << whole;
  FailAllocations(program, allocations, [&, &whole = whole](const Outcome &run, const std::string &where) {
    EXPECT_EQ(run.signal, 0) << where << ": " << run;
    EXPECT_TRUE(run.exitStatus == 0 || run.exitStatus == 1) << where << ": " << run;
    const bool hasMessage = run.errors != whole.errors || run.output.find("DCPMM Profiler Info") != std::string::npos;
    EXPECT_TRUE(run.exitStatus == 1 || hasMessage || run.output == whole.output) << where << ": " << run;
  });
}

// The second text is the C library's.
bool NamesTheCause(const std::string &errors) {
  return errors.find("ut of memory") != std::string::npos || errors.find("Cannot allocate memory") != std::string::npos;
}

// Runs a command of nodal, whose output file is OUT if `writes`. A failed command says why and leaves no file.
void ExpectPlainFailure(std::vector<std::string> arguments, bool writes) {
  const ScratchDirectory scratch;
  if (writes) arguments.insert(arguments.end(), {"-o", scratch.File("out")});
  const Program program = {{.program = NODAL_PROGRAM, .arguments = arguments}};
  const auto [whole, allocations] = RunWhole(program);
  ASSERT_EQ(whole.exitStatus, 0) << whole;
  const auto takeFiles = [&] {
    std::vector<std::string> contents;
    for (const auto &entry : std::filesystem::directory_iterator(scratch.path())) {
      contents.push_back(testing_support::ReadFile(entry.path()));
      std::filesystem::remove(entry.path());
    }
    return contents;
  };
  const std::vector<std::string> files = takeFiles();
  ASSERT_EQ(files.size(), writes ? 1u : 0u);
  FailAllocations(program, allocations, [&, &whole = whole](const Outcome &run, const std::string &where) {
    EXPECT_EQ(run.signal, 0) << where << ": " << run;
    if (run.exitStatus == 0) {
      EXPECT_EQ(run.output, whole.output) << where;
      EXPECT_EQ(takeFiles().size(), files.size()) << where;
    } else {
      EXPECT_TRUE(run.exitStatus == 1 || (arguments[0] == "diff" && run.exitStatus == 2)) << where << ": " << run;
      EXPECT_TRUE(NamesTheCause(run.errors)) << where << ": " << run;
      EXPECT_TRUE(takeFiles().empty()) << where << ": " << run;
    }
  });
}

TEST_F(ShortMemory, InTheCompanion) {
  platkit::SavedHost host("two-nodes.host");
  const std::string sample = SAMPLE_SNAPSHOT;
  ExpectPlainFailure({"--cache", sample, "ls", "-l"}, false);
  ExpectPlainFailure({"--cache", sample, "get", "/memory/comprehensive"}, false);
  ExpectPlainFailure({"--cache", sample, "metrics"}, false);
  ExpectPlainFailure({"dump", sample}, false);
  ExpectPlainFailure({"verify", sample}, false);
  ExpectPlainFailure({"diff", sample, sample}, false);
  ExpectPlainFailure({"--cache", sample, "capture"}, true);
  ExpectPlainFailure({"--cache", sample, "capture", "--anonymize"}, true);
  ExpectPlainFailure({"--cache", sample, "metrics"}, true);
  ExpectPlainFailure({"build", SAMPLE_JSON}, true);
  ExpectPlainFailure({"--root", host.Path(""), "capture"}, true);
}

}  // namespace
}  // namespace stress
