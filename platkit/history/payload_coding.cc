#include "platkit/history/payload_coding.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace platkit::history {
namespace {

static_assert(std::endian::native == std::endian::little, "the words of a payload are little-endian");

using Word = uint32_t;
using Step = uint64_t;

template <typename Integer>
size_t CountIn(size_t bytes) {
  return (bytes + sizeof(Integer) - 1) / sizeof(Integer);
}

template <typename Integer>
Integer Load(Payload payload, size_t index) {
  const size_t start = index * sizeof(Integer);
  Integer integer = 0;
  std::memcpy(&integer, payload.data() + start, std::min(sizeof integer, payload.size() - start));
  return integer;
}

// Returns false if the integer does not fit the remaining bytes of the payload.
template <typename Integer>
bool Store(std::span<std::byte> payload, size_t index, Integer integer) {
  const size_t start = index * sizeof(Integer);
  const size_t room = std::min(sizeof integer, payload.size() - start);
  if (room < sizeof integer && integer >> (8 * room) != 0) return false;
  std::memcpy(payload.data() + start, &integer, room);
  return true;
}

// The difference as a signed number, mapped to an unsigned one.
uint64_t DifferenceOf(Word word, Word reference) { return ToUnsigned(static_cast<int32_t>(word - reference)); }

// Calls `store` with the index and the difference of each word that differs. Returns false if the form is malformed or
// `store` fails.
template <typename Store>
bool ReadWords(ByteReader &reader, size_t words, Store store) {
  for (size_t index = 0; index < words;) {
    uint32_t equal, differing;
    if (!reader.Varint(words - index, equal)) return false;
    index += equal;
    if (index == words) return true;
    if (!reader.Varint(words - index, differing) || differing == 0) return false;
    for (const size_t end = index + differing; index < end; ++index) {
      uint32_t difference;
      if (!reader.Varint(UINT32_MAX, difference) || !store(index, static_cast<Word>(ToSigned(difference))))
        return false;
    }
  }
  return true;
}

}  // namespace

void AppendWords(Payload payload, Payload reference, ByteVector &bytes) {
  const size_t words = CountIn<Word>(payload.size());
  const auto isEqual = [&](size_t index) { return Load<Word>(payload, index) == Load<Word>(reference, index); };
  for (size_t index = 0; index < words;) {
    const size_t start = index;
    while (index < words && isEqual(index))
      ++index;
    AppendVarint(bytes, index - start);
    if (index == words) return;
    size_t end = index;
    while (end < words && !isEqual(end))
      ++end;
    AppendVarint(bytes, end - index);
    for (; index < end; ++index)
      AppendVarint(bytes, DifferenceOf(Load<Word>(payload, index), Load<Word>(reference, index)));
  }
}

void AppendSteps(Payload payload, ByteVector &bytes) {
  Step before = 0;
  for (size_t index = 0; index < CountIn<Step>(payload.size()); ++index) {
    const auto step = Load<Step>(payload, index);
    AppendVarint(bytes, ToUnsigned(static_cast<int64_t>(step - before)));
    before = step;
  }
}

Splice FindSplice(Payload payload, Payload reference) {
  const size_t common = std::min(payload.size(), reference.size());
  size_t start = 0, end = 0;
  while (start < common && payload[start] == reference[start])
    ++start;
  while (end < common - start && payload[payload.size() - 1 - end] == reference[reference.size() - 1 - end])
    ++end;
  return {start, end};
}

bool ApplyWords(ByteReader &reader, std::span<std::byte> payload) {
  return ReadWords(reader, CountIn<Word>(payload.size()), [payload](size_t index, Word difference) {
    return Store<Word>(payload, index, Load<Word>(payload, index) + difference);
  });
}

bool SkipWords(ByteReader &reader, size_t payloadBytes) {
  return ReadWords(reader, CountIn<Word>(payloadBytes), [](size_t, Word) { return true; });
}

bool ReadSteps(ByteReader &reader, std::span<std::byte> payload) {
  Step step = 0;
  for (size_t index = 0; index < CountIn<Step>(payload.size()); ++index) {
    uint64_t difference;
    if (!reader.Varint(difference)) return false;
    step += static_cast<Step>(ToSigned(difference));
    if (!Store<Step>(payload, index, step)) return false;
  }
  return true;
}

bool SkipSteps(ByteReader &reader, size_t payloadBytes) {
  uint64_t difference;
  for (size_t index = 0; index < CountIn<Step>(payloadBytes); ++index) {
    if (!reader.Varint(difference)) return false;
  }
  return true;
}

}  // namespace platkit::history
