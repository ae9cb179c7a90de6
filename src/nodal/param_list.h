// Parameter lists with an owner.
#ifndef KESTREL_NODAL_PARAM_LIST_H
#define KESTREL_NODAL_PARAM_LIST_H

#include <memory>

#include "platkit/nodal.h"
#include "platkit/warning.h"

namespace kestrel {

struct ParamListDestroyer {
  void operator()(NODAL_ParamList *list) const { NODAL_ParamListDestroy(list); }
};

// A parameter list that is destroyed where its owner's scope ends, or earlier with reset().
using ParamList = std::unique_ptr<NODAL_ParamList, ParamListDestroyer>;

// An empty list for `capacity` instance arguments; null on failure.
inline ParamList MakeArguments(uint32_t capacity) {
  return ParamList(NODAL_ParamListCreate(NODAL_LIST_INSTANCES, capacity));
}

// The same for the step of that name, which reports it if there is none to be had.
inline ParamList MakeArgumentsFor(const char *step, uint32_t capacity) {
  ParamList arguments = MakeArguments(capacity);
  if (arguments == nullptr) Warning("%s: NODAL_ParamListCreate() failure\n", step);
  return arguments;
}

// Reads the instances of a list node; `list` is set on success only.
[[nodiscard]] inline HVC_ReturnStatus ListInstances(uint32_t node, const NODAL_ParamList *arguments, ParamList &list) {
  NODAL_ParamList *instances = nullptr;
  const HVC_ReturnStatus status = NODAL_GetInstanceListAlloc(node, arguments, &instances);
  if (status == HVC_OK) list.reset(instances);
  return status;
}

// Reads a whole record.
template <typename Record>
[[nodiscard]] HVC_ReturnStatus ReadRecord(uint32_t node, const NODAL_ParamList *arguments, Record &record) {
  return NODAL_Get(node, arguments, &record, sizeof record);
}

}  // namespace kestrel

#endif  // KESTREL_NODAL_PARAM_LIST_H
