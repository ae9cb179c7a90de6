#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

#include "tests/platkit/scratch.h"
#include "tests/platkit/snapshot/small_host.h"

namespace platkit::snapshot {
namespace {

class Write : public testing::Test {
 protected:
  // Runs `check` in a child process, so that its limits and its user do not affect this process.
  static bool HoldsElsewhere(const std::function<bool()> &check) {
    const pid_t child = fork();
    if (child == 0) _exit(check() ? 0 : 1);
    int exitStatus = -1;
    return waitpid(child, &exitStatus, 0) == child && exitStatus == 0;
  }

  Scratch scratch_;
};

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

TEST_F(Write, AKeyOnlyOnce) {
  SnapshotWriter writer;
  AddSmallHost(writer);
  ASSERT_EQ(writer.AddTexts("/system/heaps", {}), HVC_OK);
  EXPECT_EQ(writer.Write(scratch_.Path("file")), HVC_ALREADY_EXISTS);
  EXPECT_TRUE(scratch_.Names().empty());
}

// A limit on file sizes simulates a full disk. Wherever the write fails, the older file stays.
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

TEST_F(Write, Limits) {
  SnapshotWriter writer;
  Header header = SmallHeader();
  header.host = std::string(256, 'x');
  EXPECT_EQ(writer.AddHeader(header), HVC_LIMIT_EXCEEDED);
  header.host = std::string("a\0b", 3);
  EXPECT_EQ(SnapshotWriter().AddHeader(header), HVC_BAD_PARAM);
  EXPECT_EQ(writer.AddTexts("/system/heaps", std::vector<std::string>{std::string("a\0b", 3)}), HVC_BAD_PARAM);
  EXPECT_EQ(writer.AddTexts(std::string(4097, '/'), {}), HVC_LIMIT_EXCEEDED);
  // The writer rejects the size before it reads the bytes.
  const std::byte one{};
  EXPECT_EQ(writer.AddRecord("/a", std::span(&one, size_t{UINT32_MAX} - 1000)), HVC_LIMIT_EXCEEDED);
}

}  // namespace
}  // namespace platkit::snapshot
