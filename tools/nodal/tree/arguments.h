// Instance arguments of nodes, as values.
#ifndef NODAL_TREE_ARGUMENTS_H
#define NODAL_TREE_ARGUMENTS_H

#include <string>
#include <vector>

#include "platkit/path.h"

namespace nodal {

using platkit::Node;
using platkit::ParamKind;
using Argument = platkit::PathTarget::Argument;
using Arguments = std::vector<Argument>;

inline Argument IntArgument(int64_t value) { return {.kind = ParamKind::kInt, .integer = value, .text = {}}; }
inline Argument TextArgument(std::string_view text) {
  return {.kind = ParamKind::kText, .integer = 0, .text = std::string(text)};
}
inline Argument ArgumentOf(const NODAL_Param &param) {
  return param.kind == ParamKind::kInt ? IntArgument(param.integer) : TextArgument(param.text());
}

// In the library's form. Refers to the texts in `arguments`.
std::vector<NODAL_Param> ParamsOf(const Arguments &arguments);

// As in a path: texts are percent-encoded.
std::string PathForm(const Argument &argument);

// As in messages: texts are quoted.
std::string ShownForm(const Argument &argument);

// The path of a node with all its arguments.
std::string PathOf(const Node &node, const Arguments &arguments);

// The path up to the last of the given arguments, which may be fewer than the node takes.
std::string PathPrefix(const Node &node, const Arguments &arguments);

}  // namespace nodal

#endif  // NODAL_TREE_ARGUMENTS_H
