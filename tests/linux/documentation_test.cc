// Compares the tables of docs/linux.md with the catalogue: each table describes one record, and lists all of its
// fields.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "platkit/node_ref.h"
#include "tests/linux/linux_page.h"

namespace platkit {
namespace {

// The node whose path is the heading, or ends with it.
const Node *NodeOf(const std::string &heading) {
  const std::string end = heading.starts_with('/') ? heading : '/' + heading;
  const std::span<const Node> nodes = Nodes();
  const auto found = std::find_if(nodes.begin(), nodes.end(), [&](const Node &n) { return n.path.ends_with(end); });
  return found == nodes.end() || !found->isRecord() ? nullptr : &*found;
}

std::set<std::string> FieldsOf(const RecordLayout &record, const std::string &prefix = "") {
  std::set<std::string> names;
  for (const Field &field : record.fields) {
    const std::string name = prefix + std::string(field.name);
    if (field.type == FieldType::kEntries) {
      names.merge(FieldsOf(*field.entry, name + "."));
    } else if (field.type != FieldType::kGap) {
      names.insert(name);
    }
  }
  return names;
}

TEST(Documentation, EachTableHasTheFieldsOfItsRecord) {
  const std::vector<PageTable> tables = ReadFigureTables();
  EXPECT_GT(tables.size(), 15u);
  for (const PageTable &table : tables) {
    const Node *node = NodeOf(table.heading);
    ASSERT_NE(node, nullptr) << table.heading;
    std::set<std::string> documented;
    for (const std::vector<std::string> &row : table.rows) {
      ASSERT_EQ(row.size(), 5u) << table.heading << ": " << row[0];
      documented.insert(row[1]);
    }
    EXPECT_EQ(documented, FieldsOf(*node->record)) << table.heading;
  }
}

// Some records have no table of their own. The table of the hierarchy describes them, except the page-sharing pool,
// whose figures are all 0.
TEST(Documentation, EachRecordHasATable) {
  std::set<uint32_t> described = {nodes::sched_groups_groupName.id(),     nodes::sched_groups_groupTag.id(),
                                  nodes::sched_groups_parentGroupID.id(), nodes::sched_groups_groupFlags.id(),
                                  nodes::sched_groups_groupLeaderID.id(), nodes::memory_lpage_nodeList_psharePool.id()};
  for (const PageTable &table : ReadFigureTables()) {
    if (const Node *node = NodeOf(table.heading); node != nullptr) described.insert(node->id);
  }
  for (const Node &node : Nodes()) {
    const bool hasFigures = node.isRecord() && !FieldsOf(*node.record).empty();
    EXPECT_TRUE(!hasFigures || described.contains(node.id)) << node.name;
  }
}

TEST(Documentation, EachFigureIsRated) {
  for (const PageTable &table : ReadFigureTables()) {
    for (const std::vector<std::string> &row : table.rows) {
      ASSERT_EQ(row.size(), 5u);
      const std::string &source = row[4];
      const bool isAbsent = source == "absent";
      const auto has = [&source](const char *rating) { return source.find(rating) != std::string::npos; };
      EXPECT_TRUE(isAbsent || has("exact") || has("as read") || has("estimate")) << table.heading << ": " << row[1];
      EXPECT_FALSE(row[2].empty() || row[3].empty()) << table.heading << ": " << row[1];
      EXPECT_TRUE(!isAbsent || row[2] == "none") << table.heading << ": " << row[1];
    }
  }
}

}  // namespace
}  // namespace platkit
