#include <unistd.h>

#include "platkit/version.h"
#include "tests/tools/nodal/program.h"

namespace {

TEST(CommandLine, Usage) {
  for (const char *words : {"", "frobnicate", "get", "dump", "build x", "ls --frob", "--cache a --root b ls",
                            "get --raw --json /x", "--cache '' ls"}) {
    const Outcome outcome = Nodal(words);
    EXPECT_EQ(outcome.status, 2) << words;
    EXPECT_EQ(outcome.out, "") << words;
    EXPECT_TRUE(outcome.err.starts_with("nodal: ")) << words << ": " << outcome.err;
  }
}

TEST(CommandLine, HelpAndVersion) {
  const Outcome help = Nodal("--help");
  EXPECT_EQ(help.status, 0);
  for (const char *command : {"ls", "get", "dump", "diff", "metrics", "build", "verify", "--cache", "--root"})
    EXPECT_NE(help.out.find(command), std::string::npos) << command;
  EXPECT_EQ(Nodal("get --help").status, 0);
  const Outcome version = Nodal("--version");
  EXPECT_EQ(version.status, 0);
  EXPECT_TRUE(version.out.starts_with("nodal " PLATKIT_VERSION ", definitions ")) << version.out;
}

TEST(CommandLine, OutputThatCannotBeWritten) {
  for (const std::string &words :
       {"dump " + kSample, "--cache " + kSample + " ls /sched", std::string("--help"), std::string("--version"),
        "verify " + kSample, "--cache " + kSample + " top --batch"}) {
    const Outcome full = Nodal(words + " >/dev/full");
    EXPECT_EQ(full.status, 1) << words;
    EXPECT_EQ(full.err, "nodal: standard output: No space left on device\n");
    const Outcome closed = Nodal(words + " >&-");
    EXPECT_EQ(closed.status, 1) << words;
    EXPECT_EQ(closed.err, "nodal: standard output: Bad file descriptor\n");
  }
}

TEST(CommandLine, AReaderThatWentAway) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ASSERT_EQ(dup2(ends[1], 9), 9);
  close(ends[0]);
  close(ends[1]);
  const Outcome outcome = Nodal("dump " + kSample + " >&9");
  close(9);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "nodal: standard output: Broken pipe\n");
}

// If descriptor 1 were free, the snapshot file would get it and receive the output.
TEST(CommandLine, ClosedDescriptorsAreNotMistakenForFiles) {
  const Scratch scratch;
  const std::string source = scratch.Write("host.json", HostOf(""));
  EXPECT_EQ(Nodal("build " + source + " -o " + scratch.Path("open")).status, 0);
  EXPECT_EQ(Nodal("build " + source + " -o " + scratch.Path("closed") + " <&- 2>&-").status, 0);
  EXPECT_EQ(Contents(scratch.Path("open")), Contents(scratch.Path("closed")));
  EXPECT_EQ(Nodal("build - -o " + scratch.Path("none") + " <&-").err, "nodal: -: Bad file descriptor\n");
}

TEST(CommandLine, SnapshotsThatCannotBeOpened) {
  const Scratch scratch;
  const std::string missing = scratch.Path("missing");
  const std::string other = scratch.Write("other", std::string(5000, 'x'));
  for (const std::string words : {"dump ", "verify ", "ls --cache ", "get /system/heaps --cache "}) {
    const Outcome none = Nodal(words + missing);
    EXPECT_EQ(none.status, 1);
    EXPECT_EQ(none.err, "nodal: " + missing + ": No such file or directory\n");
    EXPECT_EQ(Nodal(words + other).err, "nodal: " + other + ": Not a system-information snapshot\n");
  }
}

TEST(CommandLine, TruncatedSnapshots) {
  const Scratch scratch;
  const std::string bytes = Contents(SAMPLE_SNAPSHOT);
  const std::string expected = " (expected " + std::to_string(bytes.size()) + ")\n";
  for (const size_t size : {size_t{4096}, bytes.size() - 1}) {
    const std::string cut = scratch.Write("cut", bytes.substr(0, size));
    for (const std::string words : {"dump ", "verify ", "ls --cache "})
      EXPECT_EQ(Nodal(words + cut).err, "nodal: " + cut + ": truncated at byte " + std::to_string(size) + expected);
  }
  const std::string longer = scratch.Write("longer", bytes + "x");
  EXPECT_EQ(Nodal("dump " + longer).err, "nodal: " + longer + ": Snapshot is damaged\n");
}

TEST(CommandLine, UnknownWordsAreNamed) {
  EXPECT_EQ(Nodal("").err, "nodal: no command given (see nodal --help)\n");
  EXPECT_EQ(Nodal("frob").err, "nodal: unknown command 'frob' (see nodal --help)\n");
  EXPECT_EQ(Nodal("--frob").err, "nodal: unknown option '--frob' (see nodal --help)\n");
  EXPECT_TRUE(Nodal("ls --frob").err.ends_with(" (see nodal ls --help)\n"));
}

}  // namespace
