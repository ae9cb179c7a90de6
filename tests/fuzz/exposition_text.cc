#include "tests/fuzz/exposition_text.h"

#include <charconv>
#include <cmath>

namespace fuzz {
namespace {

class Line {
 public:
  explicit Line(std::string_view text) : rest_(text) {}

  bool AtEnd() const { return rest_.empty(); }

  bool Take(std::string_view text) {
    if (!rest_.starts_with(text)) return false;
    rest_.remove_prefix(text.size());
    return true;
  }

  // The name of a metric or of a label; empty if there is none.
  std::string_view TakeName() {
    size_t size = 0;
    while (size < rest_.size() && (IsLetter(rest_[size]) || (size > 0 && IsDigit(rest_[size]))))
      ++size;
    return TakeBytes(size);
  }

  // A quoted value, in which a backslash, a quote and a newline are escaped.
  bool TakeValueOfLabel() {
    if (!Take("\"")) return false;
    while (!rest_.empty() && rest_[0] != '"') {
      if (Take("\\") && rest_.find_first_of("\\\"n") != 0) return false;
      rest_.remove_prefix(1);
    }
    return Take("\"");
  }

  bool TakeNumber() {
    double value = 0;
    const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), value);
    if (error != std::errc() || !std::isfinite(value)) return false;
    TakeBytes(static_cast<size_t>(end - rest_.data()));
    return true;
  }

  std::string_view rest() const { return rest_; }

 private:
  static bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
  static bool IsDigit(char c) { return c >= '0' && c <= '9'; }

  std::string_view TakeBytes(size_t size) {
    const std::string_view taken = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return taken;
  }

  std::string_view rest_;
};

bool TakeLabels(Line &line) {
  if (!line.Take("{")) return true;
  std::set<std::string_view> names;
  do {
    const std::string_view name = line.TakeName();
    if (name.empty() || !names.insert(name).second || !line.Take("=") || !line.TakeValueOfLabel()) return false;
  } while (line.Take(","));
  return line.Take("}");
}

class Parser {
 public:
  explicit Parser(std::set<std::string, std::less<>> &names) : names_(names) {}

  bool Accepts(std::string_view text) {
    Line line(text);
    if (line.Take("# EOF")) return line.AtEnd();
    if (line.Take("# HELP ")) return AcceptsHelp(line);
    if (line.Take("# TYPE ")) return AcceptsType(line);
    return AcceptsSample(text);
  }

 private:
  bool AcceptsHelp(Line &line) {
    metric_ = line.TakeName();
    hasType_ = false;
    return !metric_.empty() && line.Take(" ") && !line.AtEnd() && names_.insert(metric_).second;
  }

  bool AcceptsType(Line &line) {
    const bool fits = line.TakeName() == metric_ && !hasType_;
    hasType_ = true;
    return fits && (line.rest() == " counter" || line.rest() == " gauge");
  }

  bool AcceptsSample(std::string_view text) {
    Line line(text);
    if (!hasType_ || line.TakeName() != metric_ || !TakeLabels(line)) return false;
    const std::string_view series = text.substr(0, text.size() - line.rest().size());
    return series_.insert(std::string(series)).second && line.Take(" ") && line.TakeNumber() && line.AtEnd();
  }

  std::set<std::string, std::less<>> &names_;
  std::set<std::string> series_;
  std::string metric_;
  bool hasType_ = false;
};

}  // namespace

std::string FindMalformedLine(std::string_view text, std::set<std::string, std::less<>> &names) {
  constexpr std::string_view kEnd = "# EOF\n";
  if (!text.ends_with(kEnd) || text.find(kEnd) + kEnd.size() != text.size()) return "no # EOF at the end";
  Parser parser(names);
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    if (!parser.Accepts(line)) return line.empty() ? "an empty line" : std::string(line);
    text.remove_prefix(line.size() + 1);
  }
  return {};
}

}  // namespace fuzz
