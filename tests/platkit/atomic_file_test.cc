#include "platkit/atomic_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/platkit/scratch.h"

namespace platkit {
namespace {

class AtomicFileTest : public testing::Test {
 protected:
  // Writes a whole file, as the writer of a snapshot does.
  static HVC_ReturnStatus Write(const std::string &path, std::string_view text, Readers readers = Readers::kOwner) {
    AtomicFile file;
    const HVC_ReturnStatus status = file.Create(path, readers);
    if (status != HVC_OK) return status;
    while (!text.empty()) {
      const ssize_t count = write(file.fd(), text.data(), text.size());
      if (count < 0) return HVC_WRITE_ERROR;
      text.remove_prefix(static_cast<size_t>(count));
    }
    return file.Commit();
  }

  // Runs `check` in a child process, so that its limits and its user do not affect this process. Returns its result.
  static bool IsTrueInAChild(const std::function<bool()> &check) {
    const pid_t child = fork();
    if (child == 0) _exit(check() ? 0 : 1);
    int exitStatus = -1;
    return waitpid(child, &exitStatus, 0) == child && exitStatus == 0;
  }

  Scratch scratch_;
};

TEST_F(AtomicFileTest, ReplacesAnOlderFile) {
  const std::string path = scratch_.Write("target", "older");
  EXPECT_EQ(Write(path, "newer"), HVC_OK);
  EXPECT_EQ(Contents(path), "newer");
  EXPECT_EQ(scratch_.Names(), std::vector<std::string>{"target"});
}

TEST_F(AtomicFileTest, IsRemovedUnlessCommitted) {
  const std::string path = scratch_.Write("target", "older");
  {
    AtomicFile file;
    ASSERT_EQ(file.Create(path, Readers::kOwner), HVC_OK);
    ASSERT_EQ(write(file.fd(), "newer", 5), 5);
    EXPECT_EQ(Contents(path), "older");
  }
  EXPECT_EQ(Contents(path), "older");
  EXPECT_EQ(scratch_.Names(), std::vector<std::string>{"target"});
}

TEST_F(AtomicFileTest, ReplacesALinkInsteadOfItsTarget) {
  const std::string path = scratch_.Write("target", "older");
  for (const char *target : {"target", "missing"}) {
    ASSERT_EQ(symlink(target, scratch_.Path("link").c_str()), 0);
    EXPECT_EQ(Write(scratch_.Path("link"), "newer"), HVC_OK);
    EXPECT_FALSE(std::filesystem::is_symlink(scratch_.Path("link")));
    EXPECT_EQ(Contents(scratch_.Path("link")), "newer");
    EXPECT_EQ(Contents(path), "older");
    EXPECT_EQ(scratch_.Names().size(), 2u);
    ASSERT_EQ(unlink(scratch_.Path("link").c_str()), 0);
  }
}

// If the folder is replaced by a link after Create, the file stays in the original folder.
TEST_F(AtomicFileTest, StaysInTheFolderThatItWasCreatedIn) {
  std::filesystem::create_directories(scratch_.Path("folder"));
  std::filesystem::create_directories(scratch_.Path("other"));
  AtomicFile file;
  ASSERT_EQ(file.Create(scratch_.Path("folder/file"), Readers::kOwner), HVC_OK);
  std::filesystem::rename(scratch_.Path("folder"), scratch_.Path("moved"));
  std::filesystem::create_symlink("other", scratch_.Path("folder"));
  EXPECT_EQ(file.Commit(), HVC_OK);
  EXPECT_TRUE(std::filesystem::exists(scratch_.Path("moved/file")));
  EXPECT_TRUE(std::filesystem::is_empty(scratch_.Path("other")));
}

mode_t ModeOf(const std::string &path) {
  struct stat info = {};
  EXPECT_EQ(stat(path.c_str(), &info), 0) << path;
  return info.st_mode & 07777;
}

TEST_F(AtomicFileTest, ANewFileIsForItsReadersOnly) {
  const mode_t before = umask(022);
  EXPECT_EQ(Write(scratch_.Path("own"), "text"), HVC_OK);
  EXPECT_EQ(Write(scratch_.Path("everyone"), "text", Readers::kEveryone), HVC_OK);
  umask(027);
  EXPECT_EQ(Write(scratch_.Path("group"), "text", Readers::kEveryone), HVC_OK);
  umask(before);
  EXPECT_EQ(ModeOf(scratch_.Path("own")), 0600u);
  EXPECT_EQ(ModeOf(scratch_.Path("everyone")), 0644u);
  EXPECT_EQ(ModeOf(scratch_.Path("group")), 0640u);
}

TEST_F(AtomicFileTest, KeepsTheModeOfAFileThatOnlyTheUserCanHavePutThere) {
  const std::string path = scratch_.Write("file", "older");
  for (const mode_t mode : {0600u, 0640u, 0664u, 0400u}) {
    ASSERT_EQ(chmod(path.c_str(), mode), 0);
    for (const Readers readers : {Readers::kOwner, Readers::kEveryone}) {
      EXPECT_EQ(Write(path, "newer", readers), HVC_OK);
      EXPECT_EQ(ModeOf(path), mode);
    }
  }
}

// Makes every later change of a file's owner fail, as in a service with a system-call filter.
bool RefuseChown() {
  sock_filter filter[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                          BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_fchown, 0, 1),
                          BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
                          BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
  const sock_fprog program = {.len = std::size(filter), .filter = filter};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

TEST_F(AtomicFileTest, KeepsTheRightsOfTheGroupWithoutAChangeOfTheOwner) {
  const std::string path = scratch_.Write("file", "older");
  ASSERT_EQ(chmod(path.c_str(), 0640), 0);
  EXPECT_TRUE(IsTrueInAChild([&] { return RefuseChown() && Write(path, "newer") == HVC_OK; }));
  EXPECT_EQ(Contents(path), "newer");
  EXPECT_EQ(ModeOf(path), 0640u);
}

// Only root can create files of other users.
TEST_F(AtomicFileTest, AFileThatAnotherUserPutThereGivesNobodyMoreRights) {
  if (geteuid() != 0) GTEST_SKIP() << "requires root";
  constexpr uid_t kOther = 65534;
  const std::string path = scratch_.Write("file", "older");
  struct stat info = {};
  const auto write = [&](mode_t folderMode, mode_t mode, Readers readers) {
    EXPECT_EQ(chmod(scratch_.folder().c_str(), folderMode), 0);
    EXPECT_EQ(chown(path.c_str(), kOther, kOther), 0);
    EXPECT_EQ(chmod(path.c_str(), mode), 0);
    EXPECT_EQ(Write(path, "newer", readers), HVC_OK);
    EXPECT_EQ(stat(path.c_str(), &info), 0);
  };
  write(01777, 0666, Readers::kOwner);
  EXPECT_EQ(info.st_uid, 0u);
  EXPECT_EQ(info.st_mode & 07777, 0600u);
  write(01777, 0640, Readers::kEveryone);
  EXPECT_EQ(info.st_uid, 0u);
  EXPECT_EQ(info.st_gid, kOther);
  EXPECT_EQ(info.st_mode & 07777, 0640u);
  // In a folder that only root may write to, only root can have changed the owner of the file.
  write(0755, 0660, Readers::kOwner);
  EXPECT_EQ(info.st_uid, kOther);
  EXPECT_EQ(info.st_gid, kOther);
  EXPECT_EQ(info.st_mode & 07777, 0660u);
}

// Other users who may write to the folder can put any file there by a rename or a hard link, even a file of this user.
TEST_F(AtomicFileTest, AFileThatOthersCanHaveMovedGivesNobodyMoreRights) {
  const std::string path = scratch_.Write("file", "older");
  for (const mode_t folder : {0777u, 0775u, 01777u}) {
    ASSERT_EQ(chmod(scratch_.folder().c_str(), folder), 0);
    ASSERT_EQ(chmod(path.c_str(), 0664), 0);
    EXPECT_EQ(Write(path, "newer", Readers::kEveryone), HVC_OK);
    EXPECT_EQ(ModeOf(path), 0644u) << std::oct << folder;
    EXPECT_EQ(Write(path, "newer", Readers::kOwner), HVC_OK);
    EXPECT_EQ(ModeOf(path), 0600u) << std::oct << folder;
  }
}

TEST_F(AtomicFileTest, AFolderOfAnotherUserGivesNobodyMoreRights) {
  if (geteuid() != 0) GTEST_SKIP() << "requires root";
  const std::string path = scratch_.Write("file", "older");
  ASSERT_EQ(chmod(path.c_str(), 0644), 0);
  ASSERT_EQ(chown(scratch_.folder().c_str(), 65534, 65534), 0);
  EXPECT_EQ(Write(path, "newer", Readers::kOwner), HVC_OK);
  EXPECT_EQ(ModeOf(path), 0600u);
}

// An access control list in the kernel's form: version 2, then the tag, the rights and the number of each user or
// group.
class AccessList {
 public:
  AccessList() { Add(2u); }

  AccessList &Entry(uint16_t tag, uint16_t rights, uint32_t who = UINT32_MAX) {
    Add(tag);
    Add(rights);
    Add(who);
    return *this;
  }
  const std::string &bytes() const { return bytes_; }

  // The list allows user 65534 to read, and denies this to the file's group, although the group bits of the mode allow
  // it.
  static std::string ForOneUser() {
    return AccessList().Entry(1, 6).Entry(2, 4, 65534).Entry(4, 0).Entry(16, 4).Entry(32, 0).bytes();
  }

  static std::string Of(const std::string &path) {
    std::string list(1024, '\0');
    const ssize_t size = getxattr(path.c_str(), kAttribute, list.data(), list.size());
    return list.substr(0, size < 0 ? 0 : static_cast<size_t>(size));
  }
  static bool Set(const std::string &path, const std::string &list, const char *attribute = kAttribute) {
    return setxattr(path.c_str(), attribute, list.data(), list.size(), 0) == 0;
  }

  static constexpr char kAttribute[] = "system.posix_acl_access";
  static constexpr char kOfNewFiles[] = "system.posix_acl_default";

 private:
  template <typename Number>
  void Add(Number value) {
    bytes_.append(reinterpret_cast<const char *>(&value), sizeof value);
  }

  std::string bytes_;
};

TEST_F(AtomicFileTest, KeepsTheAccessControlList) {
  const std::string path = scratch_.Write("file", "older");
  const std::string list = AccessList::ForOneUser();
  if (!AccessList::Set(path, list)) GTEST_SKIP() << "the file system has no access control lists";
  ASSERT_EQ(ModeOf(path), 0640u);
  for (const Readers readers : {Readers::kOwner, Readers::kEveryone}) {
    EXPECT_EQ(Write(path, "newer", readers), HVC_OK);
    EXPECT_EQ(AccessList::Of(path), list);
    EXPECT_EQ(ModeOf(path), 0640u);
  }
}

// In a folder that others can write to, the new file does not get the list. Without the list, the group bits of the
// mode would give the group rights that the list denies.
TEST_F(AtomicFileTest, WhereOthersCanWriteAFileWithAListIsTheUsersOnly) {
  const std::string path = scratch_.Write("file", "older");
  ASSERT_EQ(chmod(scratch_.folder().c_str(), 0777), 0);
  if (!AccessList::Set(path, AccessList::ForOneUser())) GTEST_SKIP() << "the file system has no access control lists";
  EXPECT_EQ(Write(path, "newer", Readers::kEveryone), HVC_OK);
  EXPECT_EQ(AccessList::Of(path), "");
  EXPECT_EQ(ModeOf(path), 0600u);
}

// A default list of the folder must not give the new file more rights than the older file had.
TEST_F(AtomicFileTest, AListOfTheFolderAddsNoRights) {
  const std::string path = scratch_.Write("file", "older");
  ASSERT_EQ(chmod(path.c_str(), 0640), 0);
  if (!AccessList::Set(scratch_.folder(), AccessList::ForOneUser(), AccessList::kOfNewFiles)) {
    GTEST_SKIP() << "the file system has no access control lists";
  }
  EXPECT_EQ(Write(path, "newer"), HVC_OK);
  EXPECT_EQ(AccessList::Of(path), "");
  EXPECT_EQ(ModeOf(path), 0640u);
}

TEST_F(AtomicFileTest, ReplacesRegularFilesOnly) {
  EXPECT_EQ(Write("/dev/null", "text"), HVC_ALREADY_EXISTS);
  EXPECT_EQ(Write(scratch_.folder(), "text"), HVC_ALREADY_EXISTS);
  EXPECT_EQ(Write(scratch_.folder() + "/", "text"), HVC_ALREADY_EXISTS);
  EXPECT_EQ(Write(scratch_.folder() + "/..", "text"), HVC_ALREADY_EXISTS);
  for (const char *target : {"/dev/null", "/proc/self/fd/1", "."}) {
    ASSERT_EQ(symlink(target, scratch_.Path("link").c_str()), 0);
    EXPECT_EQ(Write(scratch_.Path("link"), "text"), HVC_ALREADY_EXISTS) << target;
    ASSERT_EQ(unlink(scratch_.Path("link").c_str()), 0);
  }
  EXPECT_TRUE(scratch_.Names().empty());
}

TEST_F(AtomicFileTest, NamesThatCannotBe) {
  EXPECT_EQ(Write(scratch_.Path("missing/file"), "text"), HVC_NOT_FOUND);
  EXPECT_EQ(Write(scratch_.Write("file", "x") + "/below", "text"), HVC_NOT_FOUND);
  EXPECT_EQ(Write("", "text"), HVC_NOT_FOUND);
  EXPECT_EQ(Write(scratch_.Path(std::string(300, 'x')), "text"), HVC_NAME_TOO_LONG);
  EXPECT_EQ(Write(scratch_.Path(std::string(255, 'x')), "text"), HVC_OK);
}

TEST_F(AtomicFileTest, AFolderOfAnotherUser) {
  EXPECT_TRUE(IsTrueInAChild([this] {
    if (chmod(scratch_.folder().c_str(), 0555) != 0) return false;
    if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) return false;
    return Write(scratch_.Path("file"), "text") == HVC_NO_PERMISSION;
  }));
  EXPECT_TRUE(scratch_.Names().empty());
  chmod(scratch_.folder().c_str(), 0755);
}

// A limit on file sizes simulates a full disk.
TEST_F(AtomicFileTest, AFullDiskLeavesTheOlderFile) {
  const std::string path = scratch_.Write("file", "older");
  const std::string text(5000, 'x');
  for (const size_t room : {size_t{0}, size_t{1000}, text.size() - 1}) {
    EXPECT_TRUE(IsTrueInAChild([&] {
      signal(SIGXFSZ, SIG_IGN);
      const rlimit limit = {.rlim_cur = room, .rlim_max = room};
      return setrlimit(RLIMIT_FSIZE, &limit) == 0 && Write(path, text) == HVC_WRITE_ERROR;
    })) << room;
    EXPECT_EQ(scratch_.Names(), std::vector<std::string>{"file"});
    EXPECT_EQ(Contents(path), "older");
  }
}

// Without a handler, the same limit kills the process during a write.
TEST_F(AtomicFileTest, ACrashLeavesTheOlderFile) {
  const int unnamed = open(scratch_.folder().c_str(), O_RDWR | O_TMPFILE, 0600);
  if (unnamed < 0) GTEST_SKIP() << "the file system has no files without names";
  close(unnamed);
  const std::string path = scratch_.Write("file", "older");
  const pid_t child = fork();
  if (child == 0) {
    const rlimit files = {.rlim_cur = 100, .rlim_max = 100}, cores = {.rlim_cur = 0, .rlim_max = 0};
    if (setrlimit(RLIMIT_CORE, &cores) == 0 && setrlimit(RLIMIT_FSIZE, &files) == 0) {
      static_cast<void>(Write(path, std::string(5000, 'x')));
    }
    _exit(0);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGXFSZ) << status;
  EXPECT_EQ(scratch_.Names(), std::vector<std::string>{"file"});
  EXPECT_EQ(Contents(path), "older");
}

}  // namespace
}  // namespace platkit
