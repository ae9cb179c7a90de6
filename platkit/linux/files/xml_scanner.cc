#include "platkit/linux/files/xml_scanner.h"

#include <algorithm>

#include "platkit/linux/files/text_scanner.h"

namespace platkit {
namespace {

constexpr size_t kMaxPath = 1024;

constexpr bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

std::string_view WithoutLeadingSpace(std::string_view text) {
  const auto *start = std::ranges::find_if_not(text, IsSpace);
  return {start, text.end()};
}

// The length of a tag up to the '>' that ends it; npos if the tag does not end. A '>' inside quotes does not end a tag.
size_t TagLength(std::string_view text) {
  char quote = '\0';
  for (size_t i = 0; i < text.size(); ++i) {
    if (quote != '\0') {
      if (text[i] == quote) quote = '\0';
    } else if (text[i] == '\'' || text[i] == '"') {
      quote = text[i];
    } else if (text[i] == '>') {
      return i;
    }
  }
  return std::string_view::npos;
}

std::string_view NameIn(std::string_view tag) {
  const auto *end = std::ranges::find_if(tag, [](char c) { return IsSpace(c) || c == '/'; });
  return {tag.begin(), end};
}

// Takes an attribute's name and value, such as " pid='12'". Returns false at the end and if the text is malformed.
bool TakeAttribute(std::string_view &text, std::string_view &name, std::string_view &value) {
  TextScanner scanner(text);
  name = Trim(scanner.TakeUntil('='));
  const std::string_view quoted = WithoutLeadingSpace(scanner.rest());
  if (quoted.empty() || (quoted[0] != '\'' && quoted[0] != '"')) return false;
  const size_t end = quoted.find(quoted[0], 1);
  if (end == std::string_view::npos) return false;
  value = quoted.substr(1, end - 1);
  text = quoted.substr(end + 1);
  return true;
}

}  // namespace

bool XmlScanner::Next() {
  if (isEmpty_) path_.resize(path_.rfind('/'));
  isEmpty_ = false;
  while (SkipTo("<")) {
    if (rest_.starts_with("!--")) {
      if (!SkipTo("-->")) return false;
    } else if (rest_.starts_with("![CDATA[")) {
      if (!SkipTo("]]>")) return false;
    } else if (rest_.starts_with("?")) {
      if (!SkipTo("?>")) return false;
    } else if (rest_.starts_with("!")) {
      return EndScan();
    } else if (rest_.starts_with("/")) {
      if (!TakeEndTag()) return EndScan();
    } else {
      return TakeStartTag() || EndScan();
    }
  }
  return false;
}

std::string_view XmlScanner::Attribute(std::string_view name) const {
  std::string_view text = attributes_;
  for (std::string_view found, value; TakeAttribute(text, found, value);) {
    if (found == name) return value;
  }
  return {};
}

// Skips the text up to `end`, and `end` itself. Ends the scan if the text has no `end`.
bool XmlScanner::SkipTo(std::string_view end) {
  const size_t found = rest_.find(end);
  if (found == std::string_view::npos) return EndScan();
  rest_.remove_prefix(found + end.size());
  return true;
}

bool XmlScanner::TakeStartTag() {
  const size_t length = TagLength(rest_);
  if (length == std::string_view::npos) return false;
  std::string_view tag = rest_.substr(0, length);
  rest_.remove_prefix(length + 1);
  isEmpty_ = tag.ends_with('/');
  if (isEmpty_) tag.remove_suffix(1);
  const std::string_view name = NameIn(tag);
  if (name.empty() || path_.size() + name.size() >= kMaxPath) return false;
  attributes_ = tag.substr(name.size());
  path_.append("/").append(name);
  return true;
}

bool XmlScanner::TakeEndTag() {
  const size_t length = rest_.find('>');
  if (length == std::string_view::npos) return false;
  const std::string_view name = NameIn(rest_.substr(1, length - 1));
  rest_.remove_prefix(length + 1);
  return LeaveElement(name);
}

bool XmlScanner::LeaveElement(std::string_view name) {
  const size_t slash = path_.rfind('/');
  if (slash == std::string::npos || std::string_view(path_).substr(slash + 1) != name) return false;
  path_.resize(slash);
  return true;
}

bool XmlScanner::EndScan() {
  rest_ = {};
  attributes_ = {};
  isEmpty_ = false;
  path_.clear();
  return false;
}

}  // namespace platkit
