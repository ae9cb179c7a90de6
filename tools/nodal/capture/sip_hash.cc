#include "tools/nodal/capture/sip_hash.h"

#include <bit>
#include <cstring>

namespace nodal {

uint64_t SipHash(const SipKey &key, std::string_view bytes) {
  uint64_t v[] = {key[0] ^ 0x736f6d6570736575, key[1] ^ 0x646f72616e646f6d, key[0] ^ 0x6c7967656e657261,
                  key[1] ^ 0x7465646279746573};
  const auto half = [&v](int a, int b, int left) {
    v[a] += v[b];
    v[b] = std::rotl(v[b], left) ^ v[a];
  };
  const auto mix = [&](int rounds) {
    for (int i = 0; i < rounds; ++i) {
      half(0, 1, 13), v[0] = std::rotl(v[0], 32);
      half(2, 3, 16);
      half(0, 3, 21);
      half(2, 1, 17), v[2] = std::rotl(v[2], 32);
    }
  };
  const auto take = [&](uint64_t word) { v[3] ^= word, mix(2), v[0] ^= word; };

  const uint64_t length = bytes.size();
  for (; bytes.size() >= 8; bytes.remove_prefix(8)) {
    uint64_t word;
    std::memcpy(&word, bytes.data(), sizeof word);
    take(word);
  }
  uint64_t last = length << 56;
  for (size_t i = 0; i < bytes.size(); ++i)
    last |= uint64_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
  take(last);
  v[2] ^= 0xff;
  mix(4);
  return v[0] ^ v[1] ^ v[2] ^ v[3];
}

}  // namespace nodal
