// Asks libvirt for the figures of its guests, over its read-only socket.
#ifndef GUESTS_LIBVIRT_H
#define GUESTS_LIBVIRT_H

#include <string>

#include "tools/guests/child.h"

namespace guests {

inline constexpr char kSystemUri[] = "qemu:///system";

// Both report each running guest twice: first without figures, then with them as soon as they are known. The first line
// of a guest that does not answer is its only one. Guests are reported as by ToJson, failures as {"error": "..."}.
//
// Makes one call for all guests. libvirt asks their monitors one after another, so a single monitor that does not
// answer blocks the call for good.
void AskLibvirtAtOnce(const std::string &uri, const Report &report);

// Makes one call for each guest, several at the same time.
void AskLibvirtOneByOne(const std::string &uri, const Report &report);

}  // namespace guests

#endif  // GUESTS_LIBVIRT_H
