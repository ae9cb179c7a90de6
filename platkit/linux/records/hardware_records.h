// The records of processors, and the list of persistent-memory modules.
#ifndef PLATKIT_LINUX_RECORDS_HARDWARE_RECORDS_H
#define PLATKIT_LINUX_RECORDS_HARDWARE_RECORDS_H

#include <cstdint>

#include "platkit/linux/files/host_files.h"
#include "platkit/param_list.h"
#include "platkit/records.h"

namespace platkit {

// From /proc/cpuinfo. HVC_NOT_FOUND if the processor does not exist, or its architecture has no model numbers.
// HVC_IO_ERROR if the model is malformed or does not fit the record.
[[nodiscard]] HVC_ReturnStatus ReadProcessorRecord(HostFiles &files, int64_t number, CpuRecord &record);

// Lists the numbers of /sys/bus/nd/devices/nmemN, ascending.
[[nodiscard]] HVC_ReturnStatus ListNvdimmNumbers(HostFiles &files, ParamList &list);

}  // namespace platkit

#endif  // PLATKIT_LINUX_RECORDS_HARDWARE_RECORDS_H
