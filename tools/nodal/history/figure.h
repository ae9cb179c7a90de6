// Figures of a tree by name: PATH.FIELD, such as /sched/groups/*/stats/memoryStats.consumed.
#ifndef NODAL_HISTORY_FIGURE_H
#define NODAL_HISTORY_FIGURE_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platkit/catalogue.h"
#include "platkit/history/sample_table.h"

namespace nodal {

// A number in a record.
struct FigureField {
  uint32_t offset;
  const platkit::Field *field;

  // The number, or nothing if all bits are set: unavailable or unlimited.
  std::optional<uint64_t> Read(std::span<const std::byte> record) const;

  bool isSigned() const;
  std::string Text(uint64_t number) const;

  // Maps numbers to others in the same order, so that unsigned comparison orders signed numbers too.
  uint64_t Ordered(uint64_t number) const {
    return isSigned() ? number ^ uint64_t { 1 } << 63 : number;
  }
};

// The field of a record by its name as `nodal get` prints it, such as consumed or sizes[3].free.
std::optional<FigureField> FindField(const platkit::RecordLayout &layout, std::string_view name);

// Whether the text matches a pattern in which '*' stands for any characters but '/'.
bool MatchesPattern(std::string_view pattern, std::string_view text);

class FigurePattern {
 public:
  // Throws a Failure if no record of the catalogue has such a figure.
  explicit FigurePattern(const std::string &text);

  bool Matches(std::string_view path) const { return MatchesPattern(path_, path); }

  // The text that all matching paths begin with.
  std::string_view prefix() const { return std::string_view(path_).substr(0, path_.find('*')); }

  const std::string &field() const { return field_; }

 private:
  bool Split(const std::string &text);

  std::string path_;
  std::string field_;
};

// Selects the entries that contain figures of any of these patterns.
class FigureFilter : public platkit::history::KeyFilter {
 public:
  // The patterns must live as long as the filter.
  explicit FigureFilter(const std::vector<FigurePattern> &patterns) : patterns_(patterns) {}

  bool Contains(std::string_view key) const override;
  bool MayContain(std::string_view first, std::string_view end) const override;

 private:
  const std::vector<FigurePattern> &patterns_;
};

}  // namespace nodal

#endif  // NODAL_HISTORY_FIGURE_H
