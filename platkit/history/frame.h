// A frame: the bytes of one sample in a segment, or of the end of a recording.
//
// A frame consists of a head and chunks. The head consists of a fixed part and a directory with an entry for each
// chunk. The head has a checksum, and each entry of the directory has the checksum of its chunk.
#ifndef PLATKIT_HISTORY_FRAME_H
#define PLATKIT_HISTORY_FRAME_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "platkit/history/byte_stream.h"
#include "platkit/history/format.h"
#include "platkit/snapshot/format.h"
#include "platkit/status.h"

namespace platkit::history {

inline constexpr uint16_t kVersion = 1;

// Marks the start of a frame, and occurs nowhere else in a segment. After damage, a reader searches for it to find the
// next frame.
inline constexpr std::string_view kMagic = "\x9fnodalH\n";

enum class FrameKind : uint8_t {
  kKey = 'K',    // the whole sample
  kDelta = 'D',  // the differences from the previous frame
  kEnd = 'E',    // no sample: the recorder stopped normally
};

enum class ChunkKind : uint8_t {
  kHost = 'H',     // the header of the host; the first chunk of a key frame
  kEntries = 'E',  // keys and payloads: of all entries in a key frame, of new entries in a delta frame
  kChanges = 'C',  // payloads that differ from the previous frame
  kRemoved = 'R',  // entries that no longer exist
};

// Each entry has a number, which is valid until the next key frame. A key frame numbers its entries from 0, in the
// order of their keys. A new entry in a delta frame gets the next number; numbers of removed entries are not used
// again.
struct Chunk {
  uint32_t storedBytes;
  uint32_t rawBytes;  // equal to storedBytes: not compressed
  uint32_t check;     // of the stored bytes
  uint32_t firstId;   // the numbers of the first and the last entry in the chunk
  uint32_t lastId;
  ChunkKind kind;
  uint8_t unused = 0;
  uint16_t keyBytes;  // of the first key, in kEntries
};
static_assert(sizeof(Chunk) == 24);

struct FrameHead {
  std::array<char, 8> magic;
  uint32_t check;  // checksum of the unmasked head, from headBytes on
  uint32_t headBytes;
  uint32_t frameBytes;
  uint16_t version;
  FrameKind kind;
  uint8_t marks;
  uint32_t base;     // `check` of the previous frame; 0 unless this is a delta frame
  uint32_t entries;  // of the sample
  SampleTime time;
  uint64_t availableBytes;
  uint16_t chunks;
  uint8_t mask;  // XORed with each byte after the fixed part, so that the magic does not occur there
  uint8_t unused = 0;
  uint32_t nextId;  // the number for the next new entry
};
static_assert(sizeof(FrameHead) == 72);

inline constexpr size_t kMaxHeadBytes = size_t{8} << 20;
inline constexpr size_t kMaxFrameBytes = size_t{320} << 20;
inline constexpr size_t kMaxChunkBytes = size_t{8} << 20;  // raw

// A chunk's entry in the directory, and the place of the chunk's bytes.
struct ChunkPlace {
  Chunk chunk;
  std::string_view firstKey;  // points into the bytes of the head
  uint32_t start;             // in the frame
};

// Checks the magic and the sizes in the fixed part of a head, before the rest of the head is read. Returns false if no
// frame can start with this head. `fileBytes` is the number of bytes from the start of the frame to the end of the
// file.
bool IsPossibleHead(const FrameHead &head, uint64_t fileBytes);

// Whether the last bytes of a file can be the start of an incompletely written frame. `bytes` are the first bytes of
// that frame: as many as a FrameHead has, or fewer if the file ends earlier. `fileBytes` is the number of bytes from
// the start of the frame to the end of the file.
bool IsPossibleCutFrame(std::span<const std::byte> bytes, uint64_t fileBytes);

// Removes the mask from a head in place. Returns whether the head's checksum is right. `bytes` are all bytes of the
// head.
bool UnmaskAndCheck(std::span<std::byte> bytes);

// Reads the directory of a checked head. `bytes` must not move while `places` is used. Returns false if an entry is
// malformed, exceeds a limit or does not fit the frame.
bool ReadDirectory(std::span<const std::byte> bytes, std::vector<ChunkPlace> &places);

// Write and read the raw form of the host's header.
void AppendHost(const HostHeader &host, ByteVector &bytes);
bool ReadHost(std::span<const std::byte> bytes, HostHeader &host);

}  // namespace platkit::history

#endif  // PLATKIT_HISTORY_FRAME_H
