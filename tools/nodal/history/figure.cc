#include "tools/nodal/history/figure.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "tools/nodal/support/output.h"
#include "tools/nodal/tree/path_template.h"

namespace nodal {
namespace {

using platkit::Field;
using platkit::FieldType;
using platkit::RecordLayout;

bool IsNumber(const Field &field) {
  return field.type != FieldType::kText && field.type != FieldType::kEntries && field.type != FieldType::kGap;
}

const Field *FieldNamed(const RecordLayout &layout, std::string_view name) {
  const auto found = std::ranges::find(layout.fields, name, &Field::name);
  return found == layout.fields.end() ? nullptr : &*found;
}

// Whether a path that matches the pattern can have this form.
bool CanHaveForm(std::string_view pattern, std::string_view form) {
  const std::vector<std::string_view> parts = SplitPath(pattern), formParts = SplitPath(form);
  return std::ranges::equal(parts, formParts, [](std::string_view part, std::string_view formPart) {
    return IsPlaceholder(formPart) || MatchesPattern(part, formPart);
  });
}

}  // namespace

std::optional<uint64_t> FigureField::Read(std::span<const std::byte> record) const {
  uint64_t number = 0;
  std::memcpy(&number, record.data() + offset, field->size);
  const uint64_t allOnes = UINT64_MAX >> (64 - 8 * field->size);
  // In a field of one or two bytes, all bits set is an ordinary number.
  if (number == allOnes && field->size >= sizeof(uint32_t)) return std::nullopt;
  if (field->type == FieldType::kI32) return static_cast<uint64_t>(static_cast<int32_t>(number));
  return number;
}

bool FigureField::isSigned() const { return field->type == FieldType::kI32 || field->type == FieldType::kI64; }

std::string FigureField::Text(uint64_t number) const {
  return isSigned() ? std::to_string(static_cast<int64_t>(number)) : std::to_string(number);
}

std::optional<FigureField> FindField(const RecordLayout &layout, std::string_view name) {
  const size_t bracket = name.find('[');
  const Field *field = FieldNamed(layout, name.substr(0, bracket));
  if (field == nullptr) return std::nullopt;
  if (bracket == std::string_view::npos) {
    if (!IsNumber(*field)) return std::nullopt;
    return FigureField{field->offset, field};
  }
  const size_t end = name.find("].", bracket);
  if (field->type != FieldType::kEntries || end == std::string_view::npos) return std::nullopt;
  uint32_t index = 0;
  const char *digitsEnd = name.data() + end;
  const auto parsed = std::from_chars(name.data() + bracket + 1, digitsEnd, index);
  if (parsed.ec != std::errc() || parsed.ptr != digitsEnd || index >= field->count) return std::nullopt;
  std::optional<FigureField> inner = FindField(*field->entry, name.substr(end + 2));
  if (inner) inner->offset += field->offset + index * field->size;
  return inner;
}

// After a mismatch, it is enough that the last '*' matches more characters: it can match everything that an earlier '*'
// could.
bool MatchesPattern(std::string_view pattern, std::string_view text) {
  constexpr size_t kNone = std::string_view::npos;
  size_t p = 0, t = 0, star = kNone, starText = 0;
  while (t < text.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      starText = t;
    } else if (p < pattern.size() && pattern[p] == text[t]) {
      ++p, ++t;
      // An earlier '*' cannot match this slash.
      if (pattern[p - 1] == '/') star = kNone;
    } else if (star != kNone && text[starText] != '/') {
      p = star + 1;
      t = ++starText;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', p) == kNone;
}

FigurePattern::FigurePattern(const std::string &text) {
  if (!Split(text))
    throw Failure(text, "no such figure (expected PATH.FIELD, such as /sched/groups/*/stats/memoryStats.consumed)");
}

// Tries each dot, because a path can contain dots, and so can the name of a field in an array.
bool FigurePattern::Split(const std::string &text) {
  if (!text.starts_with('/')) return false;
  for (size_t dot = text.rfind('.'); dot != std::string::npos && dot > text.rfind('/');
       dot = text.rfind('.', dot - 1)) {
    path_ = text.substr(0, dot);
    field_ = text.substr(dot + 1);
    for (const PathTemplate &form : AllPathTemplates()) {
      if (form.asRecord && CanHaveForm(path_, form.path) && FindField(*form.node->record, field_)) return true;
    }
  }
  return false;
}

bool FigureFilter::Contains(std::string_view key) const {
  return std::ranges::any_of(patterns_, [key](const FigurePattern &pattern) { return pattern.Matches(key); });
}

bool FigureFilter::MayContain(std::string_view first, std::string_view end) const {
  return std::ranges::any_of(patterns_, [&](const FigurePattern &pattern) {
    const std::string_view prefix = pattern.prefix();
    return (end.empty() || prefix < end) && first.substr(0, prefix.size()) <= prefix;
  });
}

}  // namespace nodal
