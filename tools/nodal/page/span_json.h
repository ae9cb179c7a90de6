// The figures of a span, in the form that page/script reads: names and columns as JSON, and the values as bytes.
//
// The JSON is that of PageJson, with these differences:
//
//   `instants` has the time of each instant.
//   `span` has `step` (in seconds), `samples` (the number of samples), `tolerance` (see PackedSpan), and `events`. An
//   event is [from, to, reasons], with times in seconds since 1970. `omittedEvents` is the number of events left out.
//   `fields` have no values. If a column has a band, its `band` is true.
//   `unreadable` has entries [row, reason, instant]. From this instant on, this is the reason whenever the record could
//   not be read.
//   `unreadableLists` has entries [path, reason, [from, to, from, to...]]. The list could not be read from each instant
//   `from` until just before the next instant `to`.
//
// The bytes are an EncodedColumn for each column, in the order of the JSON. Each family starts with a column that is 1
// while a row exists and 0 while it does not. A column with a band is followed by two more columns: the distances below
// and above the value.
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

// Packs the figures with the smallest tolerance for which the values have at most `mostBytes`, or else with the largest
// one.
PackedSpan Packed(const PageSpan &span, size_t mostBytes);

// Takes only the host's name and the source from `last`.
std::string SpanJson(const PageSpan &span, const PageData &last, double tolerance);

}  // namespace nodal

#endif  // NODAL_PAGE_SPAN_JSON_H
