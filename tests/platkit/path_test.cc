#include "platkit/path.h"

#include <gtest/gtest.h>

#include "platkit/node_ref.h"

namespace platkit {
namespace {

// Writes a path from the result of ParsePath.
std::string Rewritten(const PathTarget &target) {
  ParamList *list = ParamList::Make();
  for (const PathTarget::Argument &argument : target.arguments) {
    EXPECT_EQ(argument.kind == ParamKind::kInt ? list->Add(argument.integer) : list->Add(argument.text), HVC_OK);
  }
  PathWriter path;
  WritePath(*target.node, list->params(), path);
  list->Destroy();
  EXPECT_TRUE(path.ok());
  return std::string(path.view());
}

TEST(Path, EveryRowHasAPathThatLeadsBackToIt) {
  for (const Node &node : Nodes()) {
    for (const bool asRecord : {false, true}) {
      if (asRecord ? !node.isRecord() : !node.isList) continue;
      PathTarget target{.node = &node, .asRecord = asRecord, .arguments = {}};
      const uint32_t count = asRecord ? node.recordArguments() : node.listArguments();
      for (uint32_t i = 0; i < count; ++i) {
        target.arguments.push_back(
            {.kind = node.arguments[i].kind, .integer = 100 - 7 * i, .text = "a/b%\n" + std::to_string(i)});
      }
      const std::string path = Rewritten(target);
      const PathTarget parsed = ParsePath(path);
      ASSERT_EQ(parsed.node, &node) << path;
      EXPECT_EQ(parsed.asRecord, asRecord) << path;
      EXPECT_EQ(Rewritten(parsed), path);
    }
  }
}

TEST(Path, Forms) {
  const PathTarget alloc = ParsePath("/sched/groups/4/memAllocationInKB");
  ASSERT_NE(alloc.node, nullptr);
  EXPECT_EQ(alloc.node->id, nodes::sched_groups_memAllocationInKB.id());
  EXPECT_EQ(alloc.arguments.at(0).integer, 4);

  const PathTarget reg = ParsePath("/hardware/pci/seg/0/bus/23/slot/10/func/2/pciConfigReg/size/4/addr/216");
  ASSERT_NE(reg.node, nullptr);
  EXPECT_EQ(reg.node->id, nodes::hardware_pci_seg_bus_slot_func_pciConfigReg_size_addr.id());
  EXPECT_EQ(reg.arguments.at(5).integer, 216);

  const PathTarget list = ParsePath("/sched/memClients/7/remapTypes");
  const PathTarget record = ParsePath("/sched/memClients/7/remapTypes/numa%2Fauto");
  EXPECT_FALSE(list.asRecord);
  EXPECT_TRUE(record.asRecord);
  EXPECT_EQ(record.arguments.at(1).text, "numa/auto");
}

TEST(Path, OneNodeHasOnePath) {
  for (const char *path :
       {"", "/", "sched/groups/4/groupName", "/sched/groups/04/groupName", "/sched/groups/+4/groupName",
        "/sched/groups/-0/groupName", "/sched/groups//groupName", "/sched/groups/4/groupName/",
        "/sched/groups/4/groupname", "/sched/groups/9223372036854775808/groupName", "/sched/groups/four/groupName",
        "/system/heaps/", "/system/heaps/a%2fb/stats", "/system/heaps/a%41/stats", "/system/heaps/a%/stats",
        "/system/heaps/a%2/stats", "/system/heaps/a%00/stats", "/system/heaps/a\nb/stats",
        "/sched/memClients/7/remapTypes/a/b"}) {
    EXPECT_EQ(ParsePath(path).node, nullptr) << path;
  }
  EXPECT_NE(ParsePath("/sched/groups/-1/groupName").node, nullptr);
  EXPECT_NE(ParsePath("/system/heaps//stats").node, nullptr) << "a heap may have an empty name";
}

TEST(Path, WhatDoesNotFitIsNotOk) {
  PathWriter path;
  path.Text(std::string(2000, '/'));
  EXPECT_FALSE(path.ok());
}

TEST(Path, AnIntegerMayBeWhatDoesNotFit) {
  PathWriter path;
  path.Literal(std::string(4094, 'x')).Integer(-1);
  EXPECT_TRUE(path.ok());
  path.Integer(1);
  EXPECT_FALSE(path.ok());
}

}  // namespace
}  // namespace platkit
