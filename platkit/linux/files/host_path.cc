#include "platkit/linux/files/host_path.h"

#include <charconv>
#include <cstring>

namespace platkit {

void HostPath::Append(std::string_view text) {
  if (text.size() >= sizeof bytes_ - size_) {
    fits_ = false;
    return;
  }
  std::memcpy(bytes_ + size_, text.data(), text.size());
  size_ += text.size();
}

void HostPath::Append(int64_t number) {
  char digits[24];
  const auto result = std::to_chars(digits, digits + sizeof digits, number);
  Append(std::string_view(digits, result.ptr));
}

std::string_view HostPath::folder() const {
  const size_t slash = view().rfind('/');
  return view().substr(0, slash == std::string_view::npos ? 0 : slash);
}

const char *HostPath::name() const {
  const size_t slash = view().rfind('/');
  return bytes_ + (slash == std::string_view::npos ? 0 : slash + 1);
}

}  // namespace platkit
