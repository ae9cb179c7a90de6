// Collects the figures for a page.
#ifndef NODAL_PAGE_PAGE_READER_H
#define NODAL_PAGE_PAGE_READER_H

#include "tools/nodal/capture/pseudonyms.h"
#include "tools/nodal/page/page_data.h"
#include "tools/nodal/tree/caching_tree.h"

namespace nodal {

// Reads the figures from `tree`, which has read the host. Replaces names if `pseudonyms` is not null; then it throws a
// Failure if two names would have the same pseudonym. Leaves host, time and source empty.
PageData ReadPageData(CachingTree &tree, Pseudonyms *pseudonyms);

}  // namespace nodal

#endif  // NODAL_PAGE_PAGE_READER_H
