// The host's processors.
#ifndef PLATKIT_LINUX_RECORDS_PROCESSOR_RECORDS_H
#define PLATKIT_LINUX_RECORDS_PROCESSOR_RECORDS_H

#include <cstdint>

#include "platkit/linux/files/host_files.h"
#include "platkit/records.h"

namespace platkit {

// HVC_NOT_FOUND if there is no processor of that number, or its architecture has no model numbers. HVC_IO_ERROR if the
// model is none.
[[nodiscard]] HVC_ReturnStatus ReadProcessor(HostFiles &files, int64_t number, CpuRecord &record);

}  // namespace platkit

#endif  // PLATKIT_LINUX_RECORDS_PROCESSOR_RECORDS_H
