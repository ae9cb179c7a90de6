#include "tools/nodal/page/html.h"

#include <cmath>
#include <cstdio>
#include <iterator>

namespace nodal {

std::string HtmlText(std::string_view text) {
  std::string html;
  for (const char c : text) {
    switch (c) {
      case '&': html += "&amp;"; break;
      case '<': html += "&lt;"; break;
      case '>': html += "&gt;"; break;
      case '"': html += "&quot;"; break;
      case '\'': html += "&#39;"; break;
      default: html += c;
    }
  }
  return html;
}

// The script has the same function: amountText in format.js.
std::string AmountText(std::optional<uint64_t> kb) {
  if (!kb) return "n/a";
  constexpr const char *kUnits[] = {"KB", "MB", "GB", "TB", "PB"};
  auto amount = static_cast<double>(*kb);
  size_t unit = 0;
  for (; amount >= 1000 && unit + 1 < std::size(kUnits); ++unit)
    amount /= 1024;
  const int digits = unit == 0 || amount >= 100 ? 0 : amount >= 10 ? 1 : 2;
  const double scale = digits == 0 ? 1 : digits == 1 ? 10 : 100;
  char text[64];
  std::snprintf(text, sizeof text, "%.*f %s", digits, std::floor(amount * scale + 0.5) / scale, kUnits[unit]);
  return text;
}

std::string Element(std::string_view tag, const std::string &html, const std::string &attributes) {
  const std::string name(tag);
  return "<" + name + attributes + ">" + html + "</" + name + ">";
}

std::string HtmlTable(std::string_view caption, const std::vector<std::string> &header,
                      const std::vector<std::vector<std::string>> &rows) {
  std::string html;
  for (const std::string &cell : header)
    html += Element("th", cell, " scope=\"col\"");
  html = Element("thead", Element("tr", html)) + "\n";
  std::string body;
  for (const std::vector<std::string> &row : rows) {
    std::string cells;
    for (const std::string &cell : row)
      cells += cells.empty() ? Element("th", cell, " scope=\"row\"") : Element("td", cell);
    body += Element("tr", cells) + "\n";
  }
  html += Element("tbody", body);
  return Element("table", Element("caption", HtmlText(caption)) + html);
}

std::string Filled(std::string_view text, const std::function<std::string(std::string_view name)> &value) {
  std::string filled;
  for (size_t start; (start = text.find("{{")) != std::string_view::npos;) {
    filled += text.substr(0, start);
    text.remove_prefix(start + 2);
    const size_t end = text.find("}}");
    filled += value(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 2);
  }
  return filled.append(text);
}

}  // namespace nodal
