#include "tools/nodal/capture/pseudonym_key.h"

#include <sodium.h>

#include <new>
#include <stdexcept>

namespace nodal {
namespace {

// Parameters of Argon2id, which nodal(1) states. They and the salt must never change, because other values give other
// pseudonyms.
constexpr unsigned long long kPasses = 8;
constexpr size_t kMemory = size_t{64} << 20;
constexpr std::string_view kSalt = "nodal pseudonyms";
static_assert(kSalt.size() == crypto_pwhash_SALTBYTES);

void StartSodium() {
  if (sodium_init() < 0) throw std::runtime_error("libsodium cannot generate random numbers");
}

}  // namespace

PseudonymKey::~PseudonymKey() { sodium_memzero(bytes_.data(), bytes_.size()); }

PseudonymKey PseudonymKey::Random() {
  StartSodium();
  PseudonymKey key(Bytes{});
  randombytes_buf(key.bytes_.data(), key.bytes_.size());
  return key;
}

PseudonymKey PseudonymKey::FromSecret(std::string_view secret) {
  StartSodium();
  PseudonymKey key(Bytes{});
  const auto *salt = reinterpret_cast<const unsigned char *>(kSalt.data());
  if (crypto_pwhash(key.bytes_.data(), key.bytes_.size(), secret.data(), secret.size(), salt, kPasses, kMemory,
                    crypto_pwhash_ALG_ARGON2ID13) != 0) {
    throw std::bad_alloc();
  }
  return key;
}

}  // namespace nodal
