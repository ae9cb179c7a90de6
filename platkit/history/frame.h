// A frame: one sample in a segment, as bytes.
//
// A frame consists of a head and chunks. The head is a fixed part and a directory with an entry for each chunk. Frames
// check themselves: the head has a checksum, and the directory has one for each chunk.
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

// Marks the start of a frame, and occurs nowhere else in a segment: a reader finds the next frame after damage by it.
inline constexpr std::string_view kMagic = "\x9fnodalH\n";

enum class FrameKind : uint8_t {
  kKey = 'K',    // the whole sample
  kDelta = 'D',  // the differences to the frame before
  kEnd = 'E',    // no sample: the recorder ended by itself
};

enum class ChunkKind : uint8_t {
  kHost = 'H',     // the header of the host; the first chunk of a key frame
  kEntries = 'E',  // keys and payloads; of all entries in a key frame, of the new ones in a delta frame
  kChanges = 'C',  // payloads that differ from the frame before
  kRemoved = 'R',  // entries that no longer exist
};

// Each entry has a number, which is valid until the next key frame. A key frame numbers its entries from 0, in the
// order of their keys. A new entry of a delta frame gets the next number that was never used.
struct Chunk {
  uint32_t storedBytes;
  uint32_t rawBytes;  // the same as storedBytes: not compressed
  uint32_t check;     // of the stored bytes
  uint32_t firstId;   // the first and the last entry that the chunk is about
  uint32_t lastId;
  ChunkKind kind;
  uint8_t unused = 0;
  uint16_t keyBytes;  // of the first key, in kEntries
};
static_assert(sizeof(Chunk) == 24);

struct FrameHead {
  std::array<char, 8> magic;
  uint32_t check;  // checksum of the head without its mask, from headBytes on
  uint32_t headBytes;
  uint32_t frameBytes;
  uint16_t version;
  FrameKind kind;
  uint8_t marks;
  uint32_t base;     // the check of the frame before; 0 in a key frame
  uint32_t entries;  // of the sample
  SampleTime time;
  uint64_t availableBytes;
  uint16_t chunks;
  uint8_t mask;  // XORed to each byte after the fixed part, so that the magic does not occur there
  uint8_t unused = 0;
  uint32_t nextId;  // the number for the next new entry
};
static_assert(sizeof(FrameHead) == 72);

inline constexpr size_t kMaxHeadBytes = size_t{8} << 20;
inline constexpr size_t kMaxFrameBytes = size_t{320} << 20;
inline constexpr size_t kMaxChunkBytes = size_t{8} << 20;  // raw

// A chunk's entry in the directory, and where its bytes are.
struct ChunkPlace {
  Chunk chunk;
  std::string_view firstKey;  // in the bytes of the head
  uint32_t start;             // in the frame
};

// Checks the magic and the sizes in the fixed part of a head, before the rest of the head is read. False if no frame
// can start like this. `fileBytes` is the number of bytes from the start of the frame to the end of the file.
bool IsPossibleHead(const FrameHead &head, uint64_t fileBytes);

// Tells whether the last bytes of a file can be the start of a frame that was not written to its end. `bytes` are the
// first bytes of that frame: as many as a FrameHead has, or fewer if the file ends before. `fileBytes` is the number of
// bytes from the start of the frame to the end of the file.
bool IsPossibleCutFrame(std::span<const std::byte> bytes, uint64_t fileBytes);

// Removes the mask from a head, and verifies its sizes and its checksum. `bytes` are the bytes of the head.
bool UnmaskAndCheck(std::span<std::byte> bytes);

// Reads the directory of a checked head. `bytes` must not move while `places` is used. False if a size exceeds a limit
// or does not fit the frame.
bool ReadDirectory(std::span<const std::byte> bytes, std::vector<ChunkPlace> &places);

// The raw form of the host's header.
void AppendHost(const HostHeader &host, ByteVector &bytes);
bool ReadHost(std::span<const std::byte> bytes, HostHeader &host);

}  // namespace platkit::history

#endif  // PLATKIT_HISTORY_FRAME_H
