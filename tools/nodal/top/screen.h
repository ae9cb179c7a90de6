// The screens of the live view.
#ifndef NODAL_TOP_SCREEN_H
#define NODAL_TOP_SCREEN_H

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/nodal/top/column.h"

namespace nodal::top {

enum class ScreenId : uint8_t { kGroups, kMachines, kHost, kNodes, kHeaps };
inline constexpr size_t kScreens = 5;

struct Screen {
  ScreenId id;
  std::string_view name;  // the value of --screen
  std::string_view rows;  // what the rows are, in the plural
  std::span<const Column> (*columns)();
  std::string_view sort;  // the column by which rows are sorted at first; empty: the host's order
  bool isTree;
};

// All screens, in the order of ScreenId.
std::span<const Screen> Screens();

std::span<const Column> GroupColumns();
std::span<const Column> MachineColumns();
std::span<const Column> HostColumns();
std::span<const Column> NodeColumns();
std::span<const Column> HeapColumns();

// The first column of each screen.
extern const Column kNameColumn;

// The figures of the host, one per row.
struct HostFigure {
  Column figure;
  std::string_view report;  // the report that prints the figure; empty: none
  int constant = 0;         // added to the sum of the terms
};
std::span<const HostFigure> HostFigures();

std::vector<ColumnChoice> DefaultColumns(const Screen &screen);

// Finds a column by its name, in upper or lower case; NAME/s is the rate of a counter. Returns std::nullopt if there is
// none.
std::optional<ColumnChoice> FindColumn(const Screen &screen, std::string_view name);

// All columns, including the rates of counters.
std::vector<ColumnChoice> AllColumns(const Screen &screen);

}  // namespace nodal::top

#endif  // NODAL_TOP_SCREEN_H
