// The figures of a span, in the form that page/script reads: names and columns as JSON, and the values as bytes.
//
// The JSON is that of PageJson, with these differences:
//
//   instants         the time of each
//   span             step: seconds; samples: in the span; tolerance: see PackedSpan; events: [from, to, reasons] with
//                    times in seconds since 1970
//   fields           have no values; band: true if the column has a band
//   unreadable       [row, reason, instant]: from this instant, it is why the record could not be read where it was not
//   unreadableLists  [path, reason, [from, to, from, to...]]: from these instants to before the others
//
// The bytes are an EncodedColumn for each column, in the order of the JSON. A family begins with a column that is 1
// where a row is there. The columns of a band, below and above the value, follow the column.
#ifndef NODAL_PAGE_SPAN_JSON_H
#define NODAL_PAGE_SPAN_JSON_H

#include <cstddef>
#include <string>

#include "tools/nodal/page/page_data.h"
#include "tools/nodal/page/page_span.h"

namespace nodal {

struct PackedSpan {
  std::string values;    // compressed, in base64
  double tolerance = 0;  // amounts of groups, nodes and heaps are kept until they change by more than this part
};

// Uses the smallest tolerance with which the values have at most `mostBytes`, or the largest one.
PackedSpan Packed(const PageSpan &span, size_t mostBytes);

// `last` has the host and the source.
std::string SpanJson(const PageSpan &span, const PageData &last, double tolerance);

}  // namespace nodal

#endif  // NODAL_PAGE_SPAN_JSON_H
