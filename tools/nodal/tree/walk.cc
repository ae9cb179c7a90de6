#include "tools/nodal/tree/walk.h"

#include <algorithm>

namespace nodal {
namespace {

bool IsRegister(const PathTemplate &form) {
  return form.node->id == nodes::hardware_pci_seg_bus_slot_func_pciConfigReg_size_addr.id();
}

bool HaveSameArguments(const PathTemplate &a, const PathTemplate &b) {
  const auto what = [](const platkit::Instance &instance) { return instance.what; };
  return std::ranges::equal(std::span(a.node->arguments).first(a.arguments()),
                            std::span(b.node->arguments).first(b.arguments()), {}, what, what);
}

// Returns the kinds of the arguments, or "host" if there are none.
std::string NameOf(const PathTemplate &form) {
  std::string name;
  for (const platkit::Instance &argument : std::span(form.node->arguments).first(form.arguments()))
    name += (name.empty() ? "" : "/") + std::string(argument.what);
  return name.empty() ? "host" : name;
}

}  // namespace

Walk::Walk(Tree &tree, const PathFilter &filter) : filter_(filter), instances_(tree) {
  for (const PathTemplate &form : AllPathTemplates()) {
    if (IsRegister(form) || !filter.MayContain(form)) continue;
    const auto family = std::ranges::find_if(
        families_, [&](const Family &members) { return HaveSameArguments(members.front(), form); });
    if (family == families_.end()) {
      families_.push_back({form});
    } else {
      family->push_back(form);
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
  const PathTemplate &first = family.front();
  if (arguments.size() < first.arguments()) {
    for (const Argument &instance : instances_.Of(*first.node, arguments)) {
      arguments.push_back(instance);
      Descend(family, arguments, visitor);
      arguments.pop_back();
    }
    return;
  }
  for (const PathTemplate &form : family) {
    if (filter_.Contains(PathOf(*form.node, arguments))) visitor(*form.node, form.asRecord, arguments);
  }
}

}  // namespace nodal
