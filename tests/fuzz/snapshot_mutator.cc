// Mutates snapshots so that their checksums stay correct: changes any bytes and recomputes the checksums, or changes
// entries and rewrites the file.
#include <cdb.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "platkit/snapshot/snapshot_file.h"
#include "platkit/snapshot/snapshot_writer.h"
#include "tests/fuzz/nodal.h"
#include "tests/fuzz/target.h"
#include "tests/support/scratch.h"

extern "C" size_t LLVMFuzzerMutate(uint8_t *data, size_t size, size_t maxSize);
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t *data, size_t size, size_t maxSize, unsigned seed);

namespace {

using namespace platkit::snapshot;
using Random = std::minstd_rand;

struct Entry {
  std::string key;
  ValueType type;
  std::string payload;
};

// A file whose positions may be invalid.
class Bytes {
 public:
  explicit Bytes(std::span<uint8_t> bytes) : bytes_(bytes) {}

  size_t size() const { return bytes_.size(); }
  bool Has(uint64_t position, uint64_t size) const {
    return position <= this->size() && size <= this->size() - position;
  }
  uint32_t Integer(size_t position) const { return cdb_unpack(&bytes_[position]); }
  void PutCheck(size_t start, size_t size, size_t position) {
    cdb_pack(Check(std::as_bytes(bytes_.subspan(start, size))), &bytes_[position]);
  }

 private:
  std::span<uint8_t> bytes_;
};

void MendValues(Bytes &file) {
  for (uint64_t position = kIndexCheckValue + kIndexCheckBytes; file.Has(position, kRecordHead);) {
    const uint64_t value = position + kRecordHead + file.Integer(position);
    const uint32_t length = file.Integer(position + 4);
    if (length < kValueOverhead || !file.Has(value, length)) return;
    file.PutCheck(value, length - kCheckBytes, value + length - kCheckBytes);
    position = value + length;
  }
}

void MendIndex(Bytes &file) {
  if (!file.Has(kIndexCheckValue, kIndexCheckBytes)) return;
  for (uint32_t table = 0; table < kTables; ++table) {
    const uint32_t position = file.Integer(table * 8);
    const uint64_t size = uint64_t{file.Integer(table * 8 + 4)} * kSlotBytes;
    if (file.Has(position, size)) file.PutCheck(position, size, kIndexCheckValue + 1 + table * 4);
  }
  constexpr uint32_t kChecked = kIndexCheckBytes - kCheckBytes;
  file.PutCheck(kIndexCheckValue, kChecked, kIndexCheckValue + kChecked);
}

std::vector<Entry> EntriesOf(std::span<const uint8_t> bytes) {
  const fuzz::MemoryFile content({reinterpret_cast<const char *>(bytes.data()), bytes.size()});
  SnapshotFile file;
  std::vector<Entry> entries;
  if (file.Open(content.path().c_str()) != HVC_OK) return entries;
  SnapshotFile::Cursor cursor(file);
  Value value;
  while (cursor.Next() == HVC_OK) {
    if (cursor.Read(value) == HVC_OK)
      entries.push_back({std::string(cursor.key()), value.type, std::string(value.text())});
  }
  return entries;
}

// Returns the file with these entries; empty if they are invalid.
std::string FileOf(const std::vector<Entry> &entries) {
  SnapshotWriter writer;
  for (const Entry &entry : entries) {
    if (writer.Add(entry.key, entry.type, std::as_bytes(std::span(entry.payload))) != HVC_OK) return {};
  }
  const std::string path = fuzz::ScratchFolder() + "/mutant.nodal";
  return writer.Write(path) == HVC_OK ? testing_support::ReadFile(path) : std::string();
}

void Mutate(std::string &text) {
  constexpr size_t kRoom = 64;
  const size_t size = text.size();
  text.resize(size + kRoom);
  text.resize(LLVMFuzzerMutate(reinterpret_cast<uint8_t *>(text.data()), size, size + kRoom));
}

void MutateEntries(std::vector<Entry> &entries, Random &random) {
  const size_t chosen = random() % entries.size();
  Entry &entry = entries[chosen];
  switch (random() % 8) {
    case 0: Mutate(entry.key); break;
    case 1: entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(chosen)); break;
    case 2: {
      Entry copy = entry;
      Mutate(copy.key);
      entries.push_back(std::move(copy));
      break;
    }
    case 3: entry.payload = entries[random() % entries.size()].payload; break;
    case 4: entry.type = entries[random() % entries.size()].type; break;
    default: Mutate(entry.payload); break;
  }
}

}  // namespace

size_t LLVMFuzzerCustomMutator(uint8_t *data, size_t size, size_t maxSize, unsigned seed) {
  Random random(seed);
  const unsigned choice = random() % 8;
  if (choice > 2) {
    std::vector<Entry> entries = EntriesOf({data, size});
    if (!entries.empty()) {
      MutateEntries(entries, random);
      const std::string file = FileOf(entries);
      if (!file.empty() && file.size() <= maxSize) {
        std::ranges::copy(file, data);
        return file.size();
      }
    }
  }
  size = LLVMFuzzerMutate(data, size, maxSize);
  if (choice == 0) return size;
  Bytes file({data, size});
  MendValues(file);
  MendIndex(file);
  return size;
}
