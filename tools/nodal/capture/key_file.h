// The file with the secret from which the key of pseudonyms is derived.
#ifndef NODAL_CAPTURE_KEY_FILE_H
#define NODAL_CAPTURE_KEY_FILE_H

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace nodal {

// The contents of a key file without a final newline (LF or CRLF). Wiped from memory when the object is destroyed.
class KeyFile {
 public:
  static constexpr size_t kMaxBytes = 1024;  // of the secret

  // If `path` is "-", reads standard input. Throws a Failure if the key is unreadable, empty or too long, or would be
  // read from a terminal. Also throws a Failure if a user other than root and the caller owns the file, or if any other
  // user may access it.
  explicit KeyFile(const std::string &path);
  ~KeyFile();
  KeyFile(const KeyFile &) = delete;
  KeyFile &operator=(const KeyFile &) = delete;

  std::string_view secret() const { return {bytes_.data(), size_}; }

 private:
  KeyFile() = default;
  void Read(const std::string &path, int fd);
  void OmitNewline();

  std::array<char, kMaxBytes + 3> bytes_ = {};  // room for CRLF and one more byte, to detect that the file is too long
  size_t size_ = 0;
};

}  // namespace nodal

#endif  // NODAL_CAPTURE_KEY_FILE_H
