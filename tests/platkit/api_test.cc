// Checks of arguments in the C interface, over a fake source.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "platkit/nodal.h"
#include "platkit/records.h"
#include "platkit/source.h"
#include "platkit/str.h"
#include "platkit/warning.h"
#include "tests/platkit/c_interface.h"

namespace platkit {
namespace {

// Succeeds in every read and records it.
class RecordingSource : public Source {
 public:
  explicit RecordingSource(std::string &log) : log_(log) {}

  HVC_ReturnStatus Get(const Node &node, Arguments arguments, std::span<std::byte> record) override {
    Log("get", node, arguments);
    std::memset(record.data(), 0x11, record.size());
    return HVC_OK;
  }

  HVC_ReturnStatus List(const Node &node, Arguments arguments, ParamList &list) override {
    Log("list", node, arguments);
    for (int64_t i = 0; i < 100; ++i) {
      if (const HVC_ReturnStatus status = list.Add(i); status != HVC_OK) return status;
    }
    return HVC_OK;
  }

  const Definitions &definitions() const override { return definitions_; }

 private:
  void Log(const char *what, const Node &node, Arguments arguments) {
    log_ += std::string(what) + ' ' + std::string(node.name);
    for (const NODAL_Param &argument : arguments) {
      log_ += ' ';
      log_ += argument.kind == ParamKind::kInt ? std::to_string(argument.integer) : std::string(argument.text());
    }
    log_ += '\n';
  }

  std::string &log_;
  Definitions definitions_ = {.signature = "other", .build = "a build text of more than twenty characters"};
};

class Api : public testing::Test {
 protected:
  Api() { UseSource(std::make_unique<RecordingSource>(log_)); }
  ~Api() override {
    NODAL_ParamListDestroy(args_);
    NODAL_ParamListDestroy(list_);
    UseSource(nullptr);
  }

  std::string log_;
  NODAL_ParamList *args_ = NODAL_ParamListCreate(NODAL_LIST_INSTANCES, 1);
  NODAL_ParamList *list_ = nullptr;
  char buffer_[512] = {};
};

TEST_F(Api, GetAsksTheSource) {
  ASSERT_EQ(NODAL_ParamListAddInt(args_, 4), HVC_OK);
  EXPECT_EQ(NODAL_Get(NODAL_NODE_sched_groups_groupTag, args_, buffer_, 8), HVC_OK);
  EXPECT_EQ(log_, "get sched_groups_groupTag 4\n");
  EXPECT_EQ(buffer_[7], 0x11);
  EXPECT_EQ(buffer_[8], 0);
}

TEST_F(Api, NullAndEmptyArgumentsAreTheSame) {
  EXPECT_EQ(NODAL_Get(NODAL_NODE_memory_pshare_stats, args_, buffer_, 208), HVC_OK);
  EXPECT_EQ(NODAL_Get(NODAL_NODE_memory_pshare_stats, nullptr, buffer_, 208), HVC_OK);
}

TEST_F(Api, GetChecksItsCaller) {
  EXPECT_EQ(NODAL_Get(0, nullptr, buffer_, 8), HVC_NO_SUCH_NODE);
  EXPECT_EQ(NODAL_Get(49, nullptr, buffer_, 8), HVC_NO_SUCH_NODE);
  EXPECT_EQ(NODAL_Get(UINT32_MAX, nullptr, buffer_, 8), HVC_NO_SUCH_NODE);
  EXPECT_EQ(NODAL_Get(0x10000u + NODAL_NODE_memory_pshare_stats, nullptr, buffer_, 208), HVC_NO_SUCH_NODE);
  EXPECT_EQ(NODAL_Get(NODAL_NODE_memory_pshare_stats, nullptr, nullptr, 208), HVC_BAD_PARAM);
  EXPECT_EQ(NODAL_Get(NODAL_NODE_memory_pshare_stats, nullptr, buffer_, 207), HVC_WRONG_SIZE);
  EXPECT_EQ(NODAL_Get(NODAL_NODE_memory_pshare_stats, nullptr, buffer_, 209), HVC_WRONG_SIZE);
  EXPECT_EQ(NODAL_Get(NODAL_NODE_system_heaps, nullptr, buffer_, 8), HVC_NOT_A_RECORD);
  EXPECT_EQ(NODAL_Get(NODAL_NODE_sched_groups_groupTag, nullptr, buffer_, 8), HVC_WRONG_COUNT);
  ASSERT_EQ(NODAL_ParamListAddString(args_, "4"), HVC_OK);
  EXPECT_EQ(NODAL_Get(NODAL_NODE_sched_groups_groupTag, args_, buffer_, 8), HVC_WRONG_KIND);
  ASSERT_EQ(NODAL_ParamListAddInt(args_, 4), HVC_OK);
  EXPECT_EQ(NODAL_Get(NODAL_NODE_sched_groups_groupTag, args_, buffer_, 8), HVC_WRONG_COUNT);
  EXPECT_EQ(log_, "");
}

TEST_F(Api, AListAndRecordNodeTakesOneArgumentMoreAsARecord) {
  ASSERT_EQ(NODAL_ParamListAddInt(args_, 9), HVC_OK);
  EXPECT_EQ(NODAL_Get(NODAL_NODE_sched_memClients_remapTypes, args_, buffer_, 80), HVC_WRONG_COUNT);
  EXPECT_EQ(NODAL_GetInstanceListAlloc(NODAL_NODE_sched_memClients_remapTypes, args_, &list_), HVC_OK);
  ASSERT_EQ(NODAL_ParamListAddString(args_, "numa"), HVC_OK);
  EXPECT_EQ(NODAL_Get(NODAL_NODE_sched_memClients_remapTypes, args_, buffer_, 80), HVC_OK);
  EXPECT_EQ(log_, "list sched_memClients_remapTypes 9\nget sched_memClients_remapTypes 9 numa\n");
}

TEST_F(Api, ListChecksItsCaller) {
  EXPECT_EQ(NODAL_GetInstanceListAlloc(NODAL_NODE_system_heaps, nullptr, nullptr), HVC_BAD_PARAM);
  EXPECT_EQ(NODAL_GetInstanceListAlloc(0, nullptr, &list_), HVC_NO_SUCH_NODE);
  EXPECT_EQ(NODAL_GetInstanceListAlloc(NODAL_NODE_memory_pshare_stats, nullptr, &list_), HVC_NOT_A_LIST);
  EXPECT_EQ(NODAL_GetInstanceListAllocHint(NODAL_NODE_memory_lpage_nodeList_vmPools, nullptr, 3, &list_),
            HVC_WRONG_COUNT);
  EXPECT_EQ(NODAL_GetInstanceList(NODAL_NODE_system_buddy, nullptr, nullptr), HVC_BAD_PARAM);
  EXPECT_EQ(NODAL_GetInstanceList(NODAL_NODE_system_buddy, args_, args_), HVC_BAD_PARAM);
  EXPECT_EQ(list_, nullptr) << "a failure leaves no list";
  EXPECT_EQ(log_, "");
}

TEST_F(Api, AListThatDoesNotFitIsAnErrorAndLeftEmpty) {
  list_ = NODAL_ParamListCreateAndAllocateParams(NODAL_LIST_INSTANCES, 99, 12672);
  EXPECT_EQ(NODAL_GetInstanceList(NODAL_NODE_system_buddy, nullptr, list_), HVC_LIMIT_EXCEEDED);
  EXPECT_EQ(NODAL_ParamListUsedCount(list_), 0u);
}

TEST_F(Api, GetInstanceListDropsWhatTheListHeld) {
  list_ = NODAL_ParamListCreateAndAllocateParams(NODAL_LIST_INSTANCES, 100, 0);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(NODAL_GetInstanceList(NODAL_NODE_system_buddy, nullptr, list_), HVC_OK);
    EXPECT_EQ(NODAL_ParamListUsedCount(list_), 100u);
  }
}

TEST_F(Api, ServesProgramsInC) {
  EXPECT_EQ(CountMembersInC(7), 100u);
  EXPECT_EQ(log_, "list sched_groups_members_groups 7\n");
}

TEST_F(Api, SetChecksItsCaller) {
  NODAL_ParamList *input = NODAL_ParamListCreate(NODAL_LIST_INPUT, 1);
  ASSERT_EQ(NODAL_ParamListAddInt(args_, 4), HVC_OK);
  EXPECT_EQ(NODAL_Set(0, args_, input, nullptr, 0), HVC_NO_SUCH_NODE);
  EXPECT_EQ(NODAL_Set(NODAL_NODE_system_heaps, nullptr, input, nullptr, 0), HVC_NOT_A_RECORD);
  EXPECT_EQ(NODAL_Set(NODAL_NODE_sched_groups_groupTag, args_, nullptr, nullptr, 0), HVC_BAD_PARAM);
  EXPECT_EQ(NODAL_Set(NODAL_NODE_sched_groups_groupTag, args_, input, buffer_, 0), HVC_BAD_PARAM);
  EXPECT_EQ(NODAL_Set(NODAL_NODE_sched_groups_groupTag, args_, input, nullptr, 4), HVC_BAD_PARAM);
  EXPECT_EQ(NODAL_Set(NODAL_NODE_sched_groups_groupTag, nullptr, input, nullptr, 0), HVC_WRONG_COUNT);
  EXPECT_EQ(NODAL_Set(NODAL_NODE_sched_groups_groupTag, args_, input, nullptr, 0), HVC_READ_ONLY);
  NODAL_ParamListDestroy(input);
}

TEST_F(Api, CheckSigTellsBothBuilds) {
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

TEST_F(Api, UseCacheRefusesNullAndUnknownFlags) {
  EXPECT_EQ(NODAL_UseCache(nullptr, 0), HVC_BAD_PARAM);
  EXPECT_EQ(NODAL_UseCache("/", 2), HVC_BAD_PARAM);
  EXPECT_EQ(NODAL_UseCache("/no/such/file", NODAL_CACHE_SNAPSHOT), HVC_NOT_FOUND);
  EXPECT_EQ(NODAL_Get(NODAL_NODE_memory_pshare_stats, nullptr, buffer_, 208), HVC_OK) << "the source is what it was";
}

TEST(Definitions, TheRunningHostAlwaysMatches) {
  UseSource(nullptr);
  char build[21] = "";
  const char *own = nullptr;
  EXPECT_EQ(NODAL_CheckSig(build, sizeof build, &own), HVC_OK);
  EXPECT_STREQ(build, own);
}

TEST(Str, CopiesWhatFits) {
  char room[5];
  EXPECT_EQ(Str_Strcpy(room, "four", sizeof room), room);
  EXPECT_STREQ(room, "four");
  EXPECT_STREQ(Str_Strcpy(room, "fifth", sizeof room), "fift");
  EXPECT_STREQ(Str_Strcpy(room, "", sizeof room), "");
  EXPECT_STREQ(Str_Strcpy(room, nullptr, sizeof room), "");
  room[0] = 'x';
  Str_Strcpy(room, "four", 0);
  EXPECT_EQ(room[0], 'x');
}

TEST(WarningChannel, FlushesStandardOutputFirst) {
  testing::internal::CaptureStderr();
  errno = ENOSPC;
  Warning("%s:%u failure: %s\n", "name", 7u, "text");
  EXPECT_EQ(errno, ENOSPC);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "name:7 failure: text\n");
}

}  // namespace
}  // namespace platkit
