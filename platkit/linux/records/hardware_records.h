// The records of processors, and the list of persistent-memory modules.
#ifndef PLATKIT_LINUX_RECORDS_HARDWARE_RECORDS_H
#define PLATKIT_LINUX_RECORDS_HARDWARE_RECORDS_H

#include <cstdint>

#include "platkit/linux/files/host_files.h"
#include "platkit/param_list.h"
#include "platkit/records.h"

namespace platkit {

// Fills the record from /proc/cpuinfo. Statuses as for FindProcessor, and HVC_IO_ERROR if the model number is malformed
// or does not fit the record.
[[nodiscard]] HVC_ReturnStatus ReadProcessorRecord(HostFiles &files, int64_t number, CpuRecord &record);

// Lists the numbers of the modules, /sys/bus/nd/devices/nmemN, in ascending order.
[[nodiscard]] HVC_ReturnStatus ListNvdimmNumbers(HostFiles &files, ParamList &list);

}  // namespace platkit

#endif  // PLATKIT_LINUX_RECORDS_HARDWARE_RECORDS_H
