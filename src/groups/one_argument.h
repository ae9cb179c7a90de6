// Reads nodes whose only argument is a group or a memory client.
#ifndef KESTREL_GROUPS_ONE_ARGUMENT_H
#define KESTREL_GROUPS_ONE_ARGUMENT_H

#include <cstdint>

#include "src/nodal/param_list.h"

namespace kestrel {

// Creates a list with one integer argument, calls `read` with it, removes the argument, and returns the status of the
// read. If the list cannot be created, prints a warning that names `creator` and returns HVC_FAILURE. If the argument
// cannot be added, calls `addFailed` with the status and returns it. The caller reports failures of the read.
template <typename AddFailed, typename Read>
[[nodiscard]] HVC_ReturnStatus WithOneArgument(const char *creator, int64_t argument, AddFailed addFailed, Read read) {
  const ParamList arguments = MakeArgumentsFor(creator, 2);
  if (arguments == nullptr) return HVC_FAILURE;
  HVC_ReturnStatus status = NODAL_ParamListAddInt(arguments.get(), argument);
  if (status != HVC_OK) {
    addFailed(status);
    return status;
  }
  status = read(arguments.get());
  NODAL_ParamListRemoveLastParam(arguments.get());
  return status;
}

}  // namespace kestrel

#endif  // KESTREL_GROUPS_ONE_ARGUMENT_H
