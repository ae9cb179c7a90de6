#include "platkit/linux/files/host_files.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <thread>

#include "platkit/linux/files/folder_reader.h"
#include "platkit/linux/files/line_reader.h"
#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

std::vector<std::string> Lines(SavedHost &host, const std::string &text) {
  host.Write("file", text);
  HostFiles files(host.Path(""), Reach::kRootFolder);
  LineReader reader(files, HostPath("file"));
  std::vector<std::string> lines;
  for (std::string_view line; reader.Next(line);)
    lines.emplace_back(line);
  EXPECT_EQ(reader.status(), HVC_OK);
  return lines;
}

TEST(HostFiles, LinesOfAnyLength) {
  using Texts = std::vector<std::string>;
  SavedHost host;
  EXPECT_EQ(Lines(host, ""), Texts{});
  EXPECT_EQ(Lines(host, "a\n\nb"), (Texts{"a", "", "b"}));
  for (const size_t length : {4094u, 4095u, 4096u, 4097u, 8192u, 8193u, 20000u}) {
    const std::string text = std::string(length, 'x');
    const Texts expected = {text.substr(0, 4096), "end"};
    EXPECT_EQ(Lines(host, text + "\nend\n"), expected) << length;
    EXPECT_EQ(Lines(host, text), Texts{expected[0]}) << length;
  }
  Texts many;
  std::string text;
  for (int i = 0; i < 5000; ++i)
    text += many.emplace_back(std::to_string(i)) + "\n";
  EXPECT_EQ(Lines(host, text), many);
}

// Tests the status of ReadTrusted for a file of 4 bytes in a saved root.
class TrustedFile : public testing::Test {
 protected:
  TrustedFile() {
    host_.Write("file", "text");
    SetMode(0644);
  }

  HVC_ReturnStatus Read(size_t maxSize = 4) {
    HostFiles files(host_.Path(""), Reach::kRootFolder);
    return files.ReadTrusted(HostPath("file"), maxSize, text_);
  }
  void SetMode(mode_t mode) { EXPECT_EQ(chmod(host_.Path("file").c_str(), mode), 0); }

  SavedHost host_;
  std::string text_;
};

TEST_F(TrustedFile, HasABoundedSize) {
  EXPECT_EQ(Read(), HVC_OK);
  EXPECT_EQ(text_, "text");
  EXPECT_EQ(Read(3), HVC_IO_ERROR);
  host_.Write("file", "");
  EXPECT_EQ(Read(0), HVC_OK);
  EXPECT_EQ(text_, "");
  host_.Remove("file");
  EXPECT_EQ(Read(), HVC_NOT_FOUND);
}

TEST_F(TrustedFile, NobodyElseMayWriteToIt) {
  for (const mode_t mode : {0400u, 0600u, 0755u}) {
    SetMode(mode);
    EXPECT_EQ(Read(), HVC_OK) << mode;
  }
  for (const mode_t mode : {0664u, 0646u, 0620u}) {
    SetMode(mode);
    EXPECT_EQ(Read(), HVC_NO_PERMISSION) << mode;
  }
}

TEST_F(TrustedFile, BelongsToTheOwnerOfTheRootFolder) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  EXPECT_EQ(chown(host_.Path("file").c_str(), 65534, 65534), 0);
  EXPECT_EQ(Read(), HVC_NO_PERMISSION);
  EXPECT_EQ(chown(host_.Path("").c_str(), 65534, 65534), 0);
  EXPECT_EQ(Read(), HVC_OK);
}

TEST_F(TrustedFile, OnTheRunningHostBelongsToRoot) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  HostFiles files(host_.Path(""), Reach::kHost);
  EXPECT_EQ(files.ReadTrusted(HostPath("file"), 4, text_), HVC_OK);
  EXPECT_EQ(chown(host_.Path("").c_str(), 65534, 65534), 0);
  EXPECT_EQ(files.ReadTrusted(HostPath("file"), 4, text_), HVC_OK);
  EXPECT_EQ(chown(host_.Path("file").c_str(), 65534, 65534), 0);
  EXPECT_EQ(files.ReadTrusted(HostPath("file"), 4, text_), HVC_NO_PERMISSION);
}

TEST_F(TrustedFile, IsARegularFile) {
  host_.Write("other", "text");
  host_.Remove("file");
  host_.MakeLink("file", "other");
  EXPECT_NE(Read(), HVC_OK) << "a link";
  host_.Remove("file");
  host_.MakeFolder("file");
  EXPECT_EQ(Read(), HVC_IO_ERROR) << "a folder";
  host_.Remove("file");
  EXPECT_EQ(mkfifo(host_.Path("file").c_str(), 0600), 0);
  EXPECT_EQ(Read(), HVC_IO_ERROR) << "a pipe";
}

TEST(HostFiles, Statuses) {
  SavedHost host;
  host.Write("file", "text");
  host.Write("closed", "text");
  host.Forbid("closed");
  HostFiles files(host.Path(""), Reach::kRootFolder);
  char buffer[8];
  std::string_view text;
  EXPECT_EQ(files.ReadShort(HostPath("file"), buffer, text), HVC_OK);
  EXPECT_EQ(text, "text");
  EXPECT_EQ(files.ReadShort(HostPath("file"), {buffer, 4}, text), HVC_IO_ERROR);
  EXPECT_EQ(files.Read(HostPath("file"), {buffer, 3}, text), HVC_OK);
  EXPECT_EQ(text, "tex");
  EXPECT_EQ(files.Read(HostPath("nowhere"), buffer, text), HVC_NOT_FOUND);
  EXPECT_EQ(files.Read(HostPath("file/below"), buffer, text), HVC_NOT_FOUND);
  EXPECT_EQ(files.Read(HostPath("."), buffer, text), HVC_IO_ERROR);
  EXPECT_EQ(files.Read(HostPath(std::string(5000, 'x')), buffer, text), HVC_NAME_TOO_LONG);
  host.MakeLink("link", "target");
  for (const Reach reach : {Reach::kRootFolder, Reach::kHost}) {
    HostFiles both(host.Path(""), reach);
    EXPECT_EQ(both.ReadLink(HostPath("file"), buffer, text), HVC_NOT_FOUND) << "no link";
    EXPECT_EQ(both.ReadLink(HostPath("nowhere"), buffer, text), HVC_NOT_FOUND);
    EXPECT_EQ(both.ReadLink(HostPath(std::string(5000, 'x')), buffer, text), HVC_NAME_TOO_LONG);
    EXPECT_EQ(both.ReadLink(HostPath("link"), buffer, text), HVC_OK);
    EXPECT_EQ(text, "target");
    EXPECT_EQ(both.ReadLink(HostPath("link"), {buffer, 3}, text), HVC_OK);
    EXPECT_EQ(text, "tar");
  }
  OrdinaryUser user;
  EXPECT_EQ(files.Read(HostPath("closed"), buffer, text), HVC_NO_PERMISSION);
}

TEST(HostFiles, PartsOfAFile) {
  SavedHost host;
  host.Write("file", "0123456789");
  HostFiles files(host.Path(""), Reach::kRootFolder, Writes::kTaken);
  char room[4];
  const std::span<std::byte> bytes = std::as_writable_bytes(std::span(room));
  EXPECT_EQ(files.ReadAt(HostPath("file"), 6, bytes), HVC_OK);
  EXPECT_EQ(std::string_view(room, 4), "6789");
  EXPECT_EQ(files.ReadAt(HostPath("file"), 7, bytes), HVC_OFFSET_PAST_END);
  EXPECT_EQ(files.ReadAt(HostPath("file"), 4000, bytes), HVC_OFFSET_PAST_END);
  EXPECT_EQ(files.ReadAt(HostPath("nowhere"), 0, bytes), HVC_NOT_FOUND);
  std::fill_n(room, sizeof room, 'x');
  EXPECT_EQ(files.WriteAt(HostPath("file"), 2, bytes), HVC_OK);
  EXPECT_EQ(host.Read("file"), "01xxxx6789");
  EXPECT_EQ(files.WriteAt(HostPath("file"), 7, bytes), HVC_OFFSET_PAST_END);
  EXPECT_EQ(files.WriteAt(HostPath("nowhere"), 0, bytes), HVC_NOT_FOUND);
  EXPECT_FALSE(files.Exists(HostPath("nowhere")));
  HostFiles readOnly(host.Path(""), Reach::kRootFolder);
  EXPECT_EQ(readOnly.WriteAt(HostPath("file"), 0, bytes), HVC_READ_ONLY);
  EXPECT_EQ(host.Read("file"), "01xxxx6789");
}

// The size of some kernel files is larger than their contents.
TEST(HostFiles, PartsOfAKernelFile) {
  char room[4];
  const std::span<std::byte> bytes = std::as_writable_bytes(std::span(room));
  HostFiles running("/", Reach::kHost);
  if (!running.Exists(HostPath("sys/kernel/uevent_seqnum"))) GTEST_SKIP() << "no /sys/kernel here";
  EXPECT_EQ(running.ReadAt(HostPath("sys/kernel/uevent_seqnum"), 1000, bytes), HVC_TRANSFER_TRUNCATED);
}

// A saved root may be hostile: links in it must not lead out of it.
TEST(HostFiles, LinksStayBelowASavedRoot) {
  SavedHost outside;
  outside.Write("secret", "outside");
  SavedHost host;
  host.Write("inside", "inside");
  host.MakeLink("absolute", outside.Path("secret"));
  host.MakeLink("rooted", "/inside");
  host.MakeLink("loop", "loop");
  HostFiles files(host.Path(""), Reach::kRootFolder);
  char buffer[16];
  std::string_view text;
  EXPECT_EQ(files.Read(HostPath("absolute"), buffer, text), HVC_NOT_FOUND);
  EXPECT_EQ(files.Read(HostPath("../../..", outside.Path("secret")), buffer, text), HVC_NOT_FOUND);
  EXPECT_EQ(files.Read(HostPath("loop"), buffer, text), HVC_IO_ERROR);
  EXPECT_EQ(files.Read(HostPath("rooted"), buffer, text), HVC_OK);
  EXPECT_EQ(text, "inside") << "as the link would lead on the host that was saved";

  HostFiles running(host.Path(""), Reach::kHost);
  EXPECT_EQ(running.Read(HostPath("absolute"), buffer, text), HVC_OK);
  EXPECT_EQ(text, "outside");
}

TEST(HostFiles, LinksAreFollowedWhileOtherFilesAreRenamed) {
  SavedHost host;
  host.Write("devices/region0/size", "1");
  host.Write("other", "");
  host.MakeLink("bus/region0", "../devices/region0");
  HostFiles files(host.Path(""), Reach::kRootFolder);
  std::atomic<bool> done = false;
  std::thread renaming([&] {
    const std::string here = host.Path("other"), there = host.Path("another");
    while (!done) {
      EXPECT_EQ(std::rename(here.c_str(), there.c_str()), 0);
      EXPECT_EQ(std::rename(there.c_str(), here.c_str()), 0);
    }
  });
  int read = 0;
  constexpr int kReads = 20000;
  for (int i = 0; i < kReads; ++i) {
    char buffer[8];
    std::string_view text;
    if (files.Read(HostPath("bus/region0/size"), buffer, text) == HVC_OK) ++read;
  }
  done = true;
  renaming.join();
  EXPECT_EQ(read, kReads);
}

TEST(HostFiles, AnEndlessFileIsNotReadToItsEnd) {
  SavedHost host;
  host.MakeLink("endless", "/dev/zero");
  HostFiles files(host.Path(""), Reach::kHost);
  LineReader lines(files, HostPath("endless"));
  std::string_view line;
  EXPECT_TRUE(lines.Next(line));
  EXPECT_FALSE(lines.Next(line));
  EXPECT_EQ(lines.status(), HVC_IO_ERROR);
}

TEST(HostFiles, AFifoDoesNotBlock) {
  SavedHost host;
  ASSERT_EQ(mkfifo(host.Path("fifo").c_str(), 0644), 0);
  HostFiles files(host.Path(""), Reach::kRootFolder);
  char buffer[8];
  std::string_view text;
  EXPECT_EQ(files.Read(HostPath("fifo"), buffer, text), HVC_OK);
  EXPECT_EQ(text, "");
}

TEST(HostFiles, Folders) {
  SavedHost host;
  host.MakeFolder("top/folder");
  host.Write("top/file", "");
  HostFiles files(host.Path(""), Reach::kRootFolder);
  FolderReader folder(files, HostPath("top"));
  int entries = 0;
  for (FolderReader::Entry entry; folder.Next(entry); ++entries) {
    EXPECT_EQ(entry.isFolder, entry.name == "folder");
    const int64_t number = 10'000'000 + static_cast<int64_t>(entry.inode % 10'000'000);
    EXPECT_EQ(number == host.ControlGroup("top/folder"), entry.isFolder);
  }
  EXPECT_EQ(entries, 2);
  EXPECT_EQ(FolderReader(files, HostPath("top/file")).status(), HVC_NOT_FOUND);
}

TEST(HostFiles, AFileIsIdentifiedByItsInode) {
  for (const Reach reach : {Reach::kHost, Reach::kRootFolder}) {
    SavedHost host;
    host.Write("proc/7/status", "one");
    HostFiles files(host.Path(""), reach);
    const auto inodeOf = [](const std::string &path) {
      struct stat about = {};
      EXPECT_EQ(stat(path.c_str(), &about), 0) << path;
      return about.st_ino;
    };
    uint64_t first = 0, second = 0;
    EXPECT_EQ(files.Identify(HostPath("proc/7/status"), first), HVC_OK);
    EXPECT_EQ(first, inodeOf(host.Path("proc/7/status")));
    EXPECT_EQ(LineReader(files, HostPath("proc/7/status")).inode(), first);
    host.Write("proc/7/other", "two");
    ASSERT_EQ(rename(host.Path("proc/7/other").c_str(), host.Path("proc/7/status").c_str()), 0);
    EXPECT_EQ(files.Identify(HostPath("proc/7/status"), second), HVC_OK);
    EXPECT_NE(first, second);
    EXPECT_EQ(files.Identify(HostPath("proc/8/status"), second), HVC_NOT_FOUND);
    EXPECT_EQ(second, 0u);
    EXPECT_EQ(files.Identify(HostPath("proc/7/status/x"), second), HVC_NOT_FOUND);
    EXPECT_EQ(files.Identify(HostPath("proc/", std::string(PATH_MAX, 'x')), second), HVC_NAME_TOO_LONG);
    EXPECT_EQ(HostFiles(host.Path("none"), reach).Identify(HostPath("proc"), second), HVC_NOT_FOUND);
  }
}

// While the files of a control group are read, the group may be removed, and another one created with the same name.
TEST(HostFiles, FilesAreOpenedInTheFolderThatWasListed) {
  for (const Reach reach : {Reach::kHost, Reach::kRootFolder}) {
    SavedHost host;
    host.Write("group/file", "listed");
    host.Write("group/below/file", "below");
    host.Write("group-1/file", "another");
    HostFiles files(host.Path(""), reach);
    ASSERT_EQ(FolderReader(files, HostPath("group")).status(), HVC_OK);
    char buffer[16];
    std::string_view text;
    EXPECT_EQ(files.Read(HostPath("group-1/file"), buffer, text), HVC_OK);
    EXPECT_EQ(text, "another");
    EXPECT_EQ(files.Read(HostPath("group/below/file"), buffer, text), HVC_OK);
    EXPECT_EQ(text, "below");
    ASSERT_EQ(rename(host.Path("group").c_str(), host.Path("gone").c_str()), 0);
    host.Write("group/file", "new");
    EXPECT_EQ(files.Read(HostPath("group/file"), buffer, text), HVC_OK);
    EXPECT_EQ(text, reach == Reach::kHost ? "listed" : "new");
    ASSERT_EQ(FolderReader(files, HostPath("group")).status(), HVC_OK);
    EXPECT_EQ(files.Read(HostPath("group/file"), buffer, text), HVC_OK);
    EXPECT_EQ(text, "new");
  }
}

// Two listings may be read alternately.
TEST(HostFiles, AFolderIsReadToItsEndWhenAnotherIsOpened) {
  SavedHost host;
  host.Write("one/file", "");
  host.Write("two/other", "");
  HostFiles files(host.Path(""), Reach::kHost);
  FolderReader one(files, HostPath("one"));
  FolderReader two(files, HostPath("two"));
  FolderReader::Entry entry;
  ASSERT_TRUE(one.Next(entry));
  EXPECT_EQ(entry.name, "file");
  ASSERT_TRUE(two.Next(entry));
  EXPECT_EQ(entry.name, "other");
  EXPECT_FALSE(one.Next(entry));
  EXPECT_EQ(one.status(), HVC_OK);
}

TEST(HostFiles, FoldersWithoutFolders) {
  HostFiles running("/", Reach::kHost);
  FolderReader top(running, HostPath("sys/kernel"));
  if (top.status() != HVC_OK) GTEST_SKIP() << "no /sys/kernel here";
  EXPECT_FALSE(top.HasNoFolders());
  int without = 0;
  for (FolderReader::Entry entry; top.Next(entry);) {
    FolderReader folder(running, HostPath("sys/kernel/", entry.name));
    if (!folder.HasNoFolders()) continue;
    ++without;
    for (FolderReader::Entry below; folder.Next(below);)
      EXPECT_FALSE(below.isFolder) << "sys/kernel/" << entry.name << "/" << below.name;
  }
  EXPECT_GT(without, 0);

  SavedHost host;
  host.Write("folder/file", "");
  HostFiles saved(host.Path(""), Reach::kRootFolder);
  EXPECT_FALSE(FolderReader(saved, HostPath("folder")).HasNoFolders()) << "nobody knows what it is saved on";
}

}  // namespace
}  // namespace platkit
