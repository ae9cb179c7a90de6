// The key of pseudonyms.
#ifndef NODAL_CAPTURE_PSEUDONYM_KEY_H
#define NODAL_CAPTURE_PSEUDONYM_KEY_H

#include <array>
#include <span>
#include <string_view>

namespace nodal {

// A key that is wiped from memory when the object is destroyed.
class PseudonymKey {
 public:
  using Bytes = std::array<unsigned char, 32>;

  explicit PseudonymKey(const Bytes &bytes) : bytes_(bytes) {}
  PseudonymKey(const PseudonymKey &) = default;
  PseudonymKey &operator=(const PseudonymKey &) = default;
  ~PseudonymKey();

  static PseudonymKey Random();

  // Derives a key from a secret. The same secret gives the same key on every host and in every version. Takes about
  // half a second and 64 MB, so that nobody can try many secrets. Throws std::bad_alloc if memory runs out.
  static PseudonymKey FromSecret(std::string_view secret);

  std::span<const unsigned char> bytes() const { return bytes_; }

 private:
  Bytes bytes_;
};

}  // namespace nodal

#endif  // NODAL_CAPTURE_PSEUDONYM_KEY_H
