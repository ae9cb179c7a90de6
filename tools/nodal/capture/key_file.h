// The file with the secret from which the key of pseudonyms is derived.
#ifndef NODAL_CAPTURE_KEY_FILE_H
#define NODAL_CAPTURE_KEY_FILE_H

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace nodal {

// The contents of a key file without one newline at the end. Wiped from memory when the object is destroyed.
class KeyFile {
 public:
  static constexpr size_t kMaxBytes = 1024;  // of the secret

  // "-" is standard input. Throws a Failure if the file is unreadable, empty or too long, if it belongs to another
  // user, or if another user may access it.
  explicit KeyFile(const std::string &path);
  ~KeyFile();
  KeyFile(const KeyFile &) = delete;
  KeyFile &operator=(const KeyFile &) = delete;

  std::string_view secret() const { return {bytes_.data(), size_}; }

 private:
  KeyFile() = default;
  void Read(const std::string &path, int fd);
  void OmitNewline();

  std::array<char, kMaxBytes + 3> bytes_ = {};  // a longer file fills it
  size_t size_ = 0;
};

}  // namespace nodal

#endif  // NODAL_CAPTURE_KEY_FILE_H
