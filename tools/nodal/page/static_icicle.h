// The icicle chart of the groups as a picture, for readers without scripts.
#ifndef NODAL_PAGE_STATIC_ICICLE_H
#define NODAL_PAGE_STATIC_ICICLE_H

#include <string>

#include "tools/nodal/page/page_data.h"

namespace nodal {

// Returns an SVG element with a box for each group, below the box of its parent group. The width of a box shows how
// much memory the group consumes. Omits groups that are too narrow to be seen, and levels below the eighth.
std::string StaticIcicle(const PageFamily &groups);

}  // namespace nodal

#endif  // NODAL_PAGE_STATIC_ICICLE_H
