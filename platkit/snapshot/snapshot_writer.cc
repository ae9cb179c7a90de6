#include "platkit/snapshot/snapshot_writer.h"

#include <cdb.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "platkit/atomic_file.h"
#include "platkit/errno_status.h"

namespace platkit::snapshot {
namespace {

bool ReadAt(int fd, std::span<unsigned char> bytes, uint64_t position) {
  while (!bytes.empty()) {
    const ssize_t count = pread(fd, bytes.data(), bytes.size(), static_cast<off_t>(position));
    if (count <= 0) return false;
    bytes = bytes.subspan(static_cast<size_t>(count));
    position += static_cast<uint64_t>(count);
  }
  return true;
}

// Computes the checksums of the finished hash tables and writes them into the second record.
bool WriteIndexCheck(int fd) {
  unsigned char contents[kContentsBytes];
  if (!ReadAt(fd, contents, 0)) return false;
  unsigned char value[kIndexCheckBytes] = {static_cast<unsigned char>(ValueType::kChecks)};
  std::vector<unsigned char> tableSlots;
  for (uint32_t table = 0; table < kTables; ++table) {
    tableSlots.resize(uint64_t{cdb_unpack(contents + table * 8 + 4)} * kSlotBytes);
    if (!ReadAt(fd, tableSlots, cdb_unpack(contents + table * 8))) return false;
    cdb_pack(Check(std::as_bytes(std::span(tableSlots))), value + 1 + table * 4);
  }
  constexpr size_t kChecked = sizeof value - kCheckBytes;
  cdb_pack(Check(std::as_bytes(std::span(value)).first(kChecked)), value + kChecked);
  return pwrite(fd, value, sizeof value, kIndexCheckValue) == sizeof value;
}

// Whether the hash table of records with these hashes has more than kMaxRun consecutive used slots. Each record takes
// the first unused slot at or after its own, so the set of used slots does not depend on the order of the records. A
// run can wrap around to the start of the table, so the loop visits all slots twice.
bool HasLongRun(std::span<const uint32_t> hashes) {
  std::vector<uint32_t> records(2 * hashes.size());  // the number of records that belong in each slot
  for (const uint32_t hash : hashes)
    ++records[hash / kTables % records.size()];
  uint64_t waiting = 0, run = 0;
  for (size_t i = 0; i < 2 * records.size(); ++i) {
    waiting += records[i % records.size()];
    run = waiting == 0 ? 0 : run + 1;
    if (run > kMaxRun) return true;
    if (waiting > 0) --waiting;
  }
  return false;
}

}  // namespace

HVC_ReturnStatus SnapshotWriter::AddHeader(const Header &header) {
  HVC_ReturnStatus status = AddHeaderText(kSignatureKey, header.definitions.signature);
  if (status == HVC_OK) status = AddHeaderText(kBuildKey, header.definitions.build);
  if (status == HVC_OK) status = AddHeaderText(kHostKey, header.host);
  if (status == HVC_OK) status = AddHeaderText(kTimeKey, header.time);
  return status;
}

HVC_ReturnStatus SnapshotWriter::AddHeaderText(std::string_view key, std::string_view text) {
  if (text.find('\0') != std::string_view::npos) return HVC_BAD_PARAM;
  if (text.size() > kMaxHeaderText) return HVC_LIMIT_EXCEEDED;
  return Add(key, ValueType::kHeader, std::as_bytes(std::span(text)));
}

HVC_ReturnStatus SnapshotWriter::AddTexts(std::string_view path, std::span<const std::string> texts) {
  std::string payload;
  for (const std::string &text : texts) {
    if (text.find('\0') != std::string::npos) return HVC_BAD_PARAM;
    payload += text;
    payload += '\0';
  }
  return Add(path, ValueType::kTexts, std::as_bytes(std::span(payload)));
}

HVC_ReturnStatus SnapshotWriter::AddFailure(std::string_view path, HVC_ReturnStatus failure) {
  static_assert(sizeof failure == kFailureBytes);
  return AddRecord(std::string(kFailurePrefix) + std::string(path), std::as_bytes(std::span(&failure, 1)));
}

HVC_ReturnStatus SnapshotWriter::Add(std::string_view key, ValueType type, std::span<const std::byte> payload) {
  if (IsReservedKey(key)) return HVC_ALREADY_EXISTS;
  if (key.size() > kMaxKeyBytes || payload.size() > kMaxFileBytes) return HVC_LIMIT_EXCEEDED;
  const uint64_t valueLength = payload.size() + kValueOverhead;
  const uint64_t fileBytes = fileBytes_ + kRecordHead + key.size() + valueLength + 2 * kSlotBytes;
  if (fileBytes > kMaxFileBytes) return HVC_LIMIT_EXCEEDED;

  const size_t start = bytes_.size();
  bytes_ += key;
  const size_t valueStart = bytes_.size();
  bytes_ += static_cast<char>(type);
  bytes_.append(reinterpret_cast<const char *>(payload.data()), payload.size());
  unsigned char check[kCheckBytes];
  cdb_pack(Check(std::as_bytes(std::span(bytes_).subspan(valueStart))), check);
  bytes_.append(reinterpret_cast<const char *>(check), sizeof check);
  // If memory ran out before this line, no entry refers to the appended bytes.
  entries_.push_back({.start = start,
                      .keyLength = static_cast<uint32_t>(key.size()),
                      .valueLength = static_cast<uint32_t>(valueLength)});
  fileBytes_ = fileBytes;
  return HVC_OK;
}

HVC_ReturnStatus SnapshotWriter::WriteTo(int fd) {
  const auto key = [this](const Entry &entry) { return KeyOf(entry); };
  std::ranges::sort(entries_, {}, key);
  if (std::ranges::adjacent_find(entries_, {}, key) != entries_.end()) return HVC_ALREADY_EXISTS;
  if (HasLongRun()) return HVC_LIMIT_EXCEEDED;  // cdb_make_finish would take quadratic time
  return WriteDatabase(fd) ? HVC_OK : StatusOfErrno(errno, HVC_WRITE_ERROR);
}

bool SnapshotWriter::HasLongRun() const {
  std::vector<uint32_t> hashes = {Hash(kVersionKey), Hash(kIndexCheckKey)};
  hashes.reserve(hashes.size() + entries_.size());
  for (const Entry &entry : entries_)
    hashes.push_back(Hash(KeyOf(entry)));
  const auto table = [](uint32_t hash) { return hash % kTables; };
  std::ranges::sort(hashes, {}, table);
  for (auto start = hashes.begin(); start != hashes.end();) {
    const auto end = std::ranges::upper_bound(start, hashes.end(), table(*start), {}, table);
    if (snapshot::HasLongRun({start, end})) return true;
    start = end;
  }
  return false;
}

HVC_ReturnStatus SnapshotWriter::Write(const std::string &path) {
  AtomicFile file;
  HVC_ReturnStatus status = file.Create(path, Readers::kOwner);
  if (status == HVC_OK) status = WriteTo(file.fd());
  return status == HVC_OK ? file.Commit() : status;
}

bool SnapshotWriter::WriteDatabase(int fd) const {
  cdb_make database;
  if (cdb_make_start(&database, fd) != 0) return false;
  bool ok =
      cdb_make_add(&database, kVersionKey.data(), kVersionKey.size(), kVersionText.data(), kVersionText.size()) == 0;
  const char noChecks[kIndexCheckBytes] = {};
  ok = ok && cdb_make_add(&database, kIndexCheckKey.data(), kIndexCheckKey.size(), noChecks, sizeof noChecks) == 0;
  for (const Entry &entry : entries_) {
    if (!ok) break;
    const char *key = bytes_.data() + entry.start;
    ok = cdb_make_add(&database, key, entry.keyLength, key + entry.keyLength, entry.valueLength) == 0;
  }
  // cdb_make_finish also releases the memory of the database, so it must be called even after a failure.
  const int failure = errno;
  const bool finished = cdb_make_finish(&database) == 0;
  // cdb_make_finish reports a failed allocation as ENOENT.
  if (!finished && errno == ENOENT) errno = ENOMEM;
  if (!ok) errno = failure;
  return ok && finished && WriteIndexCheck(fd);
}

}  // namespace platkit::snapshot
