// Samples in the text format that Prometheus and those who feed it read.
#ifndef NODAL_EXPOSITION_H
#define NODAL_EXPOSITION_H

#include <string>
#include <string_view>

#include "tools/nodal/metric_table.h"

namespace nodal {

// `name="value"` for each, with commas between. A label without a value is not there.
class Labels {
 public:
  Labels &Add(std::string_view name, std::string_view value);

  const std::string &text() const { return text_; }

 private:
  std::string text_;
};

// As it stands between the quotes of a label: escaped, and in UTF-8. Control characters, and bytes that are not
// UTF-8, are shown as \x and two hexadecimal digits.
std::string LabelValue(std::string_view text);

// The shortest decimal number, without an exponent, that is read back as that value.
std::string NumberText(double value);

class Exposition {
 public:
  explicit Exposition(std::string_view prefix) : prefix_(prefix) {}

  // The samples that follow are of that metric. Without any, nothing of it is shown.
  void Begin(const Metric &metric) { metric_ = &metric, isDescribed_ = false; }

  void AddSample(const Labels &labels, double value);

  const std::string &text() const { return text_; }

 private:
  std::string prefix_;
  const Metric *metric_ = nullptr;
  bool isDescribed_ = false;
  std::string text_;
};

}  // namespace nodal

#endif  // NODAL_EXPOSITION_H
