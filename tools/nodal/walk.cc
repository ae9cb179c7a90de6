#include "tools/nodal/walk.h"

#include <algorithm>

namespace nodal {
namespace {

bool HaveSameArguments(const Shape &a, const Shape &b) {
  const auto what = [](const platkit::Instance &instance) { return instance.what; };
  return std::ranges::equal(std::span(a.node->arguments).first(a.arguments()),
                            std::span(b.node->arguments).first(b.arguments()), {}, what, what);
}

// Of nodes without arguments, there is one each on a host.
std::string NameOf(const Shape &shape) {
  std::string name;
  for (const platkit::Instance &argument : std::span(shape.node->arguments).first(shape.arguments()))
    name += (name.empty() ? "" : "/") + std::string(argument.what);
  return name.empty() ? "host" : name;
}

}  // namespace

Walk::Walk(Tree &tree, const Part &part) : part_(part), instances_(tree) {
  for (const Shape &shape : AllShapes()) {
    if (!part.MayContain(shape)) continue;
    const auto family = std::ranges::find_if(
        families_, [&](const Family &members) { return HaveSameArguments(members.front(), shape); });
    if (family == families_.end()) {
      families_.push_back({shape});
    } else {
      family->push_back(shape);
    }
  }
}

void Walk::Visit(const Announcer &announcer, const Visitor &visitor) {
  for (const Family &family : families_) {
    Arguments arguments;
    size_t visits = 0;
    Descend(family, arguments, [&visits](const Node &, bool, const Arguments &) { ++visits; });
    announcer(NameOf(family.front()), visits);
    Descend(family, arguments, visitor);
  }
}

void Walk::Descend(const Family &family, Arguments &arguments, const Visitor &visitor) {
  const Shape &first = family.front();
  if (arguments.size() < first.arguments()) {
    for (const Argument &instance : instances_.Of(*first.node, arguments)) {
      arguments.push_back(instance);
      Descend(family, arguments, visitor);
      arguments.pop_back();
    }
    return;
  }
  for (const Shape &shape : family) {
    if (part_.Contains(PathOf(*shape.node, arguments))) visitor(*shape.node, shape.asRecord, arguments);
  }
}

}  // namespace nodal
