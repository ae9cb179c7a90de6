// A path below the root folder.
#ifndef PLATKIT_LINUX_FILES_HOST_PATH_H
#define PLATKIT_LINUX_FILES_HOST_PATH_H

#include <climits>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace platkit {

// Relative to the root folder, without a leading slash. It is assembled from texts and numbers without allocating:
// HostPath("proc/", pid, "/status").
class HostPath {
 public:
  template <typename... Pieces>
  explicit HostPath(const Pieces &...pieces) {
    (Append(pieces), ...);
    bytes_[size_] = '\0';
  }

  // Returns null if the path is longer than the kernel accepts.
  const char *c_str() const { return fits_ ? bytes_ : nullptr; }
  std::string_view view() const { return {bytes_, size_}; }

  // The parts before and after the last slash. Without a slash, the folder is empty.
  std::string_view folder() const;
  const char *name() const;

 private:
  void Append(std::string_view text);
  void Append(int64_t number);

  bool fits_ = true;
  size_t size_ = 0;
  char bytes_[PATH_MAX];
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_FILES_HOST_PATH_H
