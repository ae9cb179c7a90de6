// Finds the processor sockets by their memory controllers on the PCI buses.
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

// A socket, identified by the bus of its memory controllers. Sockets are numbered in the order in which they are found.
struct Socket {
  uint32_t segment;
  uint32_t bus;
};

// Searches all functions of all buses for the memory controller of each socket. The first failure is printed to
// standard output and ends the search. The sockets found before it remain in the list.
[[nodiscard]] HVC_ReturnStatus KestrelDCPMMFindBuses();

std::span<const Socket> Sockets();

// The number of the first socket on this bus; std::nullopt if there is none.
std::optional<size_t> SocketOfBus(uint32_t bus);

}  // namespace kestrel

#endif  // KESTREL_DCPMM_SOCKETS_H
