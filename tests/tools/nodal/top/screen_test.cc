#include "tools/nodal/top/screen.h"

#include <set>

#include "tests/tools/nodal/program.h"
#include "tools/nodal/top/reading.h"

namespace nodal::top {
namespace {

const Screen &ScreenOf(ScreenId id) { return Screens()[static_cast<size_t>(id)]; }

std::vector<std::string> ColumnsOfReport(const std::string &report) {
  const testing_support::Outcome run =
      testing_support::Run({.program = KESTREL_PROGRAM, .arguments = {"-c", SAMPLE_SNAPSHOT, "-r", report, "-q"}});
  EXPECT_EQ(run.exitStatus, 0) << run.errors;
  std::vector<std::string> names;
  std::string header = run.output.substr(0, run.output.find('\n')) + ",";
  for (size_t comma; (comma = header.find(',')) != std::string::npos; header.erase(0, comma + 1))
    names.push_back(header.substr(0, comma));
  return names;
}

TEST(TopScreen, IsInTheOrderOfItsIdentifier) {
  for (size_t i = 0; i < kScreens; ++i)
    EXPECT_EQ(static_cast<size_t>(Screens()[i].id), i);
}

TEST(TopScreen, ColumnsAreFieldsOfRecords) {
  for (const Screen &screen : Screens()) {
    std::set<std::string_view> names = {kNameColumn.name};
    for (const Column &column : screen.columns()) {
      EXPECT_TRUE(names.insert(column.name).second) << column.name;
      EXPECT_FALSE(column.Description().empty()) << column.name;
      for (const Term &term : column.terms) {
        if (!term) continue;
        const platkit::Node *node = platkit::FindNode(static_cast<uint32_t>(term.node));
        ASSERT_TRUE(node != nullptr && node->isRecord()) << column.name;
        const platkit::Field &field = FieldAt(*node->record, term.offset);
        EXPECT_NE(field.type, platkit::FieldType::kGap) << column.name;
        EXPECT_EQ(field.type == platkit::FieldType::kText, column.use == Use::kText) << column.name;
        // The fields of one figure have the same unit.
        EXPECT_EQ(field.unit, column.field().unit) << column.name;
      }
      for (const std::string_view part : column.sumOf)
        EXPECT_EQ(FindColumn(screen, part).has_value(), !part.empty()) << column.name;
    }
    EXPECT_FALSE(DefaultColumns(screen).empty());
    EXPECT_TRUE(screen.sort.empty() || FindColumn(screen, screen.sort)) << screen.name;
  }
}

TEST(TopScreen, ColumnsHaveTheNamesOfTheReports) {
  const std::multimap<ScreenId, std::string> reports = {
      {ScreenId::kGroups, "group-stats"},   {ScreenId::kGroups, "uw-stats"},    {ScreenId::kMachines, "vm-stats"},
      {ScreenId::kMachines, "swap-stats"},  {ScreenId::kMachines, "zip-stats"}, {ScreenId::kMachines, "guest-stats"},
      {ScreenId::kMachines, "lpage-stats"}, {ScreenId::kNodes, "buddy-stats"},  {ScreenId::kNodes, "lpool-stats"},
      {ScreenId::kHeaps, "heap-stats"},
  };
  // Columns without a counterpart, because the tree, the row or another column shows the same.
  const std::set<std::string> others = {"type", "schedGrp", "parSchedGroup", "worldGrp", "nodeID"};
  for (const auto &[screen, report] : reports) {
    const std::vector<std::string> names = ColumnsOfReport(report);
    EXPECT_GT(names.size(), 4u) << report;
    for (const std::string &name : names)
      EXPECT_TRUE(FindColumn(ScreenOf(screen), name) || others.contains(name)) << report << " " << name;
  }
}

TEST(TopScreen, TheHostHasTheFiguresOfItsReports) {
  std::set<std::string_view> figures;
  for (const HostFigure &figure : HostFigures()) {
    EXPECT_TRUE(figures.insert(figure.figure.name).second) << figure.figure.name;
    EXPECT_FALSE(figure.figure.Description().empty()) << figure.figure.name;
  }
  for (const char *report : {"comp-stats", "pshare-stats"}) {
    for (const std::string &name : ColumnsOfReport(report))
      EXPECT_TRUE(figures.contains(name)) << report << " " << name;
  }
  std::set<std::string_view> reports;
  for (const HostFigure &figure : HostFigures())
    reports.insert(figure.report);
  EXPECT_EQ(reports, (std::set<std::string_view>{"", "comp-stats", "pshare-stats", "pshareHint-stats"}));
}

TEST(TopScreen, OnlyCountersHaveRates) {
  const Screen &machines = ScreenOf(ScreenId::kMachines);
  EXPECT_TRUE(FindColumn(machines, "SWAPin/S"));
  EXPECT_FALSE(FindColumn(machines, "memSize/s"));
  EXPECT_FALSE(FindColumn(machines, ""));
  EXPECT_EQ(FindColumn(machines, "NAME")->column, &kNameColumn);
}

TEST(TopScreen, OnlyNeededRecordsAreRead) {
  const Screen &groups = ScreenOf(ScreenId::kGroups);
  const auto nodesOf = [&](const std::string &name) {
    const ColumnChoice choices[] = {*FindColumn(groups, name)};
    return NodesOf(groups, choices);
  };
  EXPECT_EQ(nodesOf("gid").count(), 0u);
  EXPECT_EQ(nodesOf("consumed").count(), 1u);
  EXPECT_EQ(nodesOf("swapped").count(), 2u);
  EXPECT_EQ(nodesOf("withSwap"), nodesOf("consumed") | nodesOf("swapped"));
}

}  // namespace
}  // namespace nodal::top
