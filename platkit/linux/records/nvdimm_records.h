// The persistent-memory modules that the kernel's nvdimm bus has.
#ifndef PLATKIT_LINUX_RECORDS_NVDIMM_RECORDS_H
#define PLATKIT_LINUX_RECORDS_NVDIMM_RECORDS_H

#include "platkit/linux/files/host_files.h"
#include "platkit/param_list.h"

namespace platkit {

// Their numbers, in ascending order. A host without the bus has none.
[[nodiscard]] HVC_ReturnStatus ListNvdimms(HostFiles &files, ParamList &list);

}  // namespace platkit

#endif  // PLATKIT_LINUX_RECORDS_NVDIMM_RECORDS_H
