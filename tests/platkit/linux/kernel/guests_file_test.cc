#include "platkit/linux/kernel/guests_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

constexpr auto kMemory = GuestFigure::kMemory;
constexpr auto kDirtyRate = GuestFigure::kDirtyRate;

GuestsFile Sample() {
  GuestsFile file{.uptime = 100'000, .period = 10'000};
  file.guests.push_back({.pid = 500, .startTicks = 77});
  file.guests.push_back({.pid = 42, .startTicks = 0});
  file.guests[1][kMemory] = Figure(UINT64_MAX - 1);
  file.guests[1][kDirtyRate] = Figure(0);
  return file;
}

// The lines, followed by their checksum.
std::string Signed(const std::string &lines) { return lines + GuestsFileChecksum(lines); }

bool Parses(const std::string &text) {
  GuestsFile file;
  return ParseGuestsFile(text, file);
}

const std::string kHead = "kestrel-guests 1\nuptime-ms 5\nperiod-ms 6\n";

TEST(GuestsFile, TheText) {
  const std::string text = FormatGuestsFile(Sample());
  EXPECT_EQ(text.substr(0, text.rfind("checksum ")), R"(kestrel-guests 1
uptime-ms 100000
period-ms 10000
guest 500 77
guest 42 0
memory-kb 18446744073709551614
dirty-pages-per-second 0
)");
  EXPECT_EQ(text.substr(text.rfind("checksum ")), "checksum 2a10a5ad2cbcf089\n") << "XXH64 of the lines before it";
}

TEST(GuestsFile, IsReadAsWritten) {
  GuestsFile file;
  ASSERT_TRUE(ParseGuestsFile(FormatGuestsFile(Sample()), file));
  EXPECT_EQ(file.uptime, 100'000u);
  EXPECT_EQ(file.period, 10'000u);
  ASSERT_EQ(file.guests.size(), 2u);
  EXPECT_EQ(file.guests[0].pid, 42) << "in the order of their PIDs";
  EXPECT_EQ(file.guests[0][kMemory], Figure(UINT64_MAX - 1));
  EXPECT_EQ(file.guests[0][kDirtyRate], Figure(0));
  EXPECT_EQ(file.guests[0][GuestFigure::kBalloon], kAbsent);
  EXPECT_EQ(file.guests[1].startTicks, 77u);
}

TEST(GuestsFile, EachFigureHasItsOwnKey) {
  for (size_t i = 0; i < kGuestFigures; ++i) {
    GuestsFile file = Sample();
    file.guests[0].figures[i] = Figure(i + 1000);
    GuestsFile read;
    ASSERT_TRUE(ParseGuestsFile(FormatGuestsFile(file), read));
    EXPECT_EQ(read.guests[1].figures, file.guests[0].figures) << KeyOf(static_cast<GuestFigure>(i));
  }
}

TEST(GuestsFile, LaterKeysAreSkipped) {
  GuestsFile file;
  ASSERT_TRUE(ParseGuestsFile(Signed(kHead + "guest 7 8\nlater-key 1\nmemory-kb 9\n"), file));
  ASSERT_EQ(file.guests.size(), 1u);
  EXPECT_EQ(file.guests[0][kMemory], Figure(9));
}

TEST(GuestsFile, MalformedTexts) {
  EXPECT_TRUE(Parses(Signed(kHead)));
  for (const char *body :
       {"", "\n", "kestrel-guests 1\n", "kestrel-guests 2\nuptime-ms 5\nperiod-ms 6\n",
        "kestrel-guests 1\nuptime-ms 5\n", "kestrel-guests 1\nperiod-ms 6\nuptime-ms 5\n",
        "kestrel-guests 1\nuptime-ms x\nperiod-ms 6\n", "kestrel-guests 1\nuptime-ms 5\nperiod-ms 3600001\n"}) {
    EXPECT_FALSE(Parses(Signed(body))) << body;
  }
  for (const char *lines : {"\n", "guest\n", "guest 7\n", "guest 0 1\n", "guest -7 1\n", "guest 7 x\n", "guest 7 1 2\n",
                            "guest 5000000 1\n", "guest 99999999999999999999 1\n", "memory-kb 9\n",
                            "guest 7 8\nmemory-kb\n", "guest 7 8\nmemory-kb -1\n", "guest 7 8\nmemory-kb 1x\n",
                            "guest 7 8\nmemory-kb 18446744073709551616\n", "guest 7 8\nnonsense\n"}) {
    EXPECT_FALSE(Parses(Signed(kHead + lines))) << lines;
  }
}

TEST(GuestsFile, EachChangedByteAndEachTruncationIsDetected) {
  const std::string whole = FormatGuestsFile(Sample());
  ASSERT_TRUE(Parses(whole));
  for (size_t i = 0; i < whole.size(); ++i) {
    std::string changed = whole;
    changed[i] ^= 1;
    EXPECT_FALSE(Parses(changed)) << i;
    EXPECT_FALSE(Parses(whole.substr(0, i))) << i;
  }
  EXPECT_FALSE(Parses(whole + "\n"));
}

// A host on which nodal-guests ran 100 s after boot, and runs every 10 s.
class GuestsOfHost : public testing::Test {
 protected:
  GuestsOfHost() {
    Write(FormatGuestsFile(Sample()));
    kernel_.host().Write("proc/uptime", "100.00 0.00\n");
  }

  void Write(const std::string &text) {
    kernel_.host().Write(kGuestsFile, text);
    SetMode(0644);
  }
  void SetMode(mode_t mode) { EXPECT_EQ(chmod(kernel_.host().Path(kGuestsFile).c_str(), mode), 0); }
  size_t Count() { return ReadGuestsFile(kernel_.files()).size(); }
  size_t CountAt(const std::string &uptime) {
    kernel_.host().Write("proc/uptime", uptime + " 0.00\n");
    return Count();
  }

  KernelFiles kernel_;
};

TEST_F(GuestsOfHost, CountForThreePeriods) {
  EXPECT_EQ(Count(), 2u);
  EXPECT_EQ(CountAt("129.99"), 2u);
  EXPECT_EQ(CountAt("130.00"), 0u);
  EXPECT_EQ(CountAt("99999999.00"), 0u);
  EXPECT_EQ(CountAt("99.99"), 0u) << "from another boot";
  EXPECT_EQ(CountAt("x"), 0u);
}

TEST_F(GuestsOfHost, CountOnlyIfRootWroteThem) {
  SetMode(0664);
  EXPECT_EQ(Count(), 0u);
  SetMode(0646);
  EXPECT_EQ(Count(), 0u);
  SetMode(0644);
  EXPECT_EQ(Count(), 2u);
  kernel_.host().Write("run/elsewhere", FormatGuestsFile(Sample()));
  kernel_.host().Remove(kGuestsFile);
  EXPECT_EQ(Count(), 0u) << "missing";
  kernel_.host().MakeLink(kGuestsFile, "../elsewhere");
  EXPECT_EQ(Count(), 0u) << "a link";
}

TEST_F(GuestsOfHost, CountOnlyInARegularFile) {
  const std::string path = kernel_.host().Path(kGuestsFile);
  kernel_.host().Remove(kGuestsFile);
  ASSERT_EQ(mkfifo(path.c_str(), 0644), 0);
  EXPECT_EQ(Count(), 0u) << "nobody writes to the FIFO, and reading it must not wait";
  kernel_.host().Remove(kGuestsFile);
  kernel_.host().MakeFolder(kGuestsFile);
  EXPECT_EQ(Count(), 0u);
}

TEST_F(GuestsOfHost, CountOnlyInAFileOfRoot) {
  if (geteuid() != 0) GTEST_SKIP() << "requires root";
  const std::string path = kernel_.host().Path(kGuestsFile);
  ASSERT_EQ(chown(path.c_str(), 65534, 0), 0);
  EXPECT_EQ(Count(), 0u);
  ASSERT_EQ(chown(path.c_str(), 0, 65534), 0);
  EXPECT_EQ(Count(), 2u) << "the group may not write to it";
}

// In a folder that others may write to, they can remove the file or put their own in its place, but not change it.
TEST_F(GuestsOfHost, CountByTheirFileAndNotByItsFolder) {
  if (geteuid() != 0) GTEST_SKIP() << "requires root";
  const std::string path = kernel_.host().Path(kGuestsFile);
  const std::string folder = kernel_.host().Path("run/kestrel");
  for (const mode_t mode : {0777u, 01777u, 0775u}) {
    ASSERT_EQ(chmod(folder.c_str(), mode), 0);
    ASSERT_EQ(chown(folder.c_str(), 65534, 65534), 0);
    EXPECT_EQ(Count(), 2u) << mode;
    ASSERT_EQ(rename(path.c_str(), (path + ".old").c_str()), 0);
    kernel_.host().Write(kGuestsFile, FormatGuestsFile(Sample()));
    ASSERT_EQ(chown(path.c_str(), 65534, 65534), 0);
    EXPECT_EQ(Count(), 0u) << mode;
    ASSERT_EQ(unlink(path.c_str()), 0);
    ASSERT_EQ(symlink("guests.nodal.old", path.c_str()), 0);
    EXPECT_EQ(Count(), 0u) << "a link to root's own file";
    ASSERT_EQ(rename((path + ".old").c_str(), path.c_str()), 0);
  }
}

TEST_F(GuestsOfHost, DoNotCountInAFolderThatSomebodyElseHasFilled) {
  if (geteuid() != 0) GTEST_SKIP() << "requires root";
  kernel_.host().Write("run/planted/guests.nodal", FormatGuestsFile(Sample()));
  ASSERT_EQ(chown(kernel_.host().Path("run/planted/guests.nodal").c_str(), 65534, 65534), 0);
  ASSERT_EQ(rename(kernel_.host().Path("run/kestrel").c_str(), kernel_.host().Path("run/aside").c_str()), 0);
  kernel_.host().MakeLink("run/kestrel", "planted");
  EXPECT_EQ(Count(), 0u);
}

TEST_F(GuestsOfHost, ABoundedFile) {
  std::string body = kHead;
  body += "guest 7 8\n";
  while (body.size() < (size_t{5} << 20))
    body += "later-key 1\n";
  Write(Signed(body));
  kernel_.host().Write("proc/uptime", "0.01 0.00\n");
  EXPECT_EQ(Count(), 0u);
}

}  // namespace
}  // namespace platkit
