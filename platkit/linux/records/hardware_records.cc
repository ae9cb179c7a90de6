#include "platkit/linux/records/hardware_records.h"

#include <vector>

#include "platkit/linux/kernel/cpuinfo.h"
#include "platkit/linux/kernel/nvdimm.h"

namespace platkit {

HVC_ReturnStatus ReadProcessorRecord(HostFiles &files, int64_t number, CpuRecord &record) {
  if (number < 0) return HVC_NOT_FOUND;
  Processor processor;
  const HVC_ReturnStatus status = FindProcessor(files, static_cast<uint64_t>(number), processor);
  if (status != HVC_OK) return status;
  const uint64_t model = processor.model.Cell(0);
  if (model > UINT8_MAX) return HVC_IO_ERROR;
  record.model = static_cast<uint8_t>(model);
  return HVC_OK;
}

HVC_ReturnStatus ListNvdimmNumbers(HostFiles &files, ParamList &list) {
  std::vector<uint32_t> numbers;
  HVC_ReturnStatus status = ListNvdimms(files, numbers);
  list.Expect(numbers.size());
  for (size_t i = 0; i < numbers.size() && status == HVC_OK; ++i)
    status = list.Add(numbers[i]);
  return status;
}

}  // namespace platkit
