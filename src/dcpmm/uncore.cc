#include "src/dcpmm/uncore.h"

#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <iterator>
#include <span>

#include "platkit/records.h"
#include "src/dcpmm/sockets.h"
#include "src/nodal/nodes.h"
#include "src/nodal/param_list.h"
#include "src/status/status.h"

namespace kestrel {
namespace {

// A value and the register that it is written to. An event's value has the event in bits 0 to 7 and its mask in bits 8
// to 15; bit 22 enables the counter. A unit's control register takes 0x100 to freeze its counters, 0x102 to reset them,
// and 0 to run them.
struct Event {
  const char *name;
  uint32_t value;
  uint32_t controlRegister;
  uint32_t accessSize;
};

constexpr Event DcpmmEventTable[] = {
    {"WPQ_EVENT", 0x004000E7, 0xD8, 4},
    {"CAS_COUNT_RD_EVENT", 0x00400304, 0xDC, 4},
    {"CAS_COUNT_WR_EVENT", 0x00400C04, 0xE0, 4},
    {"RPQ_EVENT", 0x004000E3, 0xE4, 4},
    {"M2M_TAG_DIRTY_EVENT", 0x0040022C, 0x230, 4},
    {"M2M_TAG_CLEAN_EVENT", 0x0040012C, 0x238, 4},
    {"M2M_WRITE_NI_EVENT", 0x00408038, 0x240, 4},
    {"IMC_UNIT_CONTROL_FREEZE", 0x00000100, 0xF4, 4},
    {"M2M_UNIT_CONTROL_FREEZE", 0x00000100, 0x258, 4},
    {"IMC_UNIT_CONTROL_RESET", 0x00000102, 0xF4, 4},
    {"IMC_UNIT_CONTROL_UNFREEZE", 0x00000000, 0xF4, 4},
    {"M2M_UNIT_CONTROL_RESET", 0x00000102, 0x258, 4},
    {"M2M_UNIT_CONTROL_UNFREEZE", 0x00000000, 0x258, 4},
};

// A counter, whose halves are in two registers.
struct Counter {
  const char *name;
  uint32_t lowRegister;
  uint32_t highRegister;
  uint32_t highMask;
  uint32_t shift;
  uint32_t accessSize;
};

constexpr Counter DcpmmCounterTable[] = {
    {"UNC_M_PMM_WPQ_INSERTS", 0xA0, 0xA4, 0xFFFF, 32, 4},
    {"UNC_M_CAS_COUNT_RD", 0xA8, 0xAC, 0xFFFF, 32, 4},
    {"UNC_M_CAS_COUNT_WR", 0xB0, 0xB4, 0xFFFF, 32, 4},
    {"UNC_M_PMM_RPQ_INSERTS", 0xB8, 0xBC, 0xFFFF, 32, 4},
    {"UNC_M2M_TAG_HIT_NM_RD_HIT_DIRTY", 0x208, 0x20C, 0xFFFF, 32, 4},
    {"UNC_M2M_TAG_HIT_NM_RD_HIT_CLEAN", 0x210, 0x214, 0xFFFF, 32, 4},
    {"UNC_M2M_IMC_WRITES_NI", 0x218, 0x21C, 0xFFFF, 32, 4},
};

// The events and counters of each kind of unit, in the order of programming and reading.
using Names = std::span<const char *const>;
constexpr const char *kIMCEvents[] = {"RPQ_EVENT", "WPQ_EVENT", "CAS_COUNT_WR_EVENT", "CAS_COUNT_RD_EVENT"};
constexpr const char *kM2MEvents[] = {"M2M_TAG_CLEAN_EVENT", "M2M_TAG_DIRTY_EVENT", "M2M_WRITE_NI_EVENT"};
constexpr const char *kIMCCounters[] = {"UNC_M_PMM_RPQ_INSERTS", "UNC_M_PMM_WPQ_INSERTS", "UNC_M_CAS_COUNT_WR",
                                        "UNC_M_CAS_COUNT_RD"};
constexpr const char *kM2MCounters[] = {"UNC_M2M_TAG_HIT_NM_RD_HIT_CLEAN", "UNC_M2M_TAG_HIT_NM_RD_HIT_DIRTY",
                                        "UNC_M2M_IMC_WRITES_NI"};

template <typename Entry, size_t size>
const Entry *Find(const Entry (&table)[size], const char *name) {
  const Entry *found =
      std::find_if(std::begin(table), std::end(table), [&](const Entry &e) { return strcasecmp(e.name, name) == 0; });
  return found == std::end(table) ? nullptr : found;
}

bool IsM2M(const UncoreUnit &unit) { return unit.slot == 8 || unit.slot == 9; }

// The entry of kUnitPlaces for a unit; the last entry if none matches.
const UnitPlace &PlaceOf(const UncoreUnit &unit) {
  const UnitPlace *last = std::end(kUnitPlaces) - 1;
  return *std::find_if(std::begin(kUnitPlaces), last, [&](const UnitPlace &place) {
    return place.slot == unit.slot && place.function == unit.function;
  });
}

// A number for an argument list, and its name in messages.
struct Argument {
  const char *words;
  uint32_t value;
};

HVC_ReturnStatus Add(NODAL_ParamList *list, std::initializer_list<Argument> arguments) {
  for (const Argument &argument : arguments) {
    const HVC_ReturnStatus status = NODAL_ParamListAddInt(list, argument.value);
    if (status != HVC_OK) {
      std::printf("NODAL_ParamListAddInt %s failure %u\n", argument.words, status);
      return status;
    }
  }
  return HVC_OK;
}

HVC_ReturnStatus CheckAccess(const char *step, HVC_ReturnStatus status) {
  if (status != HVC_OK) {
    std::printf("%s: error fetching PCI information %s\n", step, HVC_ReturnStatusToString(status));
  }
  return status;
}

// Reads both halves of a counter.
HVC_ReturnStatus ReadHalves(const UncoreUnit &unit, const Counter &counter, uint32_t &low, uint32_t &high) {
  constexpr char kStep[] = "KestrelDCPMMReadCounters";
  const ParamList arguments = MakeArguments(1);
  if (arguments == nullptr) {
    std::puts("Cannot allocate instanceArgs");
    return HVC_NO_MEMORY;
  }
  const auto read = [&](uint32_t &half) {
    PciConfigRegRecord record = {};
    const HVC_ReturnStatus status = CheckAccess(kStep, ReadRecord(nodes::kPciConfigReg, arguments.get(), record));
    half = record.value;
    return status;
  };
  // The access size also has the text "for seg" in its message; it must not change.
  HVC_ReturnStatus status = Add(arguments.get(), {{"for seg", unit.segment},
                                                  {"for bus", unit.bus},
                                                  {"for slot", unit.slot},
                                                  {"for func", unit.function},
                                                  {"for seg", counter.accessSize},
                                                  {"for lowCounter", counter.lowRegister}});
  if (status == HVC_OK) status = read(low);
  if (status != HVC_OK) return status;

  status = NODAL_ParamListRemoveLastParam(arguments.get());
  if (status != HVC_OK) {
    std::printf("%s: NODAL_ParamListRemoveLastParam failure %u\n", kStep, status);
    return status;
  }
  status = NODAL_ParamListAddInt(arguments.get(), counter.highRegister);
  if (status != HVC_OK) {
    std::printf("%s: NODAL_ParamListAddInt for highCounter failure %u\n", kStep, status);
    return status;
  }
  return read(high);
}

// Combines the halves in 32 bits. There, a shift by 32 is a shift by 0, so the high half is ORed into the low half.
// This must not change, because people compare counts with earlier runs.
uint64_t Combine(const Counter &counter, uint32_t low, uint32_t high) {
  return ((high & counter.highMask) << (counter.shift % 32)) | low;
}

// Ends the process after a failed step.
[[noreturn]] void Die(const char *step, const char *what, const char *name = "") {
  std::printf("%s: %s%s\n", step, what, name);
  std::exit(EXIT_FAILURE);
}

void ProgramOrDie(const UncoreUnit &unit, const char *event, const char *step, const char *what,
                  const char *name = "") {
  if (KestrelDCPMMProgramEvent(unit, event) != HVC_OK) Die(step, what, name);
}

}  // namespace

HVC_ReturnStatus KestrelDCPMMProgramEvent(const UncoreUnit &unit, const char *eventName) {
  constexpr char kStep[] = "KestrelDCPMMProgramEvent";
  const Event *event = Find(DcpmmEventTable, eventName);
  if (event == nullptr) {
    std::printf("%s: Invalid eventName %s\n", kStep, eventName);
    return HVC_FAILURE;
  }
  ParamList inputArgs;  // destroyed last
  const ParamList instanceArgs = MakeArguments(1);
  if (instanceArgs == nullptr) {
    std::puts("Cannot create instanceArgs");
    return HVC_NO_MEMORY;
  }
  inputArgs.reset(NODAL_ParamListCreate(NODAL_LIST_INPUT, 1));
  if (inputArgs == nullptr) {
    std::puts("cannot create inputArgs");
    return HVC_NO_MEMORY;
  }
  HVC_ReturnStatus status = Add(instanceArgs.get(), {{"seg", unit.segment},
                                                     {"bus", unit.bus},
                                                     {"slot", unit.slot},
                                                     {"func", unit.function},
                                                     {"size", event->accessSize},
                                                     {"control", event->controlRegister}});
  if (status == HVC_OK) status = Add(inputArgs.get(), {{"event", event->value}});
  if (status != HVC_OK) return status;
  return CheckAccess(kStep, NODAL_Set(nodes::kPciConfigReg.id, instanceArgs.get(), inputArgs.get(), nullptr, 0));
}

HVC_ReturnStatus KestrelDCPMMReadCounters(const UncoreUnit &unit, const char *counterName,
                                          const CounterOutput &output) {
  constexpr char kStep[] = "KestrelDCPMMReadCounters";
  const Counter *counter = Find(DcpmmCounterTable, counterName);
  if (counter == nullptr) {
    std::printf("%s: Invalid event %s\n", kStep, counterName);
    return HVC_FAILURE;
  }
  uint32_t low = 0, high = 0;
  const HVC_ReturnStatus status = ReadHalves(unit, *counter, low, high);
  if (status != HVC_OK) return status;
  const std::optional<size_t> socket = SocketOfBus(unit.bus);
  if (!socket) {
    std::printf("%s: Cannot find socket info\n", kStep);
    return HVC_FAILURE;
  }
  const UnitPlace &place = PlaceOf(unit);
  output.Print({*socket, place.name, place.channel}, counter->name, Combine(*counter, low, high));
  return HVC_OK;
}

void kestrelDCPMMFreezeUnit(const UncoreUnit &unit) {
  constexpr char kStep[] = "kestrelDCPMMFreezeUnit";
  if (IsM2M(unit)) {
    ProgramOrDie(unit, "M2M_UNIT_CONTROL_FREEZE", kStep, "Error in M2M Unit Freeze");
  } else {
    ProgramOrDie(unit, "IMC_UNIT_CONTROL_FREEZE", kStep, "Error in IMC Unit Freeze");
  }
}

void kestrelDCPMMProgramAllUnits(const UncoreUnit &unit) {
  for (const char *event : IsM2M(unit) ? Names(kM2MEvents) : Names(kIMCEvents))
    ProgramOrDie(unit, event, "kestrelDCPMMProgramAllUnits", "Error programming ", event);
}

void kestrelDCPMMResetUnit(const UncoreUnit &unit) {
  constexpr char kStep[] = "kestrelDCPMMResetUnit";
  if (IsM2M(unit)) {
    ProgramOrDie(unit, "M2M_UNIT_CONTROL_RESET", kStep, "Error in M2M Unit Reset");
    ProgramOrDie(unit, "M2M_UNIT_CONTROL_UNFREEZE", kStep, "Error in M2M Unit Unfreeze");
  } else {
    ProgramOrDie(unit, "IMC_UNIT_CONTROL_RESET", kStep, "Error IMC Unit Reset");  // "in" must not be added
    ProgramOrDie(unit, "IMC_UNIT_CONTROL_UNFREEZE", kStep, "Error in IMC Unit Unfreeze");
  }
}

void kestrelDCPMMReadAllCounters(const UncoreUnit &unit, const CounterOutput &output) {
  kestrelDCPMMFreezeUnit(unit);
  for (const char *counter : IsM2M(unit) ? Names(kM2MCounters) : Names(kIMCCounters)) {
    if (KestrelDCPMMReadCounters(unit, counter, output) != HVC_OK) {
      Die("kestrelDCPMMReadAllCounters", "Error reading ", counter);
    }
  }
}

}  // namespace kestrel
