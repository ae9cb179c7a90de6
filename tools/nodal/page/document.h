// The HTML file of a page.
#ifndef NODAL_PAGE_DOCUMENT_H
#define NODAL_PAGE_DOCUMENT_H

#include <string>

#include "tools/nodal/page/page_data.h"
#include "tools/nodal/page/page_span.h"

namespace nodal {

// Returns the template filled with the style, the script, the data, and static views for readers without scripts. The
// content security policy allows only this style and this script, by their hashes.
std::string Document(const PageData &data);

// Returns the document of a span. `last` has the figures of the span's last instant.
std::string SpanDocument(const PageSpan &span, const PageData &last);

}  // namespace nodal

#endif  // NODAL_PAGE_DOCUMENT_H
