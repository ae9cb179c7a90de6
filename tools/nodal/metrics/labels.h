// The labels of samples, in Prometheus' text format.
#ifndef NODAL_METRICS_LABELS_H
#define NODAL_METRICS_LABELS_H

#include <string>
#include <string_view>

namespace nodal {

// `name="value"` pairs, separated by commas. A label without a value is omitted.
class Labels {
 public:
  Labels &Add(std::string_view name, std::string_view value);

  const std::string &text() const { return text_; }

 private:
  std::string text_;
};

// Escapes a text for the quotes of a label. A newline becomes \n. Each byte of another control character, of a
// character that changes the direction of text, or of invalid UTF-8 becomes \\x and two hexadecimal digits.
std::string LabelValue(std::string_view text);

// Returns the shortest decimal number without exponent that reads back as the same value.
std::string NumberText(double value);

}  // namespace nodal

#endif  // NODAL_METRICS_LABELS_H
