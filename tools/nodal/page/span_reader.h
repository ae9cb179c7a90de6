// Collects the figures of a span of a history for a page.
#ifndef NODAL_PAGE_SPAN_READER_H
#define NODAL_PAGE_SPAN_READER_H

#include <cstdint>

#include "tools/nodal/capture/pseudonyms.h"
#include "tools/nodal/history/history_range.h"
#include "tools/nodal/page/page_data.h"
#include "tools/nodal/page/page_span.h"

namespace nodal {

struct SpanReading {
  PageSpan span;
  PageData last;     // the data of the last instant; host and source are empty
  std::string host;  // the host's name, which is not anonymized
};

// Reads the samples from `range.from` to `range.to`. Replaces names if `pseudonyms` is not null. Throws a Failure, for
// example if the span has no sample.
SpanReading ReadSpan(const RangeOptions &range, Pseudonyms *pseudonyms);

// Returns the length of the steps in seconds for a span of this length, such as a minute for a day. The result is at
// least `least`, unless the span is shorter.
int64_t StepOfSpan(int64_t seconds, int64_t least);

}  // namespace nodal

#endif  // NODAL_PAGE_SPAN_READER_H
