#include "tools/describe/roff.h"

namespace describe {
namespace {

std::string Escape(std::string_view text, std::string_view hyphen) {
  std::string escaped;
  // At the start of a line, these characters start a request.
  if (text.starts_with('.') || text.starts_with('\'')) escaped = "\\&";
  for (const char c : text) {
    switch (c) {
      case '\\': escaped += "\\e"; break;
      case '-': escaped += hyphen; break;
      case '\'': escaped += "\\(aq"; break;
      case '`': escaped += "\\(ga"; break;
      case '^': escaped += "\\(ha"; break;
      case '~': escaped += "\\(ti"; break;
      default: escaped += c;
    }
  }
  return escaped;
}

}  // namespace

std::string Literal(std::string_view text) { return Escape(text, "\\-"); }
std::string Prose(std::string_view text) { return Escape(text, "-"); }
std::string Bold(std::string_view text) { return "\\fB" + Literal(text) + "\\fR"; }
std::string Italic(std::string_view text) { return "\\fI" + Literal(text) + "\\fR"; }

}  // namespace describe
