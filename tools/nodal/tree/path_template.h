// The forms that paths of nodes have, with placeholders for instance arguments.
#ifndef NODAL_TREE_PATH_TEMPLATE_H
#define NODAL_TREE_PATH_TEMPLATE_H

#include <string>
#include <string_view>
#include <vector>

#include "platkit/catalogue.h"

namespace nodal {

// A node's path as the catalogue of nodes writes it, such as /sched/groups/{group:int}/groupName. A node that is both a
// list and a record has one template for each.
struct PathTemplate {
  const platkit::Node *node;
  bool asRecord;
  std::string path;

  size_t arguments() const { return asRecord ? node->recordArguments() : node->listArguments(); }
};

// Returns the templates of all nodes, in the order of the catalogue.
std::vector<PathTemplate> AllPathTemplates();

// Returns the parts of a path between its slashes. REQUIRES: the path is empty or begins with a slash.
std::vector<std::string_view> SplitPath(std::string_view path);

inline bool IsPlaceholder(std::string_view part) { return part.starts_with('{'); }

}  // namespace nodal

#endif  // NODAL_TREE_PATH_TEMPLATE_H
