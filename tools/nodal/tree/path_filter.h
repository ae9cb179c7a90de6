// Selects paths of the tree: the --only option of capture and diff.
#ifndef NODAL_TREE_PATH_FILTER_H
#define NODAL_TREE_PATH_FILTER_H

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tools/nodal/tree/path_template.h"

namespace nodal {

// Whether `path` is `top` or below it.
bool IsAtOrBelow(std::string_view path, std::string_view top);

// Throws a Failure if the path is not absolute.
std::string WithoutEndingSlash(const std::string &path);

// Contains the named paths and everything below them, or everything if no path is named.
class PathFilter {
 public:
  // `onlyIfNamed` is the top of a subtree that the filter omits unless a path at or below this top is named. If
  // `onlyIfNamed` is "", there is no such subtree. Throws a UsageError if a path is not absolute: the paths are values
  // of
  // --only.
  explicit PathFilter(const std::vector<std::string> &paths, std::string_view onlyIfNamed = "");

  bool Contains(std::string_view path) const;

  // Whether paths are named.
  bool hasPaths() const { return !tops_.empty(); }

  // Whether the filter can contain a path of this form.
  bool MayContain(const PathTemplate &form) const;

  // RequireAllFound throws a Failure unless MarkFound was called with a path at or below each named path.
  void MarkFound(std::string_view path);
  void RequireAllFound() const;

 private:
  bool Includes(std::string_view top, std::string_view path) const;

  std::vector<std::string> tops_;
  std::string_view onlyIfNamed_;
  std::set<std::string> found_;
};

}  // namespace nodal

#endif  // NODAL_TREE_PATH_FILTER_H
