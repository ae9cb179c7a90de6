// Asks a single QEMU for the figures of its guest, over a QMP socket.
#ifndef GUESTS_QMP_H
#define GUESTS_QMP_H

#include <string>

#include "tools/guests/child.h"

namespace guests {

// libvirt keeps the only connection to the sockets that it creates. A second client would wait there forever, or take
// libvirt's place after a restart.
bool IsSocketOfLibvirt(const std::string &path);

// Reports the guest at the socket in the form of ToJson, or a failure in the form {"error": "..."}.
void AskQmp(const std::string &path, const Report &report);

}  // namespace guests

#endif  // GUESTS_QMP_H
