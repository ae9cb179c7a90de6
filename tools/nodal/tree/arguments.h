// The arguments of nodes, such as the number of a group, held by value.
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

// Converts the arguments to the library's form. The result points into the texts of `arguments`.
std::vector<NODAL_Param> ParamsOf(const Arguments &arguments);

// Formats an argument as in a path: a text is percent-encoded.
std::string PathForm(const Argument &argument);

// Formats an argument as in messages: a text is quoted.
std::string ShownForm(const Argument &argument);

// Returns the path of a node with all its arguments.
std::string PathOf(const Node &node, const Arguments &arguments);

// Returns the node's path up to the last given argument. `arguments` may have fewer arguments than the node takes.
std::string PathPrefix(const Node &node, const Arguments &arguments);

}  // namespace nodal

#endif  // NODAL_TREE_ARGUMENTS_H
