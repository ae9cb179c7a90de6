#include "tools/nodal/page/page_json.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/tools/nodal/page/record_bytes.h"

namespace nodal {
namespace {

using Json = nlohmann::json;

// Three groups. The allocation of the last one could not be read.
PageData ThreeGroups() {
  PageData data = {.host = "h", .time = "2026-03-14T09:26:53Z", .source = "snapshot"};
  data.groups.rows = {
      {.name = "host", .id = 0}, {.name = "a", .id = 7, .parent = 0}, {.name = "b", .id = 8, .parent = 0}};
  data.groups.rows[1].instances = {{"client", IntArgument(70)}};
  PageRecords records = {.node = nodes::sched_groups_memAllocationInKB.operator->()};
  records.bytes[0] =
      BytesOfRecord(GroupAllocRecord{.min = 5, .max = HVC_KB_NONE, .shares = 1, .minLimit = 9, .unread_28 = {}});
  records.bytes[1] =
      BytesOfRecord(GroupAllocRecord{.min = 6, .max = HVC_KB_NONE, .shares = 1, .minLimit = 9, .unread_28 = {}});
  records.unreadable[2] = HVC_NO_PERMISSION;
  data.groups.records = {records};
  return data;
}

const Json &FieldNamed(const Json &record, const std::string &name) {
  for (const Json &field : record["fields"]) {
    if (field["name"] == name) return field;
  }
  throw std::runtime_error("no field " + name);
}

TEST(PageJson, HasRowsByColumns) {
  const Json json = Json::parse(PageJson(ThreeGroups()));
  const Json &groups = json["families"]["group"];
  EXPECT_EQ(groups["count"], 3);
  EXPECT_EQ(groups["name"], Json::parse(R"(["host", "a", "b"])"));
  EXPECT_EQ(groups["parent"], Json::parse("[-1, 0, 0]"));
  EXPECT_EQ(groups["client"], Json::parse("[null, 70, null]"));
  EXPECT_EQ(json["instants"], Json::parse(R"(["2026-03-14T09:26:53Z"])"));
}

TEST(PageJson, ListsTheRowsOfARecord) {
  const Json json = Json::parse(PageJson(ThreeGroups()));
  const Json &record = json["families"]["group"]["records"][0];
  EXPECT_EQ(record["record"], "GroupAllocRecord");
  EXPECT_EQ(record["node"], "/sched/groups/{group:int}/memAllocationInKB");
  EXPECT_EQ(record["rows"], Json::parse("[0, 1]"));
  EXPECT_EQ(record["unreadable"], Json::parse(R"([[2, "No permission"]])"));
}

TEST(PageJson, PacksEqualValues) {
  const Json json = Json::parse(PageJson(ThreeGroups()));
  const Json &record = json["families"]["group"]["records"][0];
  EXPECT_EQ(FieldNamed(record, "min")["values"], Json::parse("[[5, 6]]"));
  EXPECT_EQ(FieldNamed(record, "minLimit")["values"], Json::parse("[9]"));
  EXPECT_EQ(FieldNamed(record, "min")["unit"], "KB");
  EXPECT_EQ(FieldNamed(record, "min")["meaning"], "configured reservation");
}

TEST(PageJson, MarksLimits) {
  const Json json = Json::parse(PageJson(ThreeGroups()));
  const Json &record = json["families"]["group"]["records"][0];
  EXPECT_EQ(FieldNamed(record, "max")["values"], Json::parse("[-1]"));
  EXPECT_EQ(FieldNamed(record, "max")["limit"], true);
  EXPECT_FALSE(FieldNamed(record, "min").contains("limit"));
}

TEST(PageJson, UnpacksArraysOfRecords) {
  PageData data;
  data.buddies.rows = {{.name = "memmap-00-hi"}};
  BuddyComprehensiveRecord buddy = {};
  buddy.sizes[9].free = 12;
  PageRecords records = {.node = nodes::system_buddy_comprehensive.operator->()};
  records.bytes[0] = BytesOfRecord(buddy);
  data.buddies.records = {records};
  const Json json = Json::parse(PageJson(data));
  const Json &record = json["families"]["buddy"]["records"][0];
  EXPECT_EQ(FieldNamed(record, "sizes[9].free")["values"], Json::parse("[12]"));
  EXPECT_EQ(FieldNamed(record, "sizes[18].used")["values"], Json::parse("[0]"));
}

TEST(PageJson, NamesUnreadableLists) {
  const PageData data = {.unreadableLists = {{"/system/heaps", HVC_NO_PERMISSION}}};
  EXPECT_EQ(Json::parse(PageJson(data))["unreadableLists"], Json::parse(R"([["/system/heaps", "No permission"]])"));
}

}  // namespace
}  // namespace nodal
