// The text of a selection of names: "a:b", "(all)" or "(none)".
#ifndef KESTREL_TABLE_NAME_LIST_H
#define KESTREL_TABLE_NAME_LIST_H

#include <cstddef>
#include <cstring>
#include <string_view>

namespace kestrel {

// Names separated by ':', in a buffer of fixed size. A longer text is truncated, but the names of every table fit.
class NameList {
 public:
  // Adds the next name of the table if it is selected.
  void Offer(std::string_view name, bool chosen) {
    if (!chosen) {
      all_ = false;
      return;
    }
    if (size_ > 0) Append(":");
    Append(name);
  }

  // "(all)" if every name is selected, "(none)" if no name is. Valid as long as the list exists.
  const char *Text() const {
    if (all_) return "(all)";
    return size_ == 0 ? "(none)" : text_;
  }

 private:
  void Append(std::string_view text) {
    text = text.substr(0, sizeof text_ - 1 - size_);
    std::memcpy(text_ + size_, text.data(), text.size());
    size_ += text.size();
    text_[size_] = '\0';
  }

  bool all_ = true;
  size_t size_ = 0;
  char text_[1024];
};

}  // namespace kestrel

#endif  // KESTREL_TABLE_NAME_LIST_H
