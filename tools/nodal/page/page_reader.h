// Collects the figures for a page.
#ifndef NODAL_PAGE_PAGE_READER_H
#define NODAL_PAGE_PAGE_READER_H

#include "tools/nodal/capture/pseudonyms.h"
#include "tools/nodal/metrics/subjects.h"
#include "tools/nodal/page/page_data.h"
#include "tools/nodal/tree/caching_tree.h"

namespace nodal {

// Reads the figures from `tree`. If `pseudonyms` is not null, replaces names, and throws a Failure if two names would
// have the same pseudonym. Leaves host, time and source empty.
PageData ReadPageData(CachingTree &tree, Pseudonyms *pseudonyms);

// Like ReadPageData, but does not read the records. Afterwards, `tree` has cached all answers that determine the rows.
PageData ReadPageRows(CachingTree &tree, Pseudonyms *pseudonyms);

// Returns the path of a row's record in a node, or std::nullopt if the row lacks an instance that the path needs.
std::optional<RecordPath> RecordOf(const Node &node, const PageRow &row);

}  // namespace nodal

#endif  // NODAL_PAGE_PAGE_READER_H
