// The forms in which a chunk stores a payload. Some store the difference from another payload, the reference.
#ifndef PLATKIT_HISTORY_PAYLOAD_CODING_H
#define PLATKIT_HISTORY_PAYLOAD_CODING_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "platkit/history/byte_stream.h"

namespace platkit::history {

enum class Coding : uint8_t {
  kWhole = 0,   // the bytes
  kWords = 1,   // the words that differ from a reference of the same size, and by how much
  kSplice = 2,  // the reference with its middle replaced
  kSteps = 3,   // integers of 64 bits, each as its difference from the previous one
};
inline constexpr unsigned kCodingBits = 2;

using Payload = std::span<const std::byte>;

// Append the coded form of `payload`.
//
// Words are little-endian integers of 32 bits, because many fields of records are not aligned to 64 bits. Zeros fill
// the last word. Until all words are covered, AppendWords appends in turn:
// - the number of equal words (varint),
// - the number of differing words (varint), and the difference of each from the reference's word (signed varints).
void AppendWords(Payload payload, Payload reference, ByteVector &bytes);
void AppendSteps(Payload payload, ByteVector &bytes);

// A splice: how many bytes the payload has in common with the start and the end of the reference.
struct Splice {
  size_t start;
  size_t end;
};
Splice FindSplice(Payload payload, Payload reference);

// Apply or read the coded form. Return false if the form is malformed; the payload is then undefined.
[[nodiscard]] bool ApplyWords(ByteReader &reader, std::span<std::byte> payload);  // `payload` holds the reference
[[nodiscard]] bool ReadSteps(ByteReader &reader, std::span<std::byte> payload);

// Skip the coded form of a payload of this size. Return false if the form is malformed.
[[nodiscard]] bool SkipWords(ByteReader &reader, size_t payloadBytes);
[[nodiscard]] bool SkipSteps(ByteReader &reader, size_t payloadBytes);

}  // namespace platkit::history

#endif  // PLATKIT_HISTORY_PAYLOAD_CODING_H
