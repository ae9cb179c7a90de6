// Selects a source, and compares its definitions with the library's own.
#include <gtest/gtest.h>

#include <memory>

#include "platkit/nodal.h"
#include "platkit/records.h"
#include "tests/platkit/api/recording_source.h"

namespace platkit {
namespace {

class CurrentSourceTest : public testing::Test {
 protected:
  CurrentSourceTest() { UseSource(std::make_unique<RecordingSource>(log_)); }
  ~CurrentSourceTest() override { UseSource(nullptr); }

  std::string log_;
};

TEST_F(CurrentSourceTest, CheckSigTellsBothBuilds) {
  char build[21];
  std::memset(build, 'x', sizeof build);
  const char *own = nullptr;
  EXPECT_EQ(NODAL_CheckSig(build, sizeof build, &own), HVC_DEFINITIONS_DIFFER);
  EXPECT_STREQ(build, "a build text of more");
  EXPECT_EQ(own, OwnDefinitions().build);
  EXPECT_EQ(NODAL_CheckSig(build, 1, &own), HVC_DEFINITIONS_DIFFER);
  EXPECT_STREQ(build, "");
  EXPECT_EQ(NODAL_CheckSig(nullptr, 21, &own), HVC_BAD_PARAM);
  EXPECT_EQ(NODAL_CheckSig(build, 0, &own), HVC_BAD_PARAM);
  EXPECT_EQ(NODAL_CheckSig(build, 21, nullptr), HVC_BAD_PARAM);
}

TEST_F(CurrentSourceTest, UseCacheRefusesNullAndUnknownFlags) {
  EXPECT_EQ(NODAL_UseCache(nullptr, 0), HVC_BAD_PARAM);
  EXPECT_EQ(NODAL_UseCache("/", 2), HVC_BAD_PARAM);
  EXPECT_EQ(NODAL_UseCache("/no/such/file", NODAL_CACHE_SNAPSHOT), HVC_NOT_FOUND);
  PShareStatsRecord record;
  EXPECT_EQ(NODAL_Get(NODAL_NODE_memory_pshare_stats, nullptr, &record, sizeof record), HVC_OK);
  EXPECT_EQ(log_, "get memory_pshare_stats\n") << "the source stays the same";
}

TEST(Definitions, TheRunningHostAlwaysMatches) {
  UseSource(nullptr);
  char build[21] = "";
  const char *own = nullptr;
  EXPECT_EQ(NODAL_CheckSig(build, sizeof build, &own), HVC_OK);
  EXPECT_STREQ(build, own);
}

}  // namespace
}  // namespace platkit
