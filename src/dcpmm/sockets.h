// The processor sockets of the machine, as far as their memory controllers are found on the PCI buses.
#ifndef KESTREL_DCPMM_SOCKETS_H
#define KESTREL_DCPMM_SOCKETS_H

#include <cstdint>
#include <optional>
#include <span>

#include "platkit/export.h"
#include "platkit/status.h"

extern "C" {

// 1 until the first socket is found.
extern PLATKIT_EXPORT uint8_t isBusListEmpty;
}

namespace kestrel {

// A socket is known by the bus that its memory controllers are on. Its number is its place in the order of finding.
struct Socket {
  uint32_t segment;
  uint32_t bus;
};

// Looks for the memory controller of each socket among all functions of all buses. The first failure is reported on
// standard output and ends the search; what was found before it stays.
[[nodiscard]] HVC_ReturnStatus KestrelDCPMMFindBuses();

std::span<const Socket> Sockets();

// The first socket whose bus has that number.
std::optional<size_t> SocketOfBus(uint32_t bus);

}  // namespace kestrel

#endif  // KESTREL_DCPMM_SOCKETS_H
