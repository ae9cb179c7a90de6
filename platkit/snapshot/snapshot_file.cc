#include "platkit/snapshot/snapshot_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>

#include "platkit/errno_status.h"

namespace platkit::snapshot {
namespace {

// The head and key of the version record, and one byte of value.
constexpr uint32_t kShortestFile = kContentsBytes + kRecordHead + static_cast<uint32_t>(kVersionKey.size()) + 1;

HVC_ReturnStatus OpenStatus(int error) {
  // A socket, or a device without a driver.
  return error == ENXIO || error == ENODEV ? HVC_NOT_A_SNAPSHOT : StatusOfErrno(error);
}

}  // namespace

SnapshotFile::~SnapshotFile() {
  if (cdb_.cdb_mem != nullptr) cdb_free(&cdb_);
}

HVC_ReturnStatus SnapshotFile::Open(const char *path) {
  // Without O_NONBLOCK, open would wait for a writer of a named pipe.
  const int fd = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (fd < 0) return OpenStatus(errno);
  HVC_ReturnStatus status = HVC_OK;
  struct stat info;
  if (fstat(fd, &info) != 0) {
    status = HVC_IO_ERROR;
  } else if (!S_ISREG(info.st_mode) || info.st_size < kShortestFile) {
    status = HVC_NOT_A_SNAPSHOT;
  } else if (cdb_init(&cdb_, fd) != 0) {
    status = OpenStatus(errno);
  }
  close(fd);
  if (status == HVC_OK) status = CheckVersion();
  if (status != HVC_OK) return status;
  if (static_cast<uint64_t>(info.st_size) > kMaxFileBytes) return HVC_SNAPSHOT_DAMAGED;
  if (!IndexIsChained() || !IndexCheckIsWhole()) return HVC_SNAPSHOT_DAMAGED;
  return ReadHeader();
}

HVC_ReturnStatus SnapshotFile::CheckVersion() const {
  const uint32_t keyLength = Integer(kContentsBytes);
  const uint32_t valueLength = Integer(kContentsBytes + 4);
  const auto *key = reinterpret_cast<const char *>(cdb_.cdb_mem) + kContentsBytes + kRecordHead;
  if (keyLength != kVersionKey.size() || std::memcmp(key, kVersionKey.data(), kVersionKey.size()) != 0) {
    return HVC_NOT_A_SNAPSHOT;
  }
  const char *digits = key + keyLength;
  const auto room = static_cast<size_t>(reinterpret_cast<const char *>(cdb_.cdb_mem) + cdb_.cdb_fsize - digits);
  if (valueLength == 0 || valueLength > room) return HVC_SNAPSHOT_DAMAGED;
  uint32_t version = 0;
  const auto parsed = std::from_chars(digits, digits + valueLength, version);
  const bool canonical = parsed.ec == std::errc() && parsed.ptr == digits + valueLength && digits[0] != '0';
  if (!canonical) return HVC_SNAPSHOT_DAMAGED;
  return version > kVersion ? HVC_SNAPSHOT_TOO_NEW : HVC_OK;
}

// The first hash table starts at the end of the records, each other table at the end of the table before it, and the
// last table ends with the file. This check rejects a truncated or extended file.
bool SnapshotFile::IndexIsChained() const {
  uint64_t end = Integer(0);
  if (end < kShortestFile || end != cdb_.cdb_dend) return false;
  for (uint32_t table = 0; table < kTables; ++table) {
    if (Integer(table * 8) != end) return false;
    end += uint64_t{Integer(table * 8 + 4)} * kSlotBytes;
    if (end > cdb_.cdb_fsize) return false;
  }
  return end == cdb_.cdb_fsize;
}

bool SnapshotFile::IndexCheckIsWhole() const {
  if (cdb_.cdb_dend < kIndexCheckValue + kIndexCheckBytes) return false;
  if (Integer(kIndexCheckPosition) != kIndexCheckKey.size()) return false;
  if (Integer(kIndexCheckPosition + 4) != kIndexCheckBytes) return false;
  const auto *key = cdb_.cdb_mem + kIndexCheckPosition + kRecordHead;
  const uint32_t checked = kIndexCheckBytes - kCheckBytes;
  return std::memcmp(key, kIndexCheckKey.data(), kIndexCheckKey.size()) == 0 &&
         cdb_.cdb_mem[kIndexCheckValue] == static_cast<unsigned char>(ValueType::kChecks) &&
         Check(Bytes(kIndexCheckValue, checked)) == Integer(kIndexCheckValue + checked);
}

// Checks each table once, at the first failed look-up in it.
bool SnapshotFile::TableIsWhole(uint32_t table) {
  if (tablesChecked_[table]) return true;
  const uint32_t slots = Integer(table * 8 + 4);
  const auto bytes = Bytes(Integer(table * 8), slots * kSlotBytes);
  tablesChecked_[table] = Check(bytes) == Integer(kIndexCheckValue + 1 + table * 4);
  return tablesChecked_[table];
}

// A look-up also fails if a slot or a key is damaged. The table's checksum rules out a damaged slot. A damaged key is
// ruled out if the key of each visited record has the hash in its slot.
bool SnapshotFile::IsReallyAbsent(std::string_view key) {
  const uint32_t hash = cdb_hash(key.data(), static_cast<unsigned>(key.size()));
  const uint32_t table = hash % kTables;
  if (!TableIsWhole(table)) return false;
  const uint32_t position = Integer(table * 8);
  const uint32_t slots = Integer(table * 8 + 4);
  for (uint32_t i = 0; i < slots; ++i) {
    const uint32_t slot = position + (hash / kTables + i) % slots * kSlotBytes;
    const uint32_t record = Integer(slot + 4);
    if (record == 0) break;
    if (Integer(slot) != hash) continue;
    if (record > cdb_.cdb_dend - kRecordHead) return false;
    const uint32_t length = Integer(record);
    if (length > kMaxKeyBytes || length > cdb_.cdb_dend - kRecordHead - record) return false;
    if (cdb_hash(cdb_.cdb_mem + record + kRecordHead, length) != hash) return false;
  }
  return true;
}

std::span<const std::byte> SnapshotFile::Bytes(uint32_t position, uint32_t size) const {
  return {reinterpret_cast<const std::byte *>(cdb_.cdb_mem) + position, size};
}

HVC_ReturnStatus SnapshotFile::ReadHeader() {
  HVC_ReturnStatus status = ReadHeaderText(kSignatureKey, header_.definitions.signature);
  if (status == HVC_OK) status = ReadHeaderText(kBuildKey, header_.definitions.build);
  if (status == HVC_OK) status = ReadHeaderText(kHostKey, header_.host);
  if (status == HVC_OK) status = ReadHeaderText(kTimeKey, header_.time);
  return status;
}

HVC_ReturnStatus SnapshotFile::ReadHeaderText(std::string_view key, std::string &text) {
  Value value;
  if (Find(key, value) != HVC_OK) return HVC_SNAPSHOT_DAMAGED;
  if (value.type != ValueType::kHeader || value.payload.size() > kMaxHeaderText) return HVC_SNAPSHOT_DAMAGED;
  if (value.text().find('\0') != std::string_view::npos) return HVC_SNAPSHOT_DAMAGED;
  text = value.text();
  return HVC_OK;
}

HVC_ReturnStatus SnapshotFile::Find(std::string_view key, Value &value) {
  const int found = cdb_find(&cdb_, key.data(), static_cast<unsigned>(key.size()));
  if (found == 0) return IsReallyAbsent(key) ? HVC_NOT_FOUND : HVC_SNAPSHOT_DAMAGED;
  if (found < 0) return HVC_SNAPSHOT_DAMAGED;
  return Decode(Bytes(cdb_datapos(&cdb_), cdb_datalen(&cdb_)), value);
}

void SnapshotFile::PrefetchKey(uint32_t hash) const {
  const uint32_t table = hash % kTables;
  const uint32_t slots = Integer(table * 8 + 4);
  if (slots > 0) __builtin_prefetch(cdb_.cdb_mem + Integer(table * 8) + hash / kTables % slots * kSlotBytes);
}

// The entries of a group take about 1 KB.
void SnapshotFile::PrefetchAround(const Value &value) const {
  constexpr ptrdiff_t kBefore = 512, kAfter = 768, kCacheLine = 64;
  const auto *file = reinterpret_cast<const std::byte *>(cdb_.cdb_mem);
  const ptrdiff_t position = value.payload.data() - file;
  const ptrdiff_t end = std::min<ptrdiff_t>(position + kAfter, cdb_.cdb_dend);
  for (ptrdiff_t line = std::max<ptrdiff_t>(position - kBefore, 0); line < end; line += kCacheLine)
    __builtin_prefetch(file + line);
}

HVC_ReturnStatus SnapshotFile::Decode(std::span<const std::byte> bytes, Value &value) {
  if (bytes.size() < kValueOverhead) return HVC_SNAPSHOT_DAMAGED;
  const auto checked = bytes.first(bytes.size() - kCheckBytes);
  const uint32_t check = cdb_unpack(reinterpret_cast<const unsigned char *>(bytes.data()) + checked.size());
  if (Check(checked) != check || !IsValueType(std::to_integer<uint8_t>(bytes[0]))) return HVC_SNAPSHOT_DAMAGED;
  value = {.type = static_cast<ValueType>(bytes[0]), .payload = checked.subspan(1)};
  return HVC_OK;
}

bool SnapshotFile::IndexLeadsTo(std::string_view key, uint32_t position) {
  return cdb_find(&cdb_, key.data(), static_cast<unsigned>(key.size())) > 0 &&
         cdb_keypos(&cdb_) - kRecordHead == position;
}

bool SnapshotFile::TablesAreWhole() {
  for (uint32_t table = 0; table < kTables; ++table) {
    if (!TableIsWhole(table)) return false;
  }
  return true;
}

uint64_t SnapshotFile::CountUsedSlots() const {
  uint64_t used = 0;
  for (uint32_t slot = cdb_.cdb_dend; slot < cdb_.cdb_fsize; slot += kSlotBytes) {
    if (Integer(slot) != 0 || Integer(slot + 4) != 0) ++used;
  }
  return used;
}

HVC_ReturnStatus SnapshotFile::Cursor::Next() {
  const uint32_t end = file_.cdb_.cdb_dend;
  if (next_ == end) return HVC_NOT_FOUND;
  if (end - next_ < kRecordHead) return HVC_SNAPSHOT_DAMAGED;
  const uint32_t room = end - next_ - kRecordHead;
  const uint32_t keyLength = file_.Integer(next_);
  const uint32_t valueLength = file_.Integer(next_ + 4);
  if (keyLength > kMaxKeyBytes || keyLength > room || valueLength > room - keyLength) return HVC_SNAPSHOT_DAMAGED;
  position_ = next_;
  const auto *record = file_.cdb_.cdb_mem + next_ + kRecordHead;
  key_ = {reinterpret_cast<const char *>(record), keyLength};
  bytes_ = {reinterpret_cast<const std::byte *>(record) + keyLength, valueLength};
  next_ += kRecordHead + keyLength + valueLength;
  return HVC_OK;
}

}  // namespace platkit::snapshot
