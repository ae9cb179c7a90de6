// The operations on nodes refuse invalid arguments.
#include <gtest/gtest.h>

#include <memory>

#include "platkit/nodal.h"
#include "platkit/records.h"
#include "tests/platkit/api/recording_source.h"
#include "tests/platkit/c_interface.h"

namespace platkit {
namespace {

class Tree : public testing::Test {
 protected:
  Tree() { UseSource(std::make_unique<RecordingSource>(log_)); }
  ~Tree() override {
    NODAL_ParamListDestroy(args_);
    NODAL_ParamListDestroy(list_);
    UseSource(nullptr);
  }

  std::string log_;
  NODAL_ParamList *args_ = NODAL_ParamListCreate(NODAL_LIST_INSTANCES, 1);
  NODAL_ParamList *list_ = nullptr;
  char buffer_[512] = {};
};

TEST_F(Tree, GetAsksTheSource) {
  ASSERT_EQ(NODAL_ParamListAddInt(args_, 4), HVC_OK);
  EXPECT_EQ(NODAL_Get(NODAL_NODE_sched_groups_groupTag, args_, buffer_, 8), HVC_OK);
  EXPECT_EQ(log_, "get sched_groups_groupTag 4\n");
  EXPECT_EQ(buffer_[7], 0x11);
  EXPECT_EQ(buffer_[8], 0);
}

TEST_F(Tree, NullAndEmptyArgumentsAreTheSame) {
  EXPECT_EQ(NODAL_Get(NODAL_NODE_memory_pshare_stats, args_, buffer_, 208), HVC_OK);
  EXPECT_EQ(NODAL_Get(NODAL_NODE_memory_pshare_stats, nullptr, buffer_, 208), HVC_OK);
}

TEST_F(Tree, GetChecksItsCaller) {
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

TEST_F(Tree, AListAndRecordNodeTakesOneArgumentMoreAsARecord) {
  ASSERT_EQ(NODAL_ParamListAddInt(args_, 9), HVC_OK);
  EXPECT_EQ(NODAL_Get(NODAL_NODE_sched_memClients_remapTypes, args_, buffer_, 80), HVC_WRONG_COUNT);
  EXPECT_EQ(NODAL_GetInstanceListAlloc(NODAL_NODE_sched_memClients_remapTypes, args_, &list_), HVC_OK);
  ASSERT_EQ(NODAL_ParamListAddString(args_, "numa"), HVC_OK);
  EXPECT_EQ(NODAL_Get(NODAL_NODE_sched_memClients_remapTypes, args_, buffer_, 80), HVC_OK);
  EXPECT_EQ(log_, "list sched_memClients_remapTypes 9\nget sched_memClients_remapTypes 9 numa\n");
}

TEST_F(Tree, ListChecksItsCaller) {
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

TEST_F(Tree, AListThatDoesNotFitIsAnErrorAndLeftEmpty) {
  list_ = NODAL_ParamListCreateAndAllocateParams(NODAL_LIST_INSTANCES, 99, 12672);
  EXPECT_EQ(NODAL_GetInstanceList(NODAL_NODE_system_buddy, nullptr, list_), HVC_LIMIT_EXCEEDED);
  EXPECT_EQ(NODAL_ParamListUsedCount(list_), 0u);
}

TEST_F(Tree, GetInstanceListDropsWhatTheListHeld) {
  list_ = NODAL_ParamListCreateAndAllocateParams(NODAL_LIST_INSTANCES, 100, 0);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(NODAL_GetInstanceList(NODAL_NODE_system_buddy, nullptr, list_), HVC_OK);
    EXPECT_EQ(NODAL_ParamListUsedCount(list_), 100u);
  }
}

TEST_F(Tree, ServesProgramsInC) {
  EXPECT_EQ(CountMembersInC(7), 100u);
  EXPECT_EQ(log_, "list sched_groups_members_groups 7\n");
}

TEST_F(Tree, SetChecksItsCaller) {
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

}  // namespace
}  // namespace platkit
