// The raw form of a chunk of entries: keys in ascending order, with their payloads.
#ifndef PLATKIT_HISTORY_ENTRY_CHUNK_H
#define PLATKIT_HISTORY_ENTRY_CHUNK_H

#include <map>
#include <string>

#include "platkit/history/payload_coding.h"
#include "platkit/history/sample.h"

namespace platkit::history {

// Each entry consists of:
// - the number of bytes that its key has in common with the previous key (varint),
// - the number of the key's other bytes (varint), and these bytes,
// - a byte with the type and the coding,
// - the size of the payload (varint), and the coded payload.
//
// The reference of a payload that is coded by words is the last payload of the same size in the chunk.
class EntryChunkWriter {
 public:
  void Add(const Entry &entry);
  void Clear();

  const ByteVector &raw() const { return raw_; }
  const std::string &firstKey() const { return firstKey_; }

 private:
  void AddPayload(Payload payload, uint8_t type);

  ByteVector raw_;
  ByteVector coded_;
  std::string firstKey_;
  std::string key_;
  std::map<size_t, ByteVector> references_;
};

class EntryChunkReader {
 public:
  explicit EntryChunkReader(std::span<const std::byte> raw) : reader_(raw) {}

  bool isAtEnd() const { return reader_.isAtEnd(); }

  // Reads the next entry, which stays valid until the next call. Returns false if the entry is malformed or exceeds a
  // limit.
  [[nodiscard]] bool Next(Entry &entry);

 private:
  bool ReadKey();
  bool ReadPayload(Coding coding, uint32_t size, Payload &payload);

  ByteReader reader_;
  std::string key_;
  std::map<size_t, ByteVector> references_;
};

}  // namespace platkit::history

#endif  // PLATKIT_HISTORY_ENTRY_CHUNK_H
