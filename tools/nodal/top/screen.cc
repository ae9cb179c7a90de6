#include "tools/nodal/top/screen.h"

#include <strings.h>

namespace nodal::top {

constexpr Column kNameColumn = {.name = "name", .use = Use::kText, .isDefault = true, .meaning = "the name"};

std::span<const Screen> Screens() {
  static constexpr Screen kTable[] = {
      {ScreenId::kGroups, "groups", "groups", GroupColumns, "consumed", true},
      {ScreenId::kMachines, "machines", "machines", MachineColumns, "consumed", false},
      {ScreenId::kHost, "host", "figures", HostColumns, "", false},
      {ScreenId::kNodes, "nodes", "allocators and pools", NodeColumns, "", true},
      {ScreenId::kHeaps, "heaps", "heaps", HeapColumns, "size", false},
  };
  static_assert(std::size(kTable) == kScreens);
  return kTable;
}

std::vector<ColumnChoice> DefaultColumns(const Screen &screen) {
  std::vector<ColumnChoice> choices;
  for (const Column &column : screen.columns()) {
    const bool hasRate = column.isCounter() || column.use == Use::kRow;
    if (column.isDefault && !column.isCounter()) choices.push_back({&column, false});
    if (column.isDefault && hasRate && column.name != "percent") choices.push_back({&column, true});
  }
  return choices;
}

std::vector<ColumnChoice> AllColumns(const Screen &screen) {
  std::vector<ColumnChoice> choices;
  for (const Column &column : screen.columns()) {
    choices.push_back({&column, false});
    if (column.isCounter() || (column.use == Use::kRow && column.name != "percent")) choices.push_back({&column, true});
  }
  return choices;
}

std::optional<ColumnChoice> FindColumn(const Screen &screen, std::string_view name) {
  const std::string text(name);
  if (strcasecmp(text.c_str(), kNameColumn.name.data()) == 0) return ColumnChoice{&kNameColumn, false};
  for (const ColumnChoice &choice : AllColumns(screen)) {
    if (strcasecmp(text.c_str(), choice.name().c_str()) == 0) return choice;
  }
  return std::nullopt;
}

}  // namespace nodal::top
