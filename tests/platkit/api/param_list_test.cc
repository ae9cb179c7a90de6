// The operations on parameter lists.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platkit/nodal.h"

namespace {

struct Destroy {
  void operator()(NODAL_ParamList *list) const { NODAL_ParamListDestroy(list); }
};
using List = std::unique_ptr<NODAL_ParamList, Destroy>;

List Make(uint32_t capacity = 1) { return List(NODAL_ParamListCreate(NODAL_LIST_INSTANCES, capacity)); }

TEST(ParamList, KeepsIntegersAndTextsInOrder) {
  List list = Make();
  ASSERT_EQ(NODAL_ParamListAddInt(list.get(), -7), HVC_OK);
  ASSERT_EQ(NODAL_ParamListAddString(list.get(), "heap"), HVC_OK);
  ASSERT_EQ(NODAL_ParamListAddString(list.get(), ""), HVC_OK);
  EXPECT_EQ(NODAL_ParamListUsedCount(list.get()), 3u);
  int64_t value = 0;
  EXPECT_EQ(NODAL_ParamListGetInt64(list.get(), 0, &value), HVC_OK);
  EXPECT_EQ(value, -7);
  const char *text = nullptr;
  EXPECT_EQ(NODAL_ParamListGetString(list.get(), 1, &text), HVC_OK);
  EXPECT_STREQ(text, "heap");
  EXPECT_EQ(NODAL_ParamListGetString(list.get(), 2, &text), HVC_OK);
  EXPECT_STREQ(text, "");
}

TEST(ParamList, CapacityIsAHint) {
  List list = Make(1);
  for (int i = 0; i < 1000; ++i)
    ASSERT_EQ(NODAL_ParamListAddInt(list.get(), i), HVC_OK);
  int64_t value = 0;
  EXPECT_EQ(NODAL_ParamListGetInt64(list.get(), 999, &value), HVC_OK);
  EXPECT_EQ(value, 999);
}

TEST(ParamList, AHugeHintCostsNothing) { EXPECT_NE(Make(UINT32_MAX), nullptr); }

TEST(ParamList, TextsStayWhereTheyAre) {
  List list = Make();
  std::vector<const char *> pointers;
  for (uint32_t i = 0; i < 2000; ++i) {
    ASSERT_EQ(NODAL_ParamListAddString(list.get(), std::to_string(i).c_str()), HVC_OK);
    const char *text = nullptr;
    ASSERT_EQ(NODAL_ParamListGetString(list.get(), i, &text), HVC_OK);
    pointers.push_back(text);
  }
  for (uint32_t i = 0; i < 2000; ++i)
    EXPECT_EQ(std::to_string(i), pointers[i]);
}

TEST(ParamList, ALongText) {
  List list = Make();
  const std::string longText(100000, 'x');
  ASSERT_EQ(NODAL_ParamListAddString(list.get(), longText.c_str()), HVC_OK);
  const char *text = nullptr;
  ASSERT_EQ(NODAL_ParamListGetString(list.get(), 0, &text), HVC_OK);
  EXPECT_EQ(longText, text);
}

TEST(ParamList, RemovedTextsFreeTheirRoom) {
  List list(NODAL_ParamListCreateAndAllocateParams(NODAL_LIST_INSTANCES, 1, 8));
  for (int i = 0; i < 100; ++i) {
    ASSERT_EQ(NODAL_ParamListAddString(list.get(), "seven77"), HVC_OK);
    ASSERT_EQ(NODAL_ParamListRemoveLastParam(list.get()), HVC_OK);
  }
  EXPECT_EQ(NODAL_ParamListUsedCount(list.get()), 0u);
  EXPECT_EQ(NODAL_ParamListRemoveLastParam(list.get()), HVC_NOT_FOUND);
}

TEST(ParamList, FixedRoomEnds) {
  List list(NODAL_ParamListCreateAndAllocateParams(NODAL_LIST_INSTANCES, 2, 10));
  EXPECT_EQ(NODAL_ParamListAddString(list.get(), "0123456789"), HVC_LIMIT_EXCEEDED);
  EXPECT_EQ(NODAL_ParamListAddString(list.get(), "012345678"), HVC_OK);
  EXPECT_EQ(NODAL_ParamListAddString(list.get(), ""), HVC_LIMIT_EXCEEDED);
  EXPECT_EQ(NODAL_ParamListAddInt(list.get(), 1), HVC_OK);
  EXPECT_EQ(NODAL_ParamListAddInt(list.get(), 2), HVC_LIMIT_EXCEEDED);
  EXPECT_EQ(NODAL_ParamListUsedCount(list.get()), 2u);
}

TEST(ParamList, IntegersMustFitTheirType) {
  List list = Make();
  for (const int64_t value : {int64_t{4294967295}, int64_t{-1}, int64_t{4294967296}, INT64_MIN}) {
    ASSERT_EQ(NODAL_ParamListAddInt(list.get(), value), HVC_OK);
  }
  int32_t narrow = 0;
  uint32_t wide = 0;
  EXPECT_EQ(NODAL_ParamListGetInt32(list.get(), 0, &narrow), HVC_OUT_OF_RANGE);
  EXPECT_EQ(NODAL_ParamListGetUInt32(list.get(), 0, &wide), HVC_OK);
  EXPECT_EQ(wide, 4294967295u);
  EXPECT_EQ(NODAL_ParamListGetInt32(list.get(), 1, &narrow), HVC_OK);
  EXPECT_EQ(narrow, -1);
  EXPECT_EQ(NODAL_ParamListGetUInt32(list.get(), 1, &wide), HVC_OUT_OF_RANGE);
  EXPECT_EQ(NODAL_ParamListGetUInt32(list.get(), 2, &wide), HVC_OUT_OF_RANGE);
  EXPECT_EQ(NODAL_ParamListGetInt32(list.get(), 3, &narrow), HVC_OUT_OF_RANGE);
}

TEST(ParamList, WrongKindsAndIndexes) {
  List list = Make();
  ASSERT_EQ(NODAL_ParamListAddString(list.get(), "text"), HVC_OK);
  ASSERT_EQ(NODAL_ParamListAddInt(list.get(), 5), HVC_OK);
  int64_t value = 0;
  const char *text = nullptr;
  EXPECT_EQ(NODAL_ParamListGetInt64(list.get(), 0, &value), HVC_WRONG_KIND);
  EXPECT_EQ(NODAL_ParamListGetString(list.get(), 1, &text), HVC_WRONG_KIND);
  EXPECT_EQ(NODAL_ParamListGetInt64(list.get(), 2, &value), HVC_NOT_FOUND);
  EXPECT_EQ(NODAL_ParamListGetString(list.get(), UINT32_MAX, &text), HVC_NOT_FOUND);
  EXPECT_EQ(NODAL_ParamListGetParam(list.get(), 2), nullptr);
  EXPECT_EQ(NODAL_ParamGetInt(NODAL_ParamListGetParam(list.get(), 1)), 5);
  EXPECT_EQ(NODAL_ParamGetInt(NODAL_ParamListGetParam(list.get(), 0)), 0);
}

TEST(ParamList, NullPointers) {
  List list = Make();
  ASSERT_EQ(NODAL_ParamListAddInt(list.get(), 5), HVC_OK);
  EXPECT_EQ(NODAL_ParamListAddInt(nullptr, 1), HVC_BAD_PARAM);
  EXPECT_EQ(NODAL_ParamListAddString(nullptr, "a"), HVC_BAD_PARAM);
  EXPECT_EQ(NODAL_ParamListAddString(list.get(), nullptr), HVC_BAD_PARAM);
  EXPECT_EQ(NODAL_ParamListRemoveLastParam(nullptr), HVC_BAD_PARAM);
  EXPECT_EQ(NODAL_ParamListUsedCount(nullptr), 0u);
  EXPECT_EQ(NODAL_ParamListGetInt64(list.get(), 0, nullptr), HVC_BAD_PARAM);
  EXPECT_EQ(NODAL_ParamListGetInt32(nullptr, 0, nullptr), HVC_BAD_PARAM);
  EXPECT_EQ(NODAL_ParamListGetString(list.get(), 0, nullptr), HVC_BAD_PARAM);
  EXPECT_EQ(NODAL_ParamListGetParam(nullptr, 0), nullptr);
  EXPECT_EQ(NODAL_ParamGetInt(nullptr), 0);
  NODAL_ParamListDestroy(nullptr);
}

TEST(ParamList, UnknownKindsAreRefused) {
  EXPECT_EQ(NODAL_ParamListCreate(2, 1), nullptr);
  EXPECT_EQ(NODAL_ParamListCreateAndAllocateParams(UINT32_MAX, 1, 1), nullptr);
  NODAL_ParamListDestroy(NODAL_ParamListCreate(NODAL_LIST_INPUT, 1));
}

}  // namespace
