#include "src/dcpmm/sockets.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>
#include <memory>
#include <new>

#include "platkit/records.h"
#include "src/nodal/nodes.h"
#include "src/nodal/param_list.h"
#include "src/status/status.h"

constinit uint8_t isBusListEmpty = 1;

namespace kestrel {
namespace {

// Grows as needed. If memory is short, Add returns HVC_NO_MEMORY and the list is unchanged.
class SocketList {
 public:
  HVC_ReturnStatus Add(const Socket &socket) {
    if (count_ == capacity_ && !Grow()) return HVC_NO_MEMORY;
    sockets_[count_++] = socket;
    return HVC_OK;
  }

  void Clear() { count_ = 0; }
  std::span<const Socket> view() const { return {sockets_.get(), count_}; }

 private:
  bool Grow() {
    const size_t capacity = std::max<size_t>(8, 2 * capacity_);
    std::unique_ptr<Socket[]> grown(new (std::nothrow) Socket[capacity]);
    if (grown == nullptr) return false;
    std::ranges::copy(view(), grown.get());
    sockets_ = std::move(grown);
    capacity_ = capacity;
    return true;
  }

  std::unique_ptr<Socket[]> sockets_;
  size_t count_ = 0;
  size_t capacity_ = 0;
};

constinit SocketList sockets;

// The PCI function that identifies the memory controllers of a socket.
constexpr int64_t kControllerSlot = 10;
constexpr int64_t kControllerFunction = 2;
constexpr uint16_t kControllerVendor = 0x8086;
constexpr uint16_t kControllerDevice = 0x2042;

// The levels of the PCI tree and their names in messages. Each level is a list below an instance of the level above.
struct Level {
  ListRef node;
  const char *nodeName;
  const char *instance;
  const char *list;
};

constexpr Level kLevels[] = {
    {nodes::kPciSegments, "NODAL_NODE_hardware_pci_seg", "segment", "segList"},
    {nodes::kPciBuses, "NODAL_NODE_hardware_pci_seg_bus", "bus", "busList"},
    {nodes::kPciSlots, "NODAL_NODE_hardware_pci_seg_bus_slot", "slot", "slotList"},
    {nodes::kPciFunctions, "NODAL_NODE_hardware_pci_seg_bus_slot_func", "func", "funcList"},
};

// Searches the tree in the order of its lists. The same argument list grows and shrinks with the depth.
class Search {
 public:
  explicit Search(NODAL_ParamList *arguments) : arguments_(arguments) {}

  HVC_ReturnStatus Below(size_t depth) {
    if (depth == std::size(kLevels)) return LookAtFunction();
    const Level &level = kLevels[depth];
    ParamList instances;
    HVC_ReturnStatus status = ListInstances(level.node, arguments_, instances);
    if (status != HVC_OK) {
      std::printf("DCPMM Profiler Info: %s Failure\n", level.nodeName);
      return status;
    }
    for (uint32_t i = 0; status == HVC_OK && i < NODAL_ParamListUsedCount(instances.get()); ++i)
      status = Into(depth, instances.get(), i);
    return status;
  }

 private:
  HVC_ReturnStatus Into(size_t depth, const NODAL_ParamList *instances, uint32_t index) {
    const Level &level = kLevels[depth];
    const NODAL_Param *instance = NODAL_ParamListGetParam(instances, index);
    if (instance == nullptr) {
      std::printf("DCPMM Profiler Info: %s, Unable to get %s param from %s\n", level.nodeName, level.instance,
                  level.list);
      return HVC_FAILURE;
    }
    place_[depth] = NODAL_ParamGetInt(instance);
    HVC_ReturnStatus status = NODAL_ParamListAddInt(arguments_, place_[depth]);
    if (status != HVC_OK) {
      std::printf("DCPMM Profiler Info: %s, Unable to add %s to paramList\n", level.nodeName, level.instance);
      return status;
    }
    status = Below(depth + 1);
    NODAL_ParamListRemoveLastParam(arguments_);
    return status;
  }

  HVC_ReturnStatus LookAtFunction() {
    const auto [segment, bus, slot, function] = place_;
    PciConfigHeaderRecord header = {};
    const HVC_ReturnStatus status = ReadRecord(nodes::kPciConfigHeader, arguments_, header);
    if (status != HVC_OK) {
      std::puts(  // the spelling "pciConfiHeader" must not change
          "DCPMM Profiler Info: NODAL_NODE_hardware_pci_seg_bus_slot_func_pciConfigHeader, "
          "Unable to get pciConfiHeader");
      return status;
    }
    if (slot == kControllerSlot && function == kControllerFunction && header.deviceID == kControllerDevice &&
        header.vendorID == kControllerVendor) {
      return AddSocket({static_cast<uint32_t>(segment), static_cast<uint32_t>(bus)});
    }
    return HVC_OK;
  }

  static HVC_ReturnStatus AddSocket(const Socket &socket) {
    const HVC_ReturnStatus status = sockets.Add(socket);
    if (status == HVC_OK) {
      isBusListEmpty = 0;
    } else {
      std::printf("DCPMM Profiler Info: %s\n", HVC_ReturnStatusToString(status));
    }
    return status;
  }

  NODAL_ParamList *arguments_;
  std::array<int64_t, std::size(kLevels)> place_ = {};  // segment, bus, slot, function
};

}  // namespace

HVC_ReturnStatus KestrelDCPMMFindBuses() {
  sockets.Clear();
  const ParamList arguments = MakeArguments(std::size(kLevels));
  if (arguments == nullptr) {
    std::puts("DCPMM Profiler Info: NODAL_ParamListCreate Failure");
    return HVC_FAILURE;
  }
  return Search(arguments.get()).Below(0);
}

std::span<const Socket> Sockets() { return sockets.view(); }

std::optional<size_t> SocketOfBus(uint32_t bus) {
  const std::span<const Socket> all = Sockets();
  const auto found = std::ranges::find(all, bus, &Socket::bus);
  if (found == all.end()) return std::nullopt;
  return static_cast<size_t>(found - all.begin());
}

}  // namespace kestrel
