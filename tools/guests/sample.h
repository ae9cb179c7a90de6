// Asks all monitors at the same time.
#ifndef GUESTS_SAMPLE_H
#define GUESTS_SAMPLE_H

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "tools/guests/guest.h"

namespace guests {

struct Monitors {
  std::optional<std::string> libvirt = {};  // URI of a hypervisor on this host
  std::vector<std::string> qmp = {};        // paths of sockets, each once
};

struct Sample {
  uint64_t uptime = 0;                     // before the monitors were asked, in milliseconds since boot
  std::vector<Guest> guests = {};          // sorted by name; Settle was called for each
  std::vector<std::string> failures = {};  // one message for each source or guest that did not answer
  bool isEmpty = false;                    // no source could be asked at all
};

// Returns after `deadline` at the latest. If a monitor does not answer, only its own figures are missing.
Sample TakeSample(const Monitors &monitors, std::chrono::milliseconds deadline);

}  // namespace guests

#endif  // GUESTS_SAMPLE_H
