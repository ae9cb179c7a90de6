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

  // Returns the number, or std::nullopt if it is unavailable or unlimited.
  std::optional<uint64_t> Read(std::span<const std::byte> record) const;

  bool isSigned() const;
  std::string Text(uint64_t number) const;

  // Maps a number so that unsigned comparison orders signed numbers too. Mapping the result again returns the number.
  uint64_t Ordered(uint64_t number) const {
    return isSigned() ? number ^ uint64_t { 1 } << 63 : number;
  }
};

// Finds a number in a record by the name that `nodal get` prints, such as consumed or sizes[3].free. Returns
// std::nullopt if the record has no such number.
std::optional<FigureField> FindField(const platkit::RecordLayout &layout, std::string_view name);

// Whether the text matches a pattern in which '*' stands for any characters but '/'.
bool MatchesPattern(std::string_view pattern, std::string_view text);

class FigurePattern {
 public:
  // Throws a Failure if no record of the catalogue has such a figure.
  explicit FigurePattern(const std::string &text);

  bool Matches(std::string_view path) const { return MatchesPattern(path_, path); }

  // The text with which all matching paths begin.
  std::string_view prefix() const { return std::string_view(path_).substr(0, path_.find('*')); }

  const std::string &field() const { return field_; }

 private:
  bool Split(const std::string &text);

  std::string path_;
  std::string field_;
};

// Selects the entries whose paths match any of these patterns.
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
