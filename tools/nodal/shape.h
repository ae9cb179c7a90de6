// The forms of paths: what stands where in the path of a node.
#ifndef NODAL_SHAPE_H
#define NODAL_SHAPE_H

#include <string>
#include <string_view>
#include <vector>

#include "platkit/catalogue.h"

namespace nodal {

// A node's path in the catalogue's form, arguments in braces: once for the list, once for the record, where it is both.
struct Shape {
  const platkit::Node *node;
  bool asRecord;
  std::string path;

  size_t arguments() const { return asRecord ? node->recordArguments() : node->listArguments(); }
};

// In the order of the catalogue.
std::vector<Shape> AllShapes();

// The parts of a path that begins with a slash.
std::vector<std::string_view> Split(std::string_view path);

inline bool IsArgument(std::string_view part) { return part.starts_with('{'); }

}  // namespace nodal

#endif  // NODAL_SHAPE_H
