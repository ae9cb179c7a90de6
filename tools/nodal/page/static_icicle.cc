#include "tools/nodal/page/static_icicle.h"

#include <algorithm>
#include <cstdio>

#include "tools/nodal/page/html.h"

namespace nodal {
namespace {

constexpr double kWidth = 1000;
constexpr double kRowHeight = 26;
constexpr double kMinWidth = 2;
constexpr double kMinLabelledWidth = 40;
constexpr double kCharacterWidth = 8;
constexpr int kMaxLevels = 8;

struct Box {
  double extent = 0;  // what the group consumes or, if that is not available, what its members consume
  double ofMembers = 0;
  double left = 0;
  double width = 0;
  double used = 0;  // the width of the members that have been placed
  int level = 0;
  bool hasAmount = false;
};

std::vector<Box> Measure(const PageFamily &groups) {
  std::vector<Box> boxes(groups.rows.size());
  // Goes backwards, because members come after their group.
  for (size_t row = boxes.size(); row-- > 0;) {
    Box &box = boxes[row];
    const auto stats = groups.Get(nodes::sched_groups_stats_memoryStats, row);
    box.hasAmount = stats && stats->consumed != HVC_KB_NONE;
    box.extent = box.hasAmount ? static_cast<double>(stats->consumed) : box.ofMembers;
    if (groups.rows[row].parent >= 0) boxes[static_cast<size_t>(groups.rows[row].parent)].ofMembers += box.extent;
  }
  return boxes;
}

// If the members of a group consume more than the group, because they share memory, their boxes are narrowed to fit.
void Place(const PageFamily &groups, std::vector<Box> &boxes) {
  if (boxes.empty()) return;
  boxes[0].width = boxes[0].extent > 0 ? kWidth : 0;
  for (size_t row = 1; row < boxes.size(); ++row) {
    Box &group = boxes[static_cast<size_t>(groups.rows[row].parent)];
    Box &box = boxes[row];
    const double whole = std::max(group.extent, group.ofMembers);
    box.width = whole > 0 ? group.width * box.extent / whole : 0;
    box.left = group.left + group.used;
    box.level = group.level + 1;
    group.used += box.width;
  }
}

// How near a group is to its limit: "far", "half", "near" or "at"; "none" if it has no limit.
const char *Nearness(const PageFamily &groups, size_t row, double consumed) {
  const auto allocation = groups.Get(nodes::sched_groups_memAllocationInKB, row);
  if (!allocation || allocation->max == HVC_KB_NONE || allocation->max == 0) return "none";
  const double part = consumed / static_cast<double>(allocation->max);
  return part >= 0.95 ? "at" : part >= 0.8 ? "near" : part >= 0.6 ? "half" : "far";
}

std::string Label(const PageRow &row, const Box &box) {
  if (box.width < kMinLabelledWidth) return "";
  char place[96];
  std::snprintf(place, sizeof place, " x=\"%.1f\" y=\"%.1f\" textLength=\"%.1f\" lengthAdjust=\"spacingAndGlyphs\"",
                box.left + 4, box.level * kRowHeight + 17, box.width - 8);
  const bool fits = static_cast<double>(row.name.size()) * kCharacterWidth < box.width - 8;
  std::string attributes = place;
  if (fits) attributes.resize(attributes.find(" textLength"));
  return Element("text", HtmlText(row.name), attributes);
}

std::string BoxToSvg(const PageFamily &groups, size_t index, const Box &box) {
  const PageRow &row = groups.rows[index];
  char place[128];
  std::snprintf(place, sizeof place, " x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" class=\"box-%s\"", box.left,
                box.level * kRowHeight, std::max(box.width - 1, 1.0), kRowHeight - 2,
                Nearness(groups, index, box.extent));
  const auto kb = box.hasAmount ? std::optional(static_cast<uint64_t>(box.extent)) : std::nullopt;
  const std::string title = Element("title", HtmlText(row.name) + ": " + AmountText(kb));
  return Element("g", title + Element("rect", "", place) + Label(row, box)) + "\n";
}

}  // namespace

std::string StaticIcicle(const PageFamily &groups) {
  std::vector<Box> boxes = Measure(groups);
  Place(groups, boxes);
  std::string svg;
  int levels = 1;
  for (size_t row = 0; row < boxes.size(); ++row) {
    if (boxes[row].width < kMinWidth || boxes[row].level >= kMaxLevels) continue;
    levels = std::max(levels, boxes[row].level + 1);
    svg += BoxToSvg(groups, row, boxes[row]);
  }
  char attributes[160];
  std::snprintf(
      attributes, sizeof attributes,
      " class=\"static-icicle\" viewBox=\"0 0 %.0f %.0f\" role=\"img\" aria-label=\"Groups by memory consumed\"",
      kWidth, levels * kRowHeight);
  return Element("svg", svg, attributes);
}

}  // namespace nodal
