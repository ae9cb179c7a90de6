#include "tools/nodal/tree/tree.h"

#include <memory>
#include <new>

#include "platkit/nodal.h"

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

Arguments EntriesOf(const NODAL_ParamList &list) {
  Arguments entries;
  for (const NODAL_Param &param : list.params())
    entries.push_back(ArgumentOf(param));
  return entries;
}

}  // namespace

HVC_ReturnStatus HostTree::Get(const Node &node, const Arguments &arguments, std::span<std::byte> record) {
  return SourceTree(platkit::CurrentSource()).Get(node, arguments, record);
}

HVC_ReturnStatus HostTree::List(const Node &node, const Arguments &arguments, Arguments &entries) {
  return SourceTree(platkit::CurrentSource()).List(node, arguments, entries);
}

HVC_ReturnStatus SourceTree::Get(const Node &node, const Arguments &arguments, std::span<std::byte> record) {
  return source_.Get(node, ParamsOf(arguments), record);
}

HVC_ReturnStatus SourceTree::List(const Node &node, const Arguments &arguments, Arguments &entries) {
  const nodal::List list = MakeList();
  const HVC_ReturnStatus status = source_.List(node, ParamsOf(arguments), *list);
  if (status == HVC_OK) entries = EntriesOf(*list);
  return status;
}

}  // namespace nodal
