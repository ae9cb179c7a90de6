// The format of a history's segments, shared by the reader and the writer. docs/history.md describes it in full.
#ifndef PLATKIT_HISTORY_FORMAT_H
#define PLATKIT_HISTORY_FORMAT_H

#include <algorithm>
#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "platkit/definitions.h"

namespace platkit::history {

inline constexpr int64_t kNanosInSecond = 1'000'000'000;

// The times of three clocks when a sample was taken, in nanoseconds. How far each clock moved between two samples shows
// why there is a gap: the boot clock runs while the machine sleeps, and the monotonic clock does not. Only the wall
// clock can be set.
struct SampleTime {
  int64_t wall;       // CLOCK_REALTIME
  int64_t boot;       // CLOCK_BOOTTIME
  int64_t monotonic;  // CLOCK_MONOTONIC

  auto operator<=>(const SampleTime &) const = default;
};

// Facts about a sample that its entries do not contain.
enum Mark : uint8_t {
  kNoMark = 0,
  kRecorderStarted = 1,  // the first sample of a recorder
  kThinned = 2,          // samples between the previous one and this one were removed
};

struct SampleInfo {
  static constexpr uint64_t kUnknown = UINT64_MAX;

  SampleTime time;
  uint64_t availableBytes = kUnknown;  // of each minute, thinning keeps the sample with the lowest value
  uint8_t marks = kNoMark;             // bits of Mark
};

// The host that was sampled. Each key frame has a copy.
struct HostHeader {
  Definitions definitions;
  std::string host;                    // its name
  std::string kernel;                  // its release, such as 6.1.0-18-amd64
  std::array<std::byte, 16> bootId{};  // of this boot; all zeros if unknown
  uint32_t intervalMillis = 0;         // the intended time between two samples

  auto operator<=>(const HostHeader &) const = default;
};

// Limits. A reader checks them before it allocates memory; a writer refuses data that exceeds them.
inline constexpr size_t kMaxPayloadBytes = size_t{4} << 20;
inline constexpr uint32_t kMaxEntries = 1u << 22;                // of a sample
inline constexpr size_t kMaxSampleBytes = size_t{256} << 20;     // keys and payloads of a sample
inline constexpr size_t kMaxHostText = 255;                      // of each text of a HostHeader
inline constexpr uint64_t kMaxSegmentBytes = uint64_t{4} << 30;  // of a file
inline constexpr uint32_t kMaxFrames = 1u << 20;                 // of a segment
inline constexpr uint32_t kMaxDeltaFrames = 4095;                // after a key frame
inline constexpr size_t kMaxSegments = size_t{1} << 18;          // of a history: 30 years

// The maximum size of a sample in a segment of this size. It keeps a small file from making a reader use much memory.
constexpr size_t MaxSampleBytes(uint64_t segmentBytes) {
  constexpr uint64_t kAlways = uint64_t{32} << 20, kRatio = 1024;
  return static_cast<size_t>(std::min<uint64_t>(kMaxSampleBytes, kAlways + kRatio * segmentBytes));
}

// The maximum total size of the payloads whose size changes in the delta frames after a key frame. A reader moves such
// a payload even if it grows by a single byte. Without a limit, a small file could therefore keep a reader busy for a
// long time. `chainBytes` is the total size of the key frame and these delta frames.
constexpr uint64_t MaxMovedBytes(uint64_t chainBytes) {
  constexpr uint64_t kAlways = uint64_t{64} << 20, kRatio = 4096;
  return kAlways + kRatio * chainBytes;
}

}  // namespace platkit::history

#endif  // PLATKIT_HISTORY_FORMAT_H
