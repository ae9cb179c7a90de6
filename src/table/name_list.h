// The text of a choice among names: "a:b", "(all)" or "(none)".
#ifndef KESTREL_TABLE_NAME_LIST_H
#define KESTREL_TABLE_NAME_LIST_H

#include <string>
#include <string_view>

namespace kestrel {

class NameList {
 public:
  // Takes the next name there is, chosen or not.
  void Offer(std::string_view name, bool chosen) {
    if (!chosen) {
      all_ = false;
      return;
    }
    if (!text_.empty()) text_ += ':';
    text_ += name;
  }

  // All of nothing is "(all)".
  std::string Text() const {
    if (all_) return "(all)";
    return text_.empty() ? "(none)" : text_;
  }

 private:
  bool all_ = true;
  std::string text_;
};

}  // namespace kestrel

#endif  // KESTREL_TABLE_NAME_LIST_H
