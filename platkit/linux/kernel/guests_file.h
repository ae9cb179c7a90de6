// /run/kestrel/guests.nodal: the answers of virtual machine monitors, which nodal-guests(1) writes. Its manual page
// describes the form of the file.
#ifndef PLATKIT_LINUX_KERNEL_GUESTS_FILE_H
#define PLATKIT_LINUX_KERNEL_GUESTS_FILE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

inline constexpr char kGuestsFile[] = "run/kestrel/guests.nodal";

// The figures of a guest. Amounts are in KB.
enum class GuestFigure : uint8_t {
  // From the monitor.
  kMemory,   // the guest's memory with an empty balloon
  kBalloon,  // size of the balloon; 0 without a balloon device
  kBalloonTarget,
  kBalloonDriver,  // 1 if the guest has a balloon driver, else 0
  // From the guest's balloon driver. The guest chooses these figures, so they can have any value.
  kTotal,   // memory that the guest's kernel manages
  kFree,    // not in use at all
  kUsable,  // free, or can be freed without swapping
  kDiskCaches,
  kSwappedIn,   // since the guest booted
  kSwappedOut,  // since the guest booted
  kMajorFaults,
  kHugePagesAllocated,  // number of huge pages since the guest booted
  kHugePagesRefused,
  // From the monitor, about a migration, a save or a dump in progress. kWritten is 0 if there is none.
  kWritten,
  kLeftToWrite,
  kDirtyRate,  // pages of the guest that change per second
  kCount,
};

inline constexpr size_t kGuestFigures = static_cast<size_t>(GuestFigure::kCount);

// The key of a figure in the file.
std::string_view KeyOf(GuestFigure figure);

// A guest, identified by the process that runs it. Figures that were not reported are absent.
struct GuestFigures {
  int64_t pid = 0;
  uint64_t startTicks = 0;  // see ReadStartTicks
  std::array<Figure, kGuestFigures> figures = {};

  Figure &operator[](GuestFigure figure) { return figures[static_cast<size_t>(figure)]; }
  const Figure &operator[](GuestFigure figure) const { return figures[static_cast<size_t>(figure)]; }
};

struct GuestsFile {
  uint64_t uptime = 0;  // when the monitors were asked, in milliseconds since boot
  uint64_t period = 0;  // time between two queries of the monitors, in milliseconds
  std::vector<GuestFigures> guests = {};
};

inline constexpr uint64_t kMaxGuestsPeriod = 3'600'000;

// Returns the last line of a file with these lines: "checksum", and the XXH64 of the lines in 16 hexadecimal digits.
std::string GuestsFileChecksum(std::string_view lines);

std::string FormatGuestsFile(const GuestsFile &file);

// Returns false if any part of the text is malformed; `file` is then unspecified.
bool ParseGuestsFile(std::string_view text, GuestsFile &file);

// Reads the guests in the file, in the order of their PIDs. Returns none if the file does not exist, is malformed, is
// at least three periods old, or can have been written by users other than root.
std::vector<GuestFigures> ReadGuestsFile(HostFiles &files);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_GUESTS_FILE_H
