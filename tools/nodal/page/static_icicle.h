// The icicle of the groups as a picture, for readers without scripts.
#ifndef NODAL_PAGE_STATIC_ICICLE_H
#define NODAL_PAGE_STATIC_ICICLE_H

#include <string>

#include "tools/nodal/page/page_data.h"

namespace nodal {

// An SVG element: a box per group below the group that contains it, as wide as what the group consumes. Groups that are
// too narrow to be seen, and levels below the eighth, are omitted.
std::string StaticIcicle(const PageFamily &groups);

}  // namespace nodal

#endif  // NODAL_PAGE_STATIC_ICICLE_H
