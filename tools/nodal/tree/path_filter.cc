#include "tools/nodal/tree/path_filter.h"

#include <algorithm>

#include "tools/nodal/support/output.h"

namespace nodal {
namespace {

// Whether a path of this form can be at or below `top`.
bool CanBeBelow(std::string_view top, std::string_view form) {
  const std::vector<std::string_view> parts = SplitPath(top), formParts = SplitPath(form);
  if (parts.size() > formParts.size()) return false;
  return std::ranges::equal(parts, std::span(formParts).first(parts.size()),
                            [](auto part, auto formPart) { return IsPlaceholder(formPart) || part == formPart; });
}

}  // namespace

bool IsAtOrBelow(std::string_view path, std::string_view top) {
  return path.starts_with(top) && (path.size() == top.size() || path[top.size()] == '/');
}

std::string WithoutEndingSlash(const std::string &path) {
  if (!path.starts_with('/')) throw Failure(path, "path must begin with '/'");
  return path.ends_with('/') ? path.substr(0, path.size() - 1) : path;
}

PathFilter::PathFilter(const std::vector<std::string> &paths, std::string_view onlyIfNamed)
    : onlyIfNamed_(onlyIfNamed) {
  for (const std::string &path : paths) {
    if (!path.starts_with('/')) throw UsageError("--only " + path, "path must begin with '/'");
    tops_.push_back(WithoutEndingSlash(path));
  }
}

bool PathFilter::Includes(std::string_view top, std::string_view path) const {
  return onlyIfNamed_.empty() || !IsAtOrBelow(path, onlyIfNamed_) || IsAtOrBelow(top, onlyIfNamed_);
}

bool PathFilter::Contains(std::string_view path) const {
  const auto isAbove = [&](std::string_view top) { return IsAtOrBelow(path, top) && Includes(top, path); };
  return tops_.empty() ? isAbove("") : std::ranges::any_of(tops_, isAbove);
}

bool PathFilter::MayContain(const PathTemplate &form) const {
  const auto canBeAbove = [&](std::string_view top) { return CanBeBelow(top, form.path) && Includes(top, form.path); };
  return tops_.empty() ? canBeAbove("") : std::ranges::any_of(tops_, canBeAbove);
}

void PathFilter::MarkFound(std::string_view path) {
  for (const std::string &top : tops_) {
    if (IsAtOrBelow(path, top)) found_.insert(top);
  }
}

void PathFilter::RequireAllFound() const {
  for (const std::string &top : tops_) {
    if (!found_.contains(top)) throw Failure(top.empty() ? "/" : top, HVC_NOT_FOUND);
  }
}

}  // namespace nodal
