// The failures of dcpmm-stats, whose messages go to standard output.
#include "tests/faults/failure_rows.h"
#include "tests/faults/memory_modules.h"

namespace faults {
namespace {

using enum Effect;

constexpr char kCreate[] = "NODAL_ParamListCreate";
constexpr char kAddInt[] = "NODAL_ParamListAddInt";
constexpr char kRemove[] = "NODAL_ParamListRemoveLastParam";
constexpr char kGet[] = "NODAL_Get";
constexpr char kList[] = "NODAL_GetInstanceListAlloc";
constexpr char kGetParam[] = "NODAL_ParamListGetParam";

FailureRow Ends(const std::string &operation, const std::string &place, unsigned number, const std::string &message) {
  return {operation, place, number, {{message + "\n"}}, kEndsRun, 1};
}

FailureRow EndsSearch(const std::string &operation, const std::string &place, const std::string &message) {
  return {operation, place, 0, {{"DCPMM Profiler Info: " + message + "\n"}}, kEndsSearch};
}

const std::string kWrite = WriteOf(kConfigRegister);
const std::string kRead = kConfigRegister;

// The failure of a call within a step. The message of the step follows the message of the call.
FailureRow EndsStep(const std::string &operation, const std::string &place, unsigned number,
                    const std::string &message) {
  return {operation, place, number, {{message + "\n"}, {"<step>"}}, kEndsRun, 1};
}

const FailureTable kTable = {
    Ends(kCreate, "hardware_cpu_cpuList", 1, "ERROR: could not create cpuListInputParam: Success"),
    Ends(kAddInt, "hardware_cpu_cpuList", 1, "NODAL_ParamListAddInt cpuListInputParam Failure <text>"),
    Ends(kGet, "hardware_cpu_cpuList", 1, "ERROR: could not get cpuInfo: <text>"),
    Ends(kList, ListOf("hardware_nvd_dimm"), 1, "KestrelDCPMMCheckNVM: NODAL_GetInstanceListAlloc failure"),

    // A call of NODAL_ParamListAddInt prepares the next read, although its message names the previous one.
    EndsSearch(kCreate, ListOf("hardware_pci_seg"), "NODAL_ParamListCreate Failure"),
    EndsSearch(kList, ListOf("hardware_pci_seg"), "NODAL_NODE_hardware_pci_seg Failure"),
    EndsSearch(kGetParam, ListOf("hardware_pci_seg"),
               "NODAL_NODE_hardware_pci_seg, Unable to get segment param from segList"),
    EndsSearch(kAddInt, ListOf("hardware_pci_seg_bus"),
               "NODAL_NODE_hardware_pci_seg, Unable to add segment to paramList"),
    EndsSearch(kList, ListOf("hardware_pci_seg_bus"), "NODAL_NODE_hardware_pci_seg_bus Failure"),
    EndsSearch(kGetParam, ListOf("hardware_pci_seg_bus"),
               "NODAL_NODE_hardware_pci_seg_bus, Unable to get bus param from busList"),
    EndsSearch(kAddInt, ListOf("hardware_pci_seg_bus_slot"),
               "NODAL_NODE_hardware_pci_seg_bus, Unable to add bus to paramList"),
    EndsSearch(kList, ListOf("hardware_pci_seg_bus_slot"), "NODAL_NODE_hardware_pci_seg_bus_slot Failure"),
    EndsSearch(kGetParam, ListOf("hardware_pci_seg_bus_slot"),
               "NODAL_NODE_hardware_pci_seg_bus_slot, Unable to get slot param from slotList"),
    EndsSearch(kAddInt, ListOf("hardware_pci_seg_bus_slot_func"),
               "NODAL_NODE_hardware_pci_seg_bus_slot, Unable to add slot to paramList"),
    EndsSearch(kList, ListOf("hardware_pci_seg_bus_slot_func"), "NODAL_NODE_hardware_pci_seg_bus_slot_func Failure"),
    EndsSearch(kGetParam, ListOf("hardware_pci_seg_bus_slot_func"),
               "NODAL_NODE_hardware_pci_seg_bus_slot_func, Unable to get func param from funcList"),
    EndsSearch(kAddInt, kConfigHeader, "NODAL_NODE_hardware_pci_seg_bus_slot_func, Unable to add func to paramList"),
    EndsSearch(kGet, kConfigHeader,
               "NODAL_NODE_hardware_pci_seg_bus_slot_func_pciConfigHeader, Unable to get pciConfiHeader"),
    {kRemove, kConfigHeader, 0, {}, kSpoilsSearch},

    EndsStep(kCreate, kWrite, 1, "Cannot create instanceArgs"),
    EndsStep(kCreate, kWrite, 2, "cannot create inputArgs"),
    EndsStep(kAddInt, kWrite, 1, "NODAL_ParamListAddInt seg failure <number>"),
    EndsStep(kAddInt, kWrite, 2, "NODAL_ParamListAddInt bus failure <number>"),
    EndsStep(kAddInt, kWrite, 3, "NODAL_ParamListAddInt slot failure <number>"),
    EndsStep(kAddInt, kWrite, 4, "NODAL_ParamListAddInt func failure <number>"),
    EndsStep(kAddInt, kWrite, 5, "NODAL_ParamListAddInt size failure <number>"),
    EndsStep(kAddInt, kWrite, 6, "NODAL_ParamListAddInt control failure <number>"),
    EndsStep(kAddInt, kWrite, 7, "NODAL_ParamListAddInt event failure <number>"),
    EndsStep("NODAL_Set", kWrite, 1, "KestrelDCPMMProgramEvent: error fetching PCI information <text>"),

    // The message for the fifth argument, which is the size, says "seg".
    EndsStep(kCreate, kRead, 1, "Cannot allocate instanceArgs"),
    EndsStep(kAddInt, kRead, 1, "NODAL_ParamListAddInt for seg failure <number>"),
    EndsStep(kAddInt, kRead, 2, "NODAL_ParamListAddInt for bus failure <number>"),
    EndsStep(kAddInt, kRead, 3, "NODAL_ParamListAddInt for slot failure <number>"),
    EndsStep(kAddInt, kRead, 4, "NODAL_ParamListAddInt for func failure <number>"),
    EndsStep(kAddInt, kRead, 5, "NODAL_ParamListAddInt for seg failure <number>"),
    EndsStep(kAddInt, kRead, 6, "NODAL_ParamListAddInt for lowCounter failure <number>"),
    EndsStep(kGet, kRead, 1, "KestrelDCPMMReadCounters: error fetching PCI information <text>"),
    EndsStep(kRemove, kRead, 1, "KestrelDCPMMReadCounters: NODAL_ParamListRemoveLastParam failure <number>"),
    EndsStep(kAddInt, kRead, 7, "KestrelDCPMMReadCounters: NODAL_ParamListAddInt for highCounter failure <number>"),
    EndsStep(kGet, kRead, 2, "KestrelDCPMMReadCounters: error fetching PCI information <text>"),
};

}  // namespace

Report Profiler() {
  return {.name = "DcpmmStats",
          .host =
              [] {
                return MemoryHost({{0, 100}});
              },
          .arguments = {"-r", "dcpmm-stats"},
          .table = kTable,
          .rowReads = {kConfigRegister},
          .header = Header::kAfterProgramming,
          .parts = Parts::kRegisters,
          .messagesInOutput = true,
          .hasOwners = false};
}

}  // namespace faults
