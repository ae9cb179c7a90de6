// nodal-guests as a program. Its guests are those of libvirt's test driver, which needs no daemon. The driver describes
// its only guest, but reports no statistics.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "platkit/linux/kernel/guests_file.h"
#include "tests/platkit/scratch.h"
#include "tests/support/process.h"
#include "tests/tools/guests/fake_qmp.h"

namespace guests {
namespace {

using testing_support::FakeQmp;
using testing_support::Outcome;
using testing_support::QmpResults;

using Words = std::vector<std::string>;

Outcome Execute(const Words &words, const std::string &program = NODAL_GUESTS_PROGRAM) {
  return testing_support::Run({.program = program, .arguments = words});
}

const Words kTestDriver = {"--connect", "test:///default"};

Words With(Words words, const Words &others) {
  words.insert(words.end(), others.begin(), others.end());
  return words;
}

class Program : public testing::Test {
 protected:
  std::string Path(const std::string &name) const { return scratch_.Path(name); }

  platkit::GuestsFile Written(const Words &words) {
    const Outcome outcome = Execute(With(words, {"-o", Path("guests.nodal")}));
    EXPECT_EQ(outcome.exitStatus, 0) << outcome;
    EXPECT_EQ(outcome.output, "");
    platkit::GuestsFile file;
    EXPECT_TRUE(platkit::ParseGuestsFile(Contents(Path("guests.nodal")), file));
    return file;
  }

  Scratch scratch_;
};

TEST_F(Program, AsksLibvirt) {
  const Outcome outcome = Execute(With(kTestDriver, {"--json"}));
  EXPECT_EQ(outcome.exitStatus, 0) << outcome;
  const nlohmann::json guests = nlohmann::json::parse(outcome.output);
  ASSERT_EQ(guests.size(), 1u);
  EXPECT_EQ(guests[0]["name"], "test");
  EXPECT_EQ(guests[0]["monitor"], "libvirt");
  EXPECT_EQ(guests[0]["id"], "6695eb01-f6a4-8304-79aa-97f2502e193f");
  EXPECT_EQ(guests[0]["pid"], 0) << "nobody knows it";
  EXPECT_EQ(guests[0]["memory-kb"], 8388608);
  EXPECT_EQ(guests[0]["balloon-kb"], 8388608 - 2097152);
}

TEST_F(Program, PrintsATable) {
  const Outcome outcome = Execute(kTestDriver);
  EXPECT_EQ(outcome.exitStatus, 0) << outcome;
  EXPECT_TRUE(outcome.output.starts_with("NAME  PID   MEMORY")) << outcome;
  EXPECT_NE(outcome.output.find("\ntest    -  8388608"), std::string::npos) << outcome;
}

// A terminal may obey control characters, including C1, and some other characters reorder text.
TEST_F(Program, EscapesNamesInJson) {
  auto results = QmpResults();
  results["query-name"] = R"({"name": "\u001b[2J\u009b2J\u202ex"})";
  const FakeQmp server(Path("qmp"), results);
  const Outcome outcome = Execute({"--no-libvirt", "--qmp", Path("qmp"), "--json"});
  EXPECT_EQ(outcome.exitStatus, 0) << outcome;
  EXPECT_NE(outcome.output.find(R"("name": "\u001b[2J\u009b2J\u202ex")"), std::string::npos) << outcome;
}

TEST_F(Program, ReportsWhenLibvirtCannotBeAsked) {
  const Outcome outcome = Execute({"--connect", "test:///nowhere.xml", "-o", Path("guests.nodal")});
  EXPECT_EQ(outcome.exitStatus, 1) << outcome;
  EXPECT_NE(outcome.errors.find("nodal-guests: test:///nowhere.xml: "), std::string::npos) << outcome;
  EXPECT_FALSE(std::filesystem::exists(Path("guests.nodal")));
}

TEST_F(Program, WritesTheFile) {
  const FakeQmp server(Path("qmp"), QmpResults());
  const platkit::GuestsFile file = Written({"--no-libvirt", "--qmp", Path("qmp"), "--period", "7"});
  EXPECT_EQ(file.period, 7000u);
  EXPECT_GT(file.uptime, 0u);
  ASSERT_EQ(file.guests.size(), 1u);
  EXPECT_EQ(file.guests[0].pid, getpid());
  EXPECT_EQ(file.guests[0][platkit::GuestFigure::kBalloon], platkit::Figure(131072));
}

// Without a PID, a figure belongs to no process.
TEST_F(Program, OmitsGuestsOfUnknownProcesses) { EXPECT_EQ(Written(kTestDriver).guests.size(), 0u); }

TEST_F(Program, EveryoneMayReadTheFileAndOnlyItsOwnerWriteIt) {
  umask(022);
  Written(kTestDriver);
  struct stat info = {};
  ASSERT_EQ(stat(Path("guests.nodal").c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 07777, 0644u);
}

TEST_F(Program, ReplacesAPlantedLink) {
  const std::string victim = scratch_.Write("victim", "precious");
  std::filesystem::create_symlink(victim, Path("guests.nodal"));
  Written(kTestDriver);
  EXPECT_EQ(Contents(victim), "precious");
}

TEST_F(Program, OneSourceThatFailsDoesNotMatter) {
  const FakeQmp server(Path("qmp"), QmpResults());
  const Outcome outcome = Execute({"--no-libvirt", "--qmp", Path("qmp"), "--qmp", Path("nowhere")});
  EXPECT_EQ(outcome.exitStatus, 0) << outcome;
  EXPECT_EQ(outcome.errors, "nodal-guests: " + Path("nowhere") + ": No such file or directory\n");
  EXPECT_NE(outcome.output.find("\nweb"), std::string::npos) << outcome;
}

TEST_F(Program, RefusesOtherHosts) {
  for (const char *uri : {"qemu+ssh://other/system", "qemu://other/system", "qemu+tcp:///system", "", "test:/x"}) {
    const Outcome outcome = Execute({"--connect", uri});
    EXPECT_EQ(outcome.exitStatus, 2) << uri << outcome;
    EXPECT_NE(outcome.errors.find("not a hypervisor of this host"), std::string::npos) << outcome;
  }
}

TEST_F(Program, RefusesInvalidOptions) {
  for (const Words &words :
       {Words{"--deadline", "0"}, Words{"--deadline", "61"}, Words{"--deadline", "x"}, Words{"--period", "0"},
        Words{"--period", "3601"}, Words{"--no-libvirt"}, Words{"-o", ""}, Words{"--json", "-o", "x"}, Words{"--bad"},
        Words{"extra"}, Words{"--no-libvirt", "--connect", "test:///default", "--qmp", "x"}}) {
    const Outcome outcome = Execute(words);
    EXPECT_EQ(outcome.exitStatus, 2) << words[0] << outcome;
    EXPECT_NE(outcome.errors.find("(see nodal-guests --help)"), std::string::npos) << outcome;
  }
}

TEST_F(Program, AFullDiskIsAFailure) {
  const Outcome outcome = testing_support::Run(
      {.program = NODAL_GUESTS_PROGRAM, .arguments = kTestDriver, .output = testing_support::OutputTo::kFullDevice});
  EXPECT_EQ(outcome.exitStatus, 1);
  EXPECT_TRUE(outcome.errors.ends_with("nodal-guests: standard output: No space left on device\n")) << outcome;
}

TEST_F(Program, IsRunByNodal) {
  const Outcome direct = Execute(With(kTestDriver, {"--json"}));
  const Outcome outcome = Execute(With({"guests"}, With(kTestDriver, {"--json"})), NODAL_PROGRAM);
  EXPECT_EQ(outcome.exitStatus, 0) << outcome;
  EXPECT_EQ(outcome.output, direct.output);
  EXPECT_EQ(Execute({"guests", "--bad"}, NODAL_PROGRAM).errors, Execute({"--bad"}).errors) << "options of nodal-guests";
  EXPECT_EQ(Execute({"guests", "--cache", "x"}, NODAL_PROGRAM).errors, Execute({"--cache", "x"}).errors)
      << "not of nodal";
}

}  // namespace
}  // namespace guests
