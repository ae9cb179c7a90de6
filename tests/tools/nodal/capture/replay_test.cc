// kestrel prints the same reports for a host and for its capture.
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "tests/linux/saved_host.h"
#include "tests/support/report_names.h"
#include "tests/support/text.h"
#include "tests/tools/nodal/history/recorded.h"
#include "tests/tools/nodal/program.h"

namespace {

using platkit::SavedHost;

struct Programs {
  std::string kestrel;
  std::string nodal;
  std::string rootFolder;  // the library that makes kestrel read a root folder
};

// Copies that every user can run: the clone may be below a folder that only its owner can enter. The layout is that of
// the build, so that kestrel finds the library.
class PublicPrograms {
 public:
  PublicPrograms() {
    const std::filesystem::path top = Open(scratch_.path());
    const std::filesystem::path bin = Open(top / "bin"), lib = Open(top / "lib");
    Copy(PLATKIT_LIBRARY, lib);
    programs_ = {Copy(KESTREL_PROGRAM, bin), Copy(NODAL_PROGRAM, bin), Copy(ROOT_FOLDER_LIBRARY, lib)};
  }

  const Programs &programs() const { return programs_; }

 private:
  static constexpr auto kMode = static_cast<std::filesystem::perms>(0755);

  static std::filesystem::path Open(const std::filesystem::path &folder) {
    std::filesystem::create_directory(folder);
    std::filesystem::permissions(folder, kMode);
    return folder;
  }

  static std::string Copy(const std::filesystem::path &file, const std::filesystem::path &folder) {
    const std::filesystem::path copy = folder / file.filename();
    std::filesystem::copy_file(file, copy);
    std::filesystem::permissions(copy, kMode);
    return copy;
  }

  const testing_support::ScratchDirectory scratch_;
  Programs programs_;
};

class Replay : public testing::TestWithParam<std::string> {
 protected:
  // Runs programs as the user nobody from now on.
  void BecomeNobody() {
    static const PublicPrograms copies;
    programs_ = copies.programs();
    asNobody_ = true;
  }

  // Runs a program as this user or as nobody.
  testing_support::Outcome RunIt(const std::string &program, std::vector<std::string> words, bool overRoot = false) {
    testing_support::Command command = {.program = program, .arguments = std::move(words)};
    if (asNobody_) {
      command.arguments.insert(command.arguments.begin(),
                               {"--reuid=65534", "--regid=65534", "--clear-groups", program});
      command.program = "/usr/bin/setpriv";
    }
    if (overRoot) testing_support::Preload(command, programs_.rootFolder);
    testing_support::Outcome outcome = testing_support::Run(command);
    outcome.output = testing_support::MaskTimes(outcome.output);
    return outcome;
  }

  void ExpectEqualReports(const SavedHost &host) {
    const Scratch scratch;
    std::filesystem::permissions(scratch.folder(), std::filesystem::perms::all);
    const std::string root = host.Path("");
    const std::string snapshot = scratch.Path("host.nodal");
    const auto captured = RunIt(programs_.nodal, {"--root", root, "capture", "-o", snapshot});
    ASSERT_EQ(captured.exitStatus, 0) << captured;
    const Outcome verified = Nodal("verify " + snapshot);
    EXPECT_EQ(verified.status, 0) << verified.out;
    for (const std::string &report : testing_support::SavedHostReportNames(programs_.kestrel)) {
      for (const std::vector<std::string> &more : {std::vector<std::string>{}, {"-q", "-v"}}) {
        SCOPED_TRACE(report);
        const auto live = RunIt(programs_.kestrel, Words(root, report, more), true);
        const auto replayed = RunIt(programs_.kestrel, Words(snapshot, report, more));
        EXPECT_EQ(live.output, replayed.output);
        EXPECT_EQ(live.errors, replayed.errors);
        EXPECT_EQ(live.exitStatus, replayed.exitStatus);
      }
    }
    if (!asNobody_) ExpectEqualReportsOfHistory(snapshot);
  }

  // Compares the reports of the snapshot with the reports of a history that contains the snapshot as a sample. The
  // history stores this sample as the difference from the previous one.
  void ExpectEqualReportsOfHistory(const std::string &snapshot) {
    nodal::Recorded history;
    history.AddGroups(0, 10);
    history.Add(nodal::SampleOf(snapshot), 10);
    for (const std::string &report : testing_support::SavedHostReportNames(programs_.kestrel)) {
      SCOPED_TRACE(report);
      const auto captured = RunIt(programs_.kestrel, Words(snapshot, report, {}));
      const auto replayed = RunIt(programs_.kestrel, Words(history.path() + "@-0s", report, {}));
      EXPECT_EQ(captured.output, replayed.output);
      EXPECT_EQ(captured.errors, replayed.errors);
      EXPECT_EQ(captured.exitStatus, replayed.exitStatus);
    }
  }

  Programs programs_ = {KESTREL_PROGRAM, NODAL_PROGRAM, ROOT_FOLDER_LIBRARY};

 private:
  static std::vector<std::string> Words(const std::string &cache, const std::string &report,
                                        const std::vector<std::string> &more) {
    std::vector<std::string> words = {"-c", cache, "-r", report};
    words.insert(words.end(), more.begin(), more.end());
    return words;
  }

  bool asNobody_ = false;
};

TEST_P(Replay, OfASavedHost) {
  const SavedHost host(GetParam());
  ExpectEqualReports(host);
}

// A folder at the path of a file makes the file unreadable, on the host and in its capture.
TEST_P(Replay, OfAHostWithFilesThatCannotBeRead) {
  SavedHost host(GetParam());
  for (const char *file : {"proc/slabinfo", "proc/buddyinfo", "proc/meminfo", "proc/zoneinfo", "proc/vmstat",
                           "proc/300/status", "sys/kernel/mm/ksm/pages_shared"}) {
    host.Remove(file);
    host.MakeFolder(file);
  }
  ExpectEqualReports(host);
}

TEST_P(Replay, OfAHostWithFilesThatAreNotForTheUser) {
  SavedHost host(GetParam());
  if (geteuid() == 0) BecomeNobody();
  const auto tried = RunIt(programs_.nodal, {"--version"});
  if (tried.exitStatus != 0) GTEST_SKIP() << "an ordinary user cannot run the programs here: " << tried;
  for (const char *file : {"proc/slabinfo", "proc/iomem", "proc/meminfo"}) {
    host.Write(file, "");
    host.Forbid(file);
  }
  for (const auto &entry : std::filesystem::recursive_directory_iterator(host.Path("proc"))) {
    const std::string name = entry.path().filename();
    if (name != "ksm_merging_pages" && name != "maps" && name != "cmdline") continue;
    host.Forbid(std::filesystem::relative(entry.path(), host.Path("")));
  }
  ExpectEqualReports(host);
}

std::vector<std::string> Archives() {
  std::vector<std::string> archives;
  for (const auto &entry : std::filesystem::directory_iterator(SAVED_HOSTS))
    archives.push_back(entry.path().filename());
  std::ranges::sort(archives);
  return archives;
}

std::string NameOf(const testing::TestParamInfo<std::string> &info) {
  std::string name;
  for (const char c : info.param)
    name += std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
  return name;
}

INSTANTIATE_TEST_SUITE_P(Hosts, Replay, testing::ValuesIn(Archives()), NameOf);

}  // namespace
