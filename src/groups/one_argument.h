// Reads of nodes below one group or one memory client: the pattern of most of the tree.
#ifndef KESTREL_GROUPS_ONE_ARGUMENT_H
#define KESTREL_GROUPS_ONE_ARGUMENT_H

#include <cstdint>

#include "src/nodal/param_list.h"

namespace kestrel {

// Makes a list with one integer argument, hands it to `read`, and takes the argument and the list away again before it
// returns the status of the read. A list that cannot be made is reported in the name of `creator`, an argument that
// cannot be added by `addFailed`; the read's own failures are left to the caller.
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
