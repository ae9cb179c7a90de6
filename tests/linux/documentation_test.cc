// Compares the tables of docs/linux.md with the catalogue: each table describes one record, and lists all of its
// fields.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "platkit/node_ref.h"

namespace platkit {
namespace {

struct Table {
  std::string heading;
  std::vector<std::vector<std::string>> rows;  // five cells each: kind of group, field, file, value, source
};

std::vector<std::string> Cells(const std::string &line) {
  std::vector<std::string> cells;
  for (size_t start = 1, end = 0; (end = line.find('|', start)) != std::string::npos; start = end + 1) {
    std::string cell = line.substr(start, end - start);
    cell.erase(0, cell.find_first_not_of(' '));
    cell.erase(cell.find_last_not_of(' ') + 1);
    cells.push_back(cell);
  }
  return cells;
}

// Reads the tables that have a column of fields.
std::vector<Table> ReadTables() {
  std::ifstream page(LINUX_PAGE);
  EXPECT_TRUE(page);
  std::vector<Table> tables;
  std::string heading;
  bool inTable = false;
  for (std::string line; std::getline(page, line);) {
    if (line.starts_with("### ")) heading = line.substr(4);
    if (!line.starts_with('|')) {
      inTable = false;
    } else if (const std::vector<std::string> cells = Cells(line); cells.size() > 1 && cells[1] == "field") {
      tables.push_back({heading, {}});
      inTable = true;
    } else if (inTable && !line.starts_with("|---")) {
      tables.back().rows.push_back(cells);
    }
  }
  return tables;
}

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
  const std::vector<Table> tables = ReadTables();
  EXPECT_GT(tables.size(), 15u);
  for (const Table &table : tables) {
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

// Some records have no table: the table of the hierarchy describes them, or, for the page-sharing pool, all figures are
// 0.
TEST(Documentation, EachRecordHasATable) {
  std::set<uint32_t> described = {nodes::sched_groups_groupName.id(),     nodes::sched_groups_groupTag.id(),
                                  nodes::sched_groups_parentGroupID.id(), nodes::sched_groups_groupFlags.id(),
                                  nodes::sched_groups_groupLeaderID.id(), nodes::memory_lpage_nodeList_psharePool.id()};
  for (const Table &table : ReadTables()) {
    if (const Node *node = NodeOf(table.heading); node != nullptr) described.insert(node->id);
  }
  for (const Node &node : Nodes()) {
    const bool hasFigures = node.isRecord() && !FieldsOf(*node.record).empty();
    EXPECT_TRUE(!hasFigures || described.contains(node.id)) << node.name;
  }
}

TEST(Documentation, EachFigureIsExactOrAnEstimateOrAbsent) {
  for (const Table &table : ReadTables()) {
    for (const std::vector<std::string> &row : table.rows) {
      ASSERT_EQ(row.size(), 5u);
      const std::string &source = row[4];
      const bool isAbsent = source == "absent";
      EXPECT_TRUE(isAbsent || source.find("exact") != std::string::npos || source.find("estimate") != std::string::npos)
          << table.heading << ": " << row[1];
      EXPECT_FALSE(row[2].empty() || row[3].empty()) << table.heading << ": " << row[1];
      EXPECT_TRUE(!isAbsent || row[2] == "none") << table.heading << ": " << row[1];
    }
  }
}

}  // namespace
}  // namespace platkit
