// The sources of the page in this folder, embedded by embed.cmake.
#ifndef NODAL_PAGE_PAGE_SOURCES_H
#define NODAL_PAGE_PAGE_SOURCES_H

#include <string_view>

namespace nodal {

extern const std::string_view kPageTemplate;  // page.html
extern const std::string_view kPageStyle;     // page.css
extern const std::string_view kPageScript;    // script/*.js

}  // namespace nodal

#endif  // NODAL_PAGE_PAGE_SOURCES_H
