#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <utility>

#include "platkit/draft.h"
#include "tests/platkit/snapshot/scratch.h"
#include "tests/platkit/snapshot/small_host.h"

namespace platkit::snapshot {
namespace {

class Write : public testing::Test {
 protected:
  // Runs `check` in a child process, whose limits and user end with it.
  static bool HoldsElsewhere(const std::function<bool()> &check) {
    const pid_t child = fork();
    if (child == 0) _exit(check() ? 0 : 1);
    int exitStatus = -1;
    return waitpid(child, &exitStatus, 0) == child && exitStatus == 0;
  }

  Scratch scratch_;
};

TEST(WriteStatus, TellsWhyAWriteFailed) {
  const std::pair<int, HVC_ReturnStatus> statuses[] = {
      {ENOENT, HVC_NOT_FOUND},    {ENOTDIR, HVC_NOT_FOUND},   {EACCES, HVC_NO_PERMISSION},
      {EPERM, HVC_NO_PERMISSION}, {EROFS, HVC_NO_PERMISSION}, {ENAMETOOLONG, HVC_NAME_TOO_LONG},
      {ENOMEM, HVC_NO_MEMORY},    {ENOSPC, HVC_WRITE_ERROR},  {EFBIG, HVC_WRITE_ERROR},
      {EIO, HVC_WRITE_ERROR},
  };
  for (const auto &[error, status] : statuses)
    EXPECT_EQ(WriteStatus(error), status) << std::strerror(error);
}

TEST_F(Write, TheSameContentGivesTheSameBytes) {
  SnapshotWriter forth, back;
  ASSERT_EQ(forth.AddHeader(SmallHeader()), HVC_OK);
  for (const char *key : {"/a", "/b", "/c/d", "/c"})
    ASSERT_EQ(forth.AddTexts(key, std::vector<std::string>{key}), HVC_OK);
  for (const char *key : {"/c", "/c/d", "/b", "/a"})
    ASSERT_EQ(back.AddTexts(key, std::vector<std::string>{key}), HVC_OK);
  ASSERT_EQ(back.AddHeader(SmallHeader()), HVC_OK);
  ASSERT_EQ(forth.Write(scratch_.Path("forth")), HVC_OK);
  ASSERT_EQ(back.Write(scratch_.Path("back")), HVC_OK);
  EXPECT_EQ(Contents(scratch_.Path("forth")), Contents(scratch_.Path("back")));
}

TEST_F(Write, EntriesStandInTheOrderOfTheirKeys) {
  WriteSmallHost(scratch_.Path("small"));
  SnapshotFile file;
  ASSERT_EQ(file.Open(scratch_.Path("small").c_str()), HVC_OK);
  SnapshotFile::Cursor cursor(file);
  std::vector<std::string> keys;
  while (cursor.Next() == HVC_OK)
    keys.emplace_back(cursor.key());
  EXPECT_EQ(keys, (std::vector<std::string>{"/sched/globalStats/numVMs", "/sched/groups/0/groupName",
                                            "/sched/groups/0/members/groups", "/system/heaps", "build", "host",
                                            "signature", "time"}));
}

TEST_F(Write, AnOlderFileIsReplaced) {
  const std::string path = scratch_.Write("target", "something older");
  WriteSmallHost(path);
  std::unique_ptr<Source> source;
  EXPECT_EQ(OpenSnapshot(path.c_str(), source), HVC_OK);
  EXPECT_EQ(scratch_.Names(), std::vector<std::string>{"target"});
}

TEST_F(Write, ALinkStaysOne) {
  const std::string path = scratch_.Write("target", "something older");
  ASSERT_EQ(symlink("target", scratch_.Path("link").c_str()), 0);
  WriteSmallHost(scratch_.Path("link"));
  EXPECT_TRUE(std::filesystem::is_symlink(scratch_.Path("link")));
  std::unique_ptr<Source> source;
  EXPECT_EQ(OpenSnapshot(path.c_str(), source), HVC_OK);
}

TEST_F(Write, TheModeIsTheUsers) {
  const mode_t before = umask(027);
  WriteSmallHost(scratch_.Path("file"));
  umask(before);
  struct stat info;
  ASSERT_EQ(stat(scratch_.Path("file").c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0640u);
}

TEST_F(Write, OnlyOverARegularFile) {
  SnapshotWriter writer;
  AddSmallHost(writer);
  EXPECT_EQ(writer.Write("/dev/null"), HVC_ALREADY_EXISTS);
  EXPECT_EQ(writer.Write(scratch_.folder()), HVC_ALREADY_EXISTS);
  EXPECT_TRUE(scratch_.Names().empty());
}

TEST_F(Write, AKeyOnlyOnce) {
  SnapshotWriter writer;
  AddSmallHost(writer);
  ASSERT_EQ(writer.AddTexts("/system/heaps", {}), HVC_OK);
  EXPECT_EQ(writer.Write(scratch_.Path("file")), HVC_ALREADY_EXISTS);
  EXPECT_TRUE(scratch_.Names().empty());
}

TEST_F(Write, NoSuchFolder) {
  SnapshotWriter writer;
  AddSmallHost(writer);
  EXPECT_EQ(writer.Write(scratch_.Path("missing/file")), HVC_NOT_FOUND);
  EXPECT_EQ(writer.Write(scratch_.Write("file", "x") + "/below"), HVC_NOT_FOUND);
  EXPECT_EQ(writer.Write(scratch_.Path(std::string(300, 'x'))), HVC_NAME_TOO_LONG);
}

TEST_F(Write, AFolderThatIsNotTheUsers) {
  EXPECT_TRUE(HoldsElsewhere([this] {
    SnapshotWriter writer;
    AddSmallHost(writer);
    if (chmod(scratch_.folder().c_str(), 0555) != 0) return false;
    if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) return false;
    return writer.Write(scratch_.Path("file")) == HVC_NO_PERMISSION;
  }));
  EXPECT_TRUE(scratch_.Names().empty());
  chmod(scratch_.folder().c_str(), 0755);
}

// A limit on file sizes simulates a full disk. Wherever the file ends, no new file remains, and an old one is
// unchanged.
TEST_F(Write, NoRoom) {
  const std::string path = scratch_.Write("file", "older");
  WriteSmallHost(scratch_.Path("whole"));
  const size_t size = Contents(scratch_.Path("whole")).size();
  std::filesystem::remove(scratch_.Path("whole"));
  for (const size_t room : {size_t{0}, size_t{1000}, size_t{2048}, size_t{2100}, size - 1}) {
    EXPECT_TRUE(HoldsElsewhere([&] {
      signal(SIGXFSZ, SIG_IGN);
      const rlimit limit = {.rlim_cur = room, .rlim_max = room};
      SnapshotWriter writer;
      AddSmallHost(writer);
      return setrlimit(RLIMIT_FSIZE, &limit) == 0 && writer.Write(path) == HVC_WRITE_ERROR;
    })) << room;
    EXPECT_EQ(scratch_.Names(), std::vector<std::string>{"file"});
    EXPECT_EQ(Contents(path), "older");
  }
}

// The same limit kills a process that does not ignore the signal, which simulates a crash during the write.
TEST_F(Write, ACrash) {
  const int unnamed = open(scratch_.folder().c_str(), O_RDWR | O_TMPFILE, 0600);
  if (unnamed < 0) GTEST_SKIP() << "the file system has no files without names";
  close(unnamed);
  const std::string path = scratch_.Write("file", "older");
  const pid_t child = fork();
  if (child == 0) {
    const rlimit files = {.rlim_cur = 2100, .rlim_max = 2100}, cores = {.rlim_cur = 0, .rlim_max = 0};
    SnapshotWriter writer;
    AddSmallHost(writer);
    if (setrlimit(RLIMIT_CORE, &cores) == 0 && setrlimit(RLIMIT_FSIZE, &files) == 0) {
      static_cast<void>(writer.Write(path));
    }
    _exit(0);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGXFSZ) << status;
  EXPECT_EQ(scratch_.Names(), std::vector<std::string>{"file"});
  EXPECT_EQ(Contents(path), "older");
}

TEST_F(Write, Limits) {
  SnapshotWriter writer;
  Header header = SmallHeader();
  header.host = std::string(256, 'x');
  EXPECT_EQ(writer.AddHeader(header), HVC_LIMIT_EXCEEDED);
  header.host = std::string("a\0b", 3);
  EXPECT_EQ(SnapshotWriter().AddHeader(header), HVC_BAD_PARAM);
  EXPECT_EQ(writer.AddTexts("/system/heaps", std::vector<std::string>{std::string("a\0b", 3)}), HVC_BAD_PARAM);
  EXPECT_EQ(writer.AddTexts(std::string(4097, '/'), {}), HVC_LIMIT_EXCEEDED);
  // The size alone is too large; the bytes are not read.
  const std::byte one{};
  EXPECT_EQ(writer.AddRecord("/a", std::span(&one, size_t{UINT32_MAX} - 1000)), HVC_LIMIT_EXCEEDED);
}

}  // namespace
}  // namespace platkit::snapshot
