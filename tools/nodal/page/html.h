// Pieces of HTML.
#ifndef NODAL_PAGE_HTML_H
#define NODAL_PAGE_HTML_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nodal {

// Escapes a text for the content of an element or the value of an attribute.
std::string HtmlText(std::string_view text);

// Formats an amount for people, such as "3.02 GB", or "n/a" without a value.
std::string AmountText(std::optional<uint64_t> kb);

// Returns the amount of a field in KB, or std::nullopt if all bits are set, which means not available.
inline std::optional<uint64_t> Available(uint64_t kb) {
  return kb == UINT64_MAX ? std::nullopt : std::optional<uint64_t>(kb);
}

// Returns an element that contains this HTML, with attributes such as " class=\"x\"".
std::string Element(std::string_view tag, const std::string &html, const std::string &attributes = "");

// Returns a table with a caption, for readers without scripts. The cells are HTML. The first cell of each row is its
// header.
std::string HtmlTable(std::string_view caption, const std::vector<std::string> &header,
                      const std::vector<std::vector<std::string>> &rows);

// Replaces each {{name}} in the text with the result of `value`. Does not search the replacements.
std::string Filled(std::string_view text, const std::function<std::string(std::string_view name)> &value);

}  // namespace nodal

#endif  // NODAL_PAGE_HTML_H
