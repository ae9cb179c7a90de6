// The statuses of NODAL_UseCache for all kinds of files.
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platkit/nodal.h"
#include "tests/platkit/scratch.h"
#include "tests/platkit/snapshot/small_host.h"

namespace platkit::snapshot {
namespace {

class Open : public testing::Test {
 protected:
  // The status of opening a snapshot, which does not become the source of the process. Only success returns a source.
  HVC_ReturnStatus Status(const std::string &path) {
    std::unique_ptr<Source> source;
    const HVC_ReturnStatus status = OpenSnapshot(path.c_str(), source);
    EXPECT_EQ(source != nullptr, status == HVC_OK);
    return status;
  }

  std::string SmallBytes() {
    WriteSmallHost(scratch_.Path("small"));
    return Contents(scratch_.Path("small"));
  }

  // A small host with another digit as its version; the rest of the file is unchanged.
  std::string WithVersion(char digit) {
    std::string bytes = SmallBytes();
    bytes.at(2048 + 8 + kVersionKey.size()) = digit;
    return scratch_.Write("version", bytes);
  }

  Scratch scratch_;
};

TEST_F(Open, ASnapshotAnswersTheReadsOfTheProcess) {
  WriteSmallHost(scratch_.Path("small"));
  ASSERT_EQ(NODAL_UseCache(scratch_.Path("small").c_str(), NODAL_CACHE_SNAPSHOT), HVC_OK);
  NumVMsRecord vms;
  EXPECT_EQ(NODAL_Get(NODAL_NODE_sched_globalStats_numVMs, nullptr, &vms, sizeof vms), HVC_OK);
  EXPECT_EQ(vms.numVMs, 2u);

  // A failure does not change the source.
  EXPECT_EQ(NODAL_UseCache(scratch_.Path("missing").c_str(), NODAL_CACHE_SNAPSHOT), HVC_NOT_FOUND);
  EXPECT_EQ(NODAL_Get(NODAL_NODE_sched_globalStats_numVMs, nullptr, &vms, sizeof vms), HVC_OK);
  EXPECT_EQ(NODAL_Set(NODAL_NODE_sched_globalStats_numVMs, nullptr, nullptr, nullptr, 0), HVC_BAD_PARAM);
  NODAL_ParamList *input = NODAL_ParamListCreate(NODAL_LIST_INPUT, 1);
  EXPECT_EQ(NODAL_Set(NODAL_NODE_sched_globalStats_numVMs, nullptr, input, nullptr, 0), HVC_READ_ONLY);
  NODAL_ParamListDestroy(input);
}

TEST_F(Open, DefinitionsAreTheSnapshots) {
  Header header = SmallHeader();
  header.definitions.signature = "0123";
  header.definitions.build = "a build text of more than twenty characters";
  SnapshotWriter writer;
  ASSERT_EQ(writer.AddHeader(header), HVC_OK);
  ASSERT_EQ(writer.Write(scratch_.Path("other")), HVC_OK);
  ASSERT_EQ(NODAL_UseCache(scratch_.Path("other").c_str(), NODAL_CACHE_SNAPSHOT), HVC_OK);
  char build[21];
  const char *own = nullptr;
  EXPECT_EQ(NODAL_CheckSig(build, sizeof build, &own), HVC_DEFINITIONS_DIFFER);
  EXPECT_STREQ(build, "a build text of more");

  WriteSmallHost(scratch_.Path("same"));
  ASSERT_EQ(NODAL_UseCache(scratch_.Path("same").c_str(), NODAL_CACHE_SNAPSHOT), HVC_OK);
  EXPECT_EQ(NODAL_CheckSig(build, sizeof build, &own), HVC_OK);
  EXPECT_STREQ(build, own);
}

TEST_F(Open, NothingThere) {
  EXPECT_EQ(Status(scratch_.Path("missing")), HVC_NOT_FOUND);
  EXPECT_EQ(Status(""), HVC_NOT_FOUND);
  EXPECT_EQ(Status(scratch_.Write("file", "x") + "/below"), HVC_NOT_FOUND);
}

TEST_F(Open, NotForThisUser) {
  if (geteuid() == 0) {
    // Root can read every file. A child becomes another user, because it could not become root again.
    const pid_t child = fork();
    if (child == 0) {
      const std::string path = scratch_.Write("secret", SmallBytes());
      const bool ready = chmod(scratch_.folder().c_str(), 0755) == 0 && chmod(path.c_str(), 0) == 0 &&
                         setgid(65534) == 0 && setuid(65534) == 0;
      std::unique_ptr<Source> source;
      _exit(ready && OpenSnapshot(path.c_str(), source) == HVC_NO_PERMISSION ? 0 : 1);
    }
    int exitStatus = -1;
    ASSERT_EQ(waitpid(child, &exitStatus, 0), child);
    EXPECT_EQ(exitStatus, 0);
  } else {
    const std::string path = scratch_.Write("secret", SmallBytes());
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    EXPECT_EQ(Status(path), HVC_NO_PERMISSION);
  }
}

TEST_F(Open, CannotBeRead) {
  ASSERT_EQ(symlink("loop", scratch_.Path("loop").c_str()), 0);
  EXPECT_EQ(Status(scratch_.Path("loop")), HVC_IO_ERROR);
}

TEST_F(Open, SomethingElse) {
  EXPECT_EQ(Status(scratch_.folder()), HVC_NOT_A_SNAPSHOT);
  EXPECT_EQ(Status("/dev/null"), HVC_NOT_A_SNAPSHOT);
  EXPECT_EQ(Status("/proc/self/status"), HVC_NOT_A_SNAPSHOT);
  EXPECT_EQ(Status(scratch_.Write("empty", "")), HVC_NOT_A_SNAPSHOT);
  EXPECT_EQ(Status(scratch_.Write("short", "nodal-snapshot")), HVC_NOT_A_SNAPSHOT);
  EXPECT_EQ(Status(scratch_.Write("long", std::string(100000, 'x'))), HVC_NOT_A_SNAPSHOT);
  EXPECT_EQ(Status(scratch_.Write("zeros", std::string(100000, '\0'))), HVC_NOT_A_SNAPSHOT);

  ASSERT_EQ(mkfifo(scratch_.Path("pipe").c_str(), 0600), 0);
  EXPECT_EQ(Status(scratch_.Path("pipe")), HVC_NOT_A_SNAPSHOT);

  const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  scratch_.Path("socket").copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(bind(fd, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
  close(fd);
  EXPECT_EQ(Status(scratch_.Path("socket")), HVC_NOT_A_SNAPSHOT);
}

TEST_F(Open, Versions) {
  EXPECT_EQ(Status(WithVersion('1')), HVC_OK);
  EXPECT_EQ(Status(WithVersion('2')), HVC_SNAPSHOT_TOO_NEW);
  EXPECT_EQ(Status(WithVersion('0')), HVC_SNAPSHOT_DAMAGED);
  EXPECT_EQ(Status(WithVersion('x')), HVC_SNAPSHOT_DAMAGED);
  EXPECT_EQ(Status(WithVersion('-')), HVC_SNAPSHOT_DAMAGED);
}

TEST_F(Open, ANewerVersionIsToldBeforeAnythingElseIsBelieved) {
  std::string bytes = SmallBytes();
  for (size_t i = 0; i < 2048; ++i)
    bytes[i] = '\xee';
  bytes.resize(2048 + 8 + kVersionKey.size());
  bytes[2048 + 4] = 2;
  EXPECT_EQ(Status(scratch_.Write("newer", bytes + "42")), HVC_SNAPSHOT_TOO_NEW);
}

TEST_F(Open, HeaderTexts) {
  for (const std::string_view missing : {kSignatureKey, kBuildKey, kHostKey, kTimeKey}) {
    SnapshotWriter writer;
    for (const std::string_view key : {kSignatureKey, kBuildKey, kHostKey, kTimeKey}) {
      if (key == missing) continue;
      ASSERT_EQ(writer.Add(key, ValueType::kHeader, {}), HVC_OK);
    }
    ASSERT_EQ(writer.Write(scratch_.Path("headless")), HVC_OK);
    EXPECT_EQ(Status(scratch_.Path("headless")), HVC_SNAPSHOT_DAMAGED) << missing;
  }
  for (const std::string &text : {std::string(256, 'x'), std::string("a\0b", 3)}) {
    SnapshotWriter writer;
    ASSERT_EQ(writer.Add(kSignatureKey, ValueType::kHeader, std::as_bytes(std::span(text))), HVC_OK);
    for (const std::string_view key : {kBuildKey, kHostKey, kTimeKey})
      ASSERT_EQ(writer.Add(key, ValueType::kHeader, {}), HVC_OK);
    ASSERT_EQ(writer.Write(scratch_.Path("headstrong")), HVC_OK);
    EXPECT_EQ(Status(scratch_.Path("headstrong")), HVC_SNAPSHOT_DAMAGED);
  }
}

}  // namespace
}  // namespace platkit::snapshot
