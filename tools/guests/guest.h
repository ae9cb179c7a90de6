// The monitor's answers about one virtual machine.
#ifndef GUESTS_GUEST_H
#define GUESTS_GUEST_H

#include <chrono>
#include <nlohmann/json.hpp>
#include <string>

#include "platkit/linux/kernel/guests_file.h"

namespace guests {

using platkit::Figure;
using platkit::GuestFigure;

// Figures that nobody reported are absent.
struct Guest {
  std::string monitor = {};  // "libvirt", or the path of a QMP socket
  std::string id = {};       // UUID of a guest of libvirt; path of the balloon device at a QMP socket
  std::string name = {};
  bool hasAnswered = false;
  Figure hasBalloon = {};      // 1 if it has a balloon device, else 0
  Figure pollingSeconds = {};  // how often its balloon driver is asked for statistics; 0: never
  Figure lastUpdate = {};      // when the driver last reported statistics, in seconds since 1970; 0: never
  platkit::GuestFigures figures = {};
};

nlohmann::json ToJson(const Guest &guest);

// Throws an exception of the JSON library if `json` does not have the form of ToJson.
Guest FromJson(const nlohmann::json &json);

// Store a figure; TakeBytes converts it to KB. They ignore implausibly large values, because a guest can report any
// value.
void TakeBytes(Guest &guest, GuestFigure figure, uint64_t bytes);
void TakeKB(Guest &guest, GuestFigure figure, uint64_t kb);
void TakeCount(Guest &guest, GuestFigure figure, uint64_t count);

// Stores `memoryKB`, the guest's memory with an empty balloon. Also stores the balloon's size: 0 without a balloon
// device, else `memoryKB` minus `leftKB`, the memory that the balloon leaves to the guest.
void TakeBalloon(Guest &guest, Figure memoryKB, Figure leftKB);

// Adds the figures of a later answer about the same guest. The PID and the start time stay those of the first answer.
void Merge(Guest &guest, const Guest &later);

// Whether the guest's statistics are from its last poll. Without polling, they can be as old as its boot, so the result
// is false.
bool HasCurrentStatistics(const Guest &guest, std::chrono::system_clock::time_point now);

// Derives from the other figures whether the guest has a balloon driver, and drops statistics that are not current.
void Settle(Guest &guest, std::chrono::system_clock::time_point now);

}  // namespace guests

#endif  // GUESTS_GUEST_H
