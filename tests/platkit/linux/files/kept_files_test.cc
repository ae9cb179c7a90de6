// Files that stay open between samples. The tests read the real /proc and control groups, because only they show that a
// process or a group has ended.
#include "platkit/linux/files/kept_files.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "platkit/linux/files/folder_reader.h"
#include "platkit/linux/files/line_reader.h"
#include "platkit/linux/files/sample_clock.h"
#include "platkit/linux/groups/group_tree.h"
#include "platkit/linux/groups/process_identity.h"
#include "platkit/linux/kernel/process_limits.h"
#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

namespace fs = std::filesystem;

size_t OpenDescriptors() {
  return static_cast<size_t>(std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

class KeptFilesOf : public testing::Test {
 protected:
  explicit KeptFilesOf(const std::string &root = "/") : files_(root, Reach::kHost) { files_.UseClock(clock_.clock()); }

  std::string Read(const std::string &path) {
    char buffer[64];
    std::string_view text;
    status_ = files_.Read(HostPath(std::string_view(path)), buffer, text);
    return status_ == HVC_OK ? std::string(text) : "";
  }

  SampleClock clock_;
  HostFiles files_;
  HVC_ReturnStatus status_ = HVC_OK;
};

// A base class, so that the folder exists before the HostFiles that read it.
struct PlainFolder {
  SavedHost host_;
};

class KeptPlainFiles : public PlainFolder, public KeptFilesOf {
 protected:
  KeptPlainFiles() : KeptFilesOf(host_.Path("")) {}
};

TEST_F(KeptPlainFiles, AreReadAgainWithoutBeingOpened) {
  host_.Write("a/file", "one");
  files_.KeepOpen(10);
  EXPECT_EQ(Read("a/file"), "one");
  const size_t open = OpenDescriptors();
  ASSERT_EQ(chmod(host_.Path("a").c_str(), 0700), 0);
  fs::rename(host_.Path("a"), host_.Path("b"));
  std::ofstream(host_.Path("b/file")) << "two";
  clock_.BeginSample();
  EXPECT_EQ(Read("a/file"), "two") << "the path is not looked up again";
  EXPECT_EQ(OpenDescriptors(), open);
}

TEST_F(KeptPlainFiles, WithoutKeepingEveryReadOpens) {
  host_.Write("a/file", "one");
  EXPECT_EQ(Read("a/file"), "one");
  fs::rename(host_.Path("a"), host_.Path("b"));
  EXPECT_EQ(Read("a/file"), "");
  EXPECT_EQ(status_, HVC_NOT_FOUND);
}

TEST_F(KeptPlainFiles, AreReadFromTheirStartToTheirEnd) {
  std::string text;
  for (int i = 0; i < 3000; ++i)
    text += "line " + std::to_string(i) + "\n";
  host_.Write("a/file", text);
  files_.KeepOpen(10);
  for (int sample = 0; sample < 3; ++sample) {
    clock_.BeginSample();
    LineReader lines(files_, HostPath("a/file"));
    std::string all;
    for (std::string_view line; lines.Next(line);)
      all.append(line) += '\n';
    EXPECT_EQ(all, text);
    EXPECT_EQ(lines.status(), HVC_OK);
    EXPECT_NE(lines.inode(), 0u);
  }
}

TEST_F(KeptPlainFiles, TheNumberOfOpenFilesIsBounded) {
  for (int i = 0; i < 20; ++i) {
    for (const char *name : {"/x", "/y", "/z"})
      host_.Write("folder-" + std::to_string(i) + name, name + std::to_string(i));
  }
  const size_t open = OpenDescriptors();
  files_.KeepOpen(10);
  for (int sample = 0; sample < 3; ++sample) {
    clock_.BeginSample();
    for (int i = 0; i < 20; ++i) {
      for (const char *name : {"/x", "/y", "/z"})
        EXPECT_EQ(Read("folder-" + std::to_string(i) + name), name + std::to_string(i));
    }
    EXPECT_LE(OpenDescriptors(), open + 10 + 2) << "and the root folder, and this listing";
  }
}

TEST_F(KeptPlainFiles, WhatASampleDidNotUseIsClosed) {
  host_.Write("a/file", "a");
  host_.Write("b/file", "b");
  files_.KeepOpen(10);
  Read("b/file");
  const size_t open = OpenDescriptors();
  Read("a/file");
  EXPECT_EQ(OpenDescriptors(), open + 2);
  clock_.BeginSample();
  Read("b/file");
  EXPECT_EQ(OpenDescriptors(), open + 2) << "the sample before this one used it";
  clock_.BeginSample();
  Read("b/file");
  EXPECT_EQ(OpenDescriptors(), open);
}

TEST_F(KeptPlainFiles, FoldersAreListedAgain) {
  host_.Write("a/file", "one");
  files_.KeepOpen(10);
  for (int sample = 0; sample < 3; ++sample) {
    clock_.BeginSample();
    Read("a/file");
    fs::create_directory(host_.Path("a/" + std::to_string(sample)));
    FolderReader folder(files_, HostPath("a"));
    EXPECT_FALSE(folder.HasNoFolders());
    int entries = 0;
    for (FolderReader::Entry entry; folder.Next(entry);)
      ++entries;
    EXPECT_EQ(entries, sample + 2);
  }
}

TEST_F(KeptPlainFiles, AForgottenFolderIsOpenedByItsPath) {
  host_.Write("a/file", "old");
  files_.KeepOpen(10);
  EXPECT_EQ(Read("a/file"), "old");
  fs::rename(host_.Path("a"), host_.Path("b"));
  host_.Write("a/file", "new");
  EXPECT_EQ(Read("a/file"), "old");
  files_.Forget("a");
  EXPECT_EQ(Read("a/file"), "new");
}

TEST_F(KeptPlainFiles, MissingFilesAndFolders) {
  host_.Write("a/file", "text");
  files_.KeepOpen(10);
  for (int sample = 0; sample < 2; ++sample) {
    clock_.BeginSample();
    for (const char *path : {"a/missing", "missing/file", "a/file/below"}) {
      EXPECT_EQ(Read(path), "");
      EXPECT_EQ(status_, HVC_NOT_FOUND) << path;
    }
    EXPECT_EQ(Read("a/file"), "text");
  }
}

TEST(KeptFilesOfASavedRoot, AreNotKept) {
  SavedHost host;
  host.Write("a/file", "old");
  HostFiles files(host.Path(""), Reach::kRootFolder);
  files.KeepOpen(10);
  EXPECT_FALSE(files.isSampled());
  char buffer[8];
  std::string_view text;
  ASSERT_EQ(files.Read(HostPath("a/file"), buffer, text), HVC_OK);
  host.Remove("a/file");
  EXPECT_EQ(files.Read(HostPath("a/file"), buffer, text), HVC_NOT_FOUND);
}

// A process that waits until it is killed.
class Child {
 public:
  Child() : pid_(fork()) {
    if (pid_ == 0) {
      for (;;)
        pause();
    }
  }
  ~Child() { End(); }
  Child(const Child &) = delete;
  Child &operator=(const Child &) = delete;

  void End() {
    if (pid_ <= 0) return;
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
    pid_ = -1;
  }
  int64_t pid() const { return pid_; }

 private:
  pid_t pid_;
};

class KeptProcess : public KeptFilesOf {
 protected:
  KeptProcess() { files_.KeepOpen(100); }

  // Ends the child and starts another with the same PID. Null if this user may not choose PIDs.
  static std::unique_ptr<Child> Replace(Child &child) {
    const int64_t pid = child.pid();
    child.End();
    for (int attempt = 0; attempt < 100; ++attempt) {
      std::ofstream("/proc/sys/kernel/ns_last_pid") << pid - 1;
      auto other = std::make_unique<Child>();
      if (other->pid() == pid) return other;
    }
    return nullptr;
  }
};

TEST_F(KeptProcess, AnEndedProcessIsNotFound) {
  Child child;
  ProcessStatus status;
  ASSERT_EQ(ReadProcessStatus(files_, child.pid(), status), HVC_OK);
  EXPECT_TRUE(IsSameProcess(files_, child.pid(), status.identity));
  child.End();
  EXPECT_EQ(ReadAddressSpaceLimit(files_, child.pid()), Figure()) << "absent in the same sample";
  EXPECT_FALSE(IsSameProcess(files_, child.pid(), status.identity));
  clock_.BeginSample();
  EXPECT_EQ(ReadProcessStatus(files_, child.pid(), status), HVC_NOT_FOUND);
}

TEST_F(KeptProcess, AReusedPidIsAnotherProcess) {
  Child child;
  ProcessStatus before, after;
  ASSERT_EQ(ReadProcessStatus(files_, child.pid(), before), HVC_OK);
  const std::unique_ptr<Child> other = Replace(child);
  if (other == nullptr) GTEST_SKIP() << "PIDs cannot be chosen here";
  EXPECT_EQ(ReadAddressSpaceLimit(files_, other->pid()), Figure()) << "in this sample, the PID is the first process'";
  EXPECT_FALSE(IsSameProcess(files_, other->pid(), before.identity));
  clock_.BeginSample();
  ASSERT_EQ(ReadProcessStatus(files_, other->pid(), after), HVC_OK);
  EXPECT_NE(after.identity.inode, before.identity.inode);
  EXPECT_NE(ReadAddressSpaceLimit(files_, other->pid()), Figure());
  EXPECT_TRUE(IsSameProcess(files_, other->pid(), after.identity));
  EXPECT_FALSE(IsSameProcess(files_, other->pid(), before.identity));
}

// The root of the control groups that account for memory; empty if there is none.
std::string MemoryControlGroups() {
  HostFiles files("/", Reach::kHost);
  const CgroupMount mount = FindCgroupMount(files);
  return mount.exists ? "/" + mount.top : "";
}

class KeptControlGroup : public KeptFilesOf {
 protected:
  KeptControlGroup() : name_("kept-files-test-" + std::to_string(getpid())) {
    top_ = MemoryControlGroups();
    files_.KeepOpen(100);
  }
  ~KeptControlGroup() override {
    rmdir((Path() + "/below").c_str());
    rmdir(Path().c_str());
  }

  std::string Path() const { return top_ + "/" + name_; }
  bool Make(const std::string &below = "") const { return !top_.empty() && mkdir((Path() + below).c_str(), 0755) == 0; }
  std::string Procs() const { return (Path() + "/cgroup.procs").substr(1); }

  std::string name_, top_;
};

TEST_F(KeptControlGroup, ARemovedGroupIsNotFoundAndANewOneIsRead) {
  if (!Make()) GTEST_SKIP() << "control groups cannot be made here";
  std::vector<int64_t> pids;
  const std::string folder = Path().substr(1);
  EXPECT_EQ(ReadCgroupPids(files_, folder, pids), HVC_OK);
  clock_.BeginSample();
  ASSERT_EQ(rmdir(Path().c_str()), 0);
  EXPECT_EQ(ReadCgroupPids(files_, folder, pids), HVC_NOT_FOUND);
  clock_.BeginSample();
  ASSERT_TRUE(Make());
  EXPECT_EQ(ReadCgroupPids(files_, folder, pids), HVC_OK);
}

TEST_F(KeptControlGroup, AGroupThatIsMadeAgainBetweenSamplesIsRead) {
  if (!Make()) GTEST_SKIP() << "control groups cannot be made here";
  std::vector<int64_t> pids;
  EXPECT_EQ(ReadCgroupPids(files_, Path().substr(1), pids), HVC_OK);
  ASSERT_EQ(rmdir(Path().c_str()), 0);
  ASSERT_TRUE(Make());
  clock_.BeginSample();
  EXPECT_EQ(ReadCgroupPids(files_, Path().substr(1), pids), HVC_OK);
}

TEST_F(KeptControlGroup, TheTreeFindsTheGroupsOfEachSample) {
  if (!Make()) GTEST_SKIP() << "control groups cannot be made here";
  GroupReader reader(files_);
  GroupTree tree(files_, reader);
  const auto find = [&](const std::string &name) -> const Group * {
    Group *host = tree.Find(kHostGroup);
    if (tree.FindMembers(*host) != HVC_OK) return nullptr;
    for (const int64_t id : host->controlGroups) {
      Group *group = tree.FindKnown(id);
      if (group == nullptr || group->name != name || tree.FindMembers(*group) != HVC_OK) continue;
      return group;
    }
    return nullptr;
  };
  const Group *group = find(name_);
  ASSERT_NE(group, nullptr);
  EXPECT_TRUE(group->controlGroups.empty());
  const uint64_t inode = group->inode;
  // The new group has a subfolder, which a folder kept open for the old group would not contain.
  ASSERT_EQ(rmdir(Path().c_str()), 0);
  ASSERT_TRUE(Make());
  ASSERT_TRUE(Make("/below"));
  clock_.BeginSample();
  group = find(name_);
  ASSERT_NE(group, nullptr);
  EXPECT_NE(group->inode, inode);
  EXPECT_EQ(group->controlGroups.size(), 1u);
  ASSERT_EQ(rmdir((Path() + "/below").c_str()), 0);
  ASSERT_EQ(rmdir(Path().c_str()), 0);
  clock_.BeginSample();
  EXPECT_EQ(find(name_), nullptr);
}

}  // namespace
}  // namespace platkit
