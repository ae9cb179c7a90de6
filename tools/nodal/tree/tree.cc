#include "tools/nodal/tree/tree.h"

#include <memory>

#include "platkit/nodal.h"
#include "tools/nodal/support/output.h"

namespace nodal {
namespace {

struct Destroy {
  void operator()(NODAL_ParamList *list) const { NODAL_ParamListDestroy(list); }
};
using List = std::unique_ptr<NODAL_ParamList, Destroy>;

List MakeList() {
  List list(NODAL_ParamListCreate(NODAL_LIST_INSTANCES, 1));
  if (list == nullptr) throw std::bad_alloc();
  return list;
}

List ListOf(const Arguments &arguments) {
  List list = MakeList();
  for (const Argument &argument : arguments) {
    const HVC_ReturnStatus status = argument.kind == ParamKind::kInt
                                        ? NODAL_ParamListAddInt(list.get(), argument.integer)
                                        : NODAL_ParamListAddString(list.get(), argument.text.c_str());
    if (status != HVC_OK) throw std::bad_alloc();
  }
  return list;
}

Arguments EntriesOf(const NODAL_ParamList &list) {
  Arguments entries;
  for (const NODAL_Param &param : list.params())
    entries.push_back(ArgumentOf(param));
  return entries;
}

}  // namespace

HVC_ReturnStatus HostTree::Get(const Node &node, const Arguments &arguments, std::span<std::byte> record) {
  return ThrowIfOutOfMemory(
      NODAL_Get(node.id, ListOf(arguments).get(), record.data(), static_cast<uint32_t>(record.size())));
}

HVC_ReturnStatus HostTree::List(const Node &node, const Arguments &arguments, Arguments &entries) {
  const nodal::List list = MakeList();
  const HVC_ReturnStatus status =
      ThrowIfOutOfMemory(NODAL_GetInstanceList(node.id, ListOf(arguments).get(), list.get()));
  entries = EntriesOf(*list);
  return status;
}

HVC_ReturnStatus SourceTree::Get(const Node &node, const Arguments &arguments, std::span<std::byte> record) {
  return ThrowIfOutOfMemory(source_.Get(node, ParamsOf(arguments), record));
}

HVC_ReturnStatus SourceTree::List(const Node &node, const Arguments &arguments, Arguments &entries) {
  const nodal::List list = MakeList();
  const HVC_ReturnStatus status = ThrowIfOutOfMemory(source_.List(node, ParamsOf(arguments), *list));
  if (status == HVC_OK) entries = EntriesOf(*list);
  return status;
}

}  // namespace nodal
