// The data of a page as JSON, in the form that page/script/data.js reads.
//
// Each family has the names of its rows, and its records. A record lists the rows that have it, unless all rows have
// it. The fields of a record are columns. A column has one entry for each instant: an array with a value for each of
// these rows, or a single value if all values are equal. In a column of amounts, -1 means that all bits are set:
// unlimited if the column is marked as a limit, otherwise not available.
#ifndef NODAL_PAGE_PAGE_JSON_H
#define NODAL_PAGE_PAGE_JSON_H

#include <string>

#include "tools/nodal/page/columns.h"
#include "tools/nodal/page/page_data.h"
#include "tools/nodal/snapshot/record_json.h"

namespace nodal {

std::string PageJson(const PageData &data);

// The parts of PageJson that do not depend on an instant: the names of rows, and a column without its values.
enum class RowKind { kGroup, kOther };
OrderedJson RowsToJson(const std::vector<PageRow> &rows, RowKind kind);
OrderedJson ColumnToJson(const platkit::RecordLayout &record, const Column &column);

}  // namespace nodal

#endif  // NODAL_PAGE_PAGE_JSON_H
