#include "tools/nodal/shape.h"

#include <algorithm>
#include <iterator>

namespace nodal {

std::vector<Shape> AllShapes() {
  std::vector<Shape> shapes;
  for (const platkit::Node &node : platkit::Nodes()) {
    const std::string_view path = node.path;
    if (node.isList) shapes.push_back({&node, false, std::string(path.substr(0, path.find('[')))});
    if (!node.isRecord()) continue;
    Shape record = {&node, true, {}};
    std::ranges::copy_if(path, std::back_inserter(record.path), [](char c) { return c != '[' && c != ']'; });
    shapes.push_back(std::move(record));
  }
  return shapes;
}

std::vector<std::string_view> Split(std::string_view path) {
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
