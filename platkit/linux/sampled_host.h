// A Linux host that is read repeatedly, one sample after the other.
#ifndef PLATKIT_LINUX_SAMPLED_HOST_H
#define PLATKIT_LINUX_SAMPLED_HOST_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/files/sample_clock.h"
#include "platkit/linux/kernel/figure.h"
#include "platkit/source.h"

namespace platkit {

// In a sample, each file is read at most once. Files stay open for the next sample.
class SampledHost {
 public:
  // Reads the running host below `root`, or a saved root folder. Keeps up to `maxDescriptors` files open; see
  // HostFiles::KeepOpen. Throws std::bad_alloc.
  SampledHost(const char *root, Reach reach, size_t maxDescriptors);

  // Opens the root folder. HVC_NOT_FOUND, HVC_NO_PERMISSION or HVC_IO_ERROR if that fails.
  [[nodiscard]] HVC_ReturnStatus Open() { return files_.OpenRoot(); }

  // From now on, reads the limits and the members of control groups again only if the last values are at least `maxAge`
  // old.
  void ReuseSettings(Clock::Time::duration maxAge) { *settingsAge_ = maxAge; }

  // Starts a sample. Files are read again, except those of ReuseSettings and a few that are costly to read; see
  // GroupReader and HeapRecords.
  void BeginSample() { clock_.BeginSample(); }

  Source &source() { return *source_; }

  // MemAvailable in bytes.
  Figure AvailableBytes();

  // The host's name (made printable), the kernel's release, and the identifier of this boot. If they cannot be read,
  // the texts are empty, and the identifier is all zeros.
  std::string Name();
  std::string KernelRelease();
  std::array<std::byte, 16> BootID();

 private:
  HostFiles FilesOf(const char *root, Reach reach, size_t maxDescriptors) const;
  std::string ReadLineOf(const char *path);

  SampleClock clock_;
  std::shared_ptr<Clock::Time::duration> settingsAge_ =
      std::make_shared<Clock::Time::duration>(Clock::Time::duration::zero());
  HostFiles files_;  // for the figures of this class
  std::unique_ptr<Source> source_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_SAMPLED_HOST_H
