#include "tools/nodal/tree/arguments.h"

#include "tools/nodal/support/text.h"

namespace nodal {

std::vector<NODAL_Param> ParamsOf(const Arguments &arguments) {
  std::vector<NODAL_Param> params;
  for (const Argument &argument : arguments) {
    NODAL_Param param = {.kind = argument.kind, .length = static_cast<uint32_t>(argument.text.size()), .integer = 0};
    if (argument.kind == ParamKind::kInt) {
      param.integer = argument.integer;
    } else {
      param.chars = argument.text.c_str();
    }
    params.push_back(param);
  }
  return params;
}

std::string PathForm(const Argument &argument) {
  platkit::PathWriter path;
  if (argument.kind == ParamKind::kInt) {
    path.Integer(argument.integer);
  } else {
    path.Text(argument.text);
  }
  return std::string(path.view());
}

std::string ShownForm(const Argument &argument) {
  return argument.kind == ParamKind::kInt ? std::to_string(argument.integer) : "'" + argument.text + "'";
}

std::string PathOf(const Node &node, const Arguments &arguments) {
  platkit::PathWriter path;
  platkit::WritePath(node, ParamsOf(arguments), path);
  return std::string(path.view());
}

std::string PathPrefix(const Node &node, const Arguments &arguments) {
  if (arguments.size() > node.pathArguments) return PathOf(node, arguments);
  std::string path;
  for (size_t i = 0; i < arguments.size(); ++i)
    path += std::string(node.pieces[i]) + PathForm(arguments[i]);
  return path;
}

}  // namespace nodal
