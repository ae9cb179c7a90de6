// Owning handles for parameter lists, and functions that read nodes.
#ifndef KESTREL_NODAL_PARAM_LIST_H
#define KESTREL_NODAL_PARAM_LIST_H

#include <memory>

#include "platkit/nodal.h"
#include "platkit/warning.h"
#include "src/nodal/nodes.h"

namespace kestrel {

struct ParamListDestroyer {
  void operator()(NODAL_ParamList *list) const { NODAL_ParamListDestroy(list); }
};

// Owns a parameter list.
using ParamList = std::unique_ptr<NODAL_ParamList, ParamListDestroyer>;

// An empty list with room for `capacity` instance arguments; null on failure.
inline ParamList MakeArguments(uint32_t capacity) {
  return ParamList(NODAL_ParamListCreate(NODAL_LIST_INSTANCES, capacity));
}

// Like MakeArguments, but a failure prints a warning that names the function `step`.
inline ParamList MakeArgumentsFor(const char *step, uint32_t capacity) {
  ParamList arguments = MakeArguments(capacity);
  if (arguments == nullptr) Warning("%s: NODAL_ParamListCreate() failure\n", step);
  return arguments;
}

// Reads the instances of a list node into `list`, which changes only on success.
template <typename Record>
[[nodiscard]] HVC_ReturnStatus ListInstances(NodeRef<Record> node, const NODAL_ParamList *arguments, ParamList &list) {
  NODAL_ParamList *instances = nullptr;
  const HVC_ReturnStatus status = NODAL_GetInstanceListAlloc(node.id, arguments, &instances);
  if (status == HVC_OK) list.reset(instances);
  return status;
}

template <typename Record>
[[nodiscard]] HVC_ReturnStatus ReadRecord(NodeRef<Record> node, const NODAL_ParamList *arguments, Record &record) {
  return NODAL_Get(node.id, arguments, &record, sizeof record);
}

}  // namespace kestrel

#endif  // KESTREL_NODAL_PARAM_LIST_H
