// Reads a snapshot file of any bytes with the library and with a plain reader. Both must give the same results.
#include <algorithm>

#include "platkit/snapshot/snapshot_file.h"
#include "tests/fuzz/nodal.h"
#include "tests/fuzz/plain_snapshot.h"
#include "tests/fuzz/target.h"

namespace {

using fuzz::PlainSnapshot;
using fuzz::PlainValue;
using platkit::snapshot::SnapshotFile;
using platkit::snapshot::Value;

PlainValue Plain(HVC_ReturnStatus status, const Value &value) {
  if (status != HVC_OK) return {.status = status};
  return {.status = status, .type = static_cast<char>(value.type), .payload = value.text()};
}

PlainValue Find(SnapshotFile &file, std::string_view key) {
  Value value;
  const HVC_ReturnStatus status = file.Find(key, value);
  return Plain(status, value);
}

void CompareEntries(const SnapshotFile &file, const PlainSnapshot &plain) {
  SnapshotFile::Cursor cursor(file);
  for (const PlainSnapshot::Entry &entry : plain.entries()) {
    REQUIRE(cursor.Next() == HVC_OK);
    REQUIRE(cursor.key() == entry.key);
    Value value;
    const HVC_ReturnStatus status = cursor.Read(value);
    REQUIRE(Plain(status, value) == entry.value);
  }
  REQUIRE(cursor.Next() == (plain.endsWithEntry() ? HVC_NOT_FOUND : HVC_SNAPSHOT_DAMAGED));
}

// Also looks up keys that are not in the file: each key without its last byte.
void CompareLookUps(SnapshotFile &file, const PlainSnapshot &plain) {
  for (const PlainSnapshot::Entry &entry : plain.entries()) {
    for (const std::string_view key :
         {entry.key, entry.key.substr(0, entry.key.size() - std::min<size_t>(1, entry.key.size()))})
      REQUIRE(Find(file, key) == plain.Find(key));
  }
}

// In a canonical file, a look-up finds what a search through all entries finds.
void CompareWithSearch(SnapshotFile &file, const PlainSnapshot &plain) {
  for (const PlainSnapshot::Entry &entry : plain.entries()) {
    const std::string absent = std::string(entry.key) + "x";
    REQUIRE(file.HasLongRun() || Find(file, entry.key) == entry.value);
    const bool isEntry =
        std::ranges::find(plain.entries(), absent, &PlainSnapshot::Entry::key) != plain.entries().end();
    REQUIRE(isEntry || file.HasLongRun() || Find(file, absent).status == HVC_NOT_FOUND);
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string_view bytes = fuzz::Text(data, size);
  const fuzz::MemoryFile content(bytes);
  const PlainSnapshot plain(bytes);
  SnapshotFile file;
  REQUIRE(file.Open(content.path().c_str()) == plain.status());
  if (plain.status() != HVC_OK) return 0;
  CompareEntries(file, plain);
  CompareLookUps(file, plain);
  if (plain.isCanonical() && file.TablesAreWhole()) CompareWithSearch(file, plain);
  return 0;
}
