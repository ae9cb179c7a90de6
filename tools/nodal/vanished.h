// What goes away while a host is read.
#ifndef NODAL_VANISHED_H
#define NODAL_VANISHED_H

#include <cstddef>

#include "tools/nodal/readings.h"

namespace nodal {

// Leaves out of what was read the instances that were gone before they could be read, so that nothing names them: they
// are in no list, and what is reached only through them is left out as well. An instance of which no record was found
// is gone if `host` does not name it any more; if it still does, that there is nothing of it is worth telling. Returns
// the number of instances that were gone.
//
// An instance that lost some of its records while they were read stays with the others: so would a report have seen it.
size_t LeaveOutVanished(Readings &readings, Tree &host);

}  // namespace nodal

#endif  // NODAL_VANISHED_H
