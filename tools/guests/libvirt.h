// Asks libvirt for the figures of its guests, over its read-only socket.
#ifndef GUESTS_LIBVIRT_H
#define GUESTS_LIBVIRT_H

#include <string>

#include "tools/guests/child.h"

namespace guests {

inline constexpr char kSystemUri[] = "qemu:///system";

// Both functions report each running guest first without the monitor's figures, and again when libvirt's call for it
// has returned. For a guest that is being migrated or saved, a third line has the progress. If a monitor does not
// answer, its guest has only the first line. A line is a guest in the form of ToJson, or a failure as {"error": "..."}.
//
// Makes one call for all guests. libvirt asks their monitors one after another, so a single monitor that does not
// answer blocks the whole call.
void AskLibvirtAtOnce(const std::string &uri, const Report &report);

// Makes one call for each guest, several at the same time.
void AskLibvirtOneByOne(const std::string &uri, const Report &report);

}  // namespace guests

#endif  // GUESTS_LIBVIRT_H
