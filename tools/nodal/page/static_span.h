// The span of a page for readers without scripts, as HTML.
#ifndef NODAL_PAGE_STATIC_SPAN_H
#define NODAL_PAGE_STATIC_SPAN_H

#include <string>

#include "tools/nodal/page/page_span.h"

namespace nodal {

// Returns a paragraph about the span, and a table of the host's smallest and largest figures, with the steps in which
// they occurred.
std::string StaticSpan(const PageSpan &span);

}  // namespace nodal

#endif  // NODAL_PAGE_STATIC_SPAN_H
