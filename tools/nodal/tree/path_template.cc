#include "tools/nodal/tree/path_template.h"

#include <algorithm>
#include <iterator>

namespace nodal {

std::vector<PathTemplate> AllPathTemplates() {
  std::vector<PathTemplate> templates;
  for (const platkit::Node &node : platkit::Nodes()) {
    const std::string_view path = node.path;
    if (node.isList) templates.push_back({&node, false, std::string(path.substr(0, path.find('[')))});
    if (!node.isRecord()) continue;
    PathTemplate record = {&node, true, {}};
    std::ranges::copy_if(path, std::back_inserter(record.path), [](char c) { return c != '[' && c != ']'; });
    templates.push_back(std::move(record));
  }
  return templates;
}

std::vector<std::string_view> SplitPath(std::string_view path) {
  std::vector<std::string_view> parts;
  while (!path.empty()) {
    path.remove_prefix(1);  // the slash
    const size_t end = std::min(path.find('/'), path.size());
    parts.push_back(path.substr(0, end));
    path.remove_prefix(end);
  }
  return parts;
}

}  // namespace nodal
