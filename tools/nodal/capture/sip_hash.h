// SipHash-2-4: a hash that tells nothing of what went in to those who do not have the key.
#ifndef NODAL_CAPTURE_SIP_HASH_H
#define NODAL_CAPTURE_SIP_HASH_H

#include <array>
#include <cstdint>
#include <string_view>

namespace nodal {

using SipKey = std::array<uint64_t, 2>;

uint64_t SipHash(const SipKey &key, std::string_view bytes);

}  // namespace nodal

#endif  // NODAL_CAPTURE_SIP_HASH_H
