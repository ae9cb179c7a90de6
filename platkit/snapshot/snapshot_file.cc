#include "platkit/snapshot/snapshot_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <limits>

#include "platkit/errno_status.h"

namespace platkit::snapshot {
namespace {

// The shortest possible file ends after the first byte of the version record's value.
constexpr uint32_t kShortestFile = kContentsBytes + kRecordHead + static_cast<uint32_t>(kVersionKey.size()) + 1;

HVC_ReturnStatus OpenStatus(int error) {
  // The path is a socket, or a device without a driver.
  return error == ENXIO || error == ENODEV ? HVC_NOT_A_SNAPSHOT : StatusOfErrno(error);
}

HVC_ReturnStatus ParseVersion(std::string_view text) {
  uint32_t version = 0;
  const auto parsed = std::from_chars(text.data(), text.data() + text.size(), version);
  const bool isCanonical = parsed.ec == std::errc() && parsed.ptr == text.data() + text.size() && text[0] != '0';
  if (!isCanonical) return HVC_SNAPSHOT_DAMAGED;
  return version > kVersion ? HVC_SNAPSHOT_TOO_NEW : HVC_OK;
}

}  // namespace

HVC_ReturnStatus SnapshotFile::Open(const char *path) {
  uint64_t size = 0;
  HVC_ReturnStatus status = Map(path, size);
  if (status == HVC_OK) status = CheckVersion();
  if (status == HVC_OK && size > kMaxFileBytes) status = HVC_SNAPSHOT_DAMAGED;
  if (status == HVC_OK) status = index_.Open();
  if (status == HVC_OK) status = ReadHeader();
  return file_.status() == HVC_OK ? status : file_.status();
}

HVC_ReturnStatus SnapshotFile::Map(const char *path, uint64_t &size) {
  // Without O_NONBLOCK, open would wait for a writer of a named pipe.
  const int fd = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (fd < 0) return OpenStatus(errno);
  HVC_ReturnStatus status = HVC_OK;
  struct stat info;
  if (fstat(fd, &info) != 0) {
    status = HVC_IO_ERROR;
  } else if (!S_ISREG(info.st_mode) || info.st_size < kShortestFile) {
    status = HVC_NOT_A_SNAPSHOT;
  } else {
    size = static_cast<uint64_t>(info.st_size);
    status = file_.Map(fd, static_cast<uint32_t>(std::min(size, kMaxFileBytes)));
  }
  close(fd);
  return status;
}

HVC_ReturnStatus SnapshotFile::CheckVersion() const {
  struct {
    uint32_t keyLength;
    uint32_t valueLength;
    char key[kVersionKey.size()];
  } record;
  file_.Read(kContentsBytes, std::as_writable_bytes(std::span(&record, 1)).first(kShortestFile - kContentsBytes - 1));
  if (record.keyLength != kVersionKey.size()) return HVC_NOT_A_SNAPSHOT;
  if (std::string_view(record.key, sizeof record.key) != kVersionKey) return HVC_NOT_A_SNAPSHOT;
  char digits[std::numeric_limits<uint32_t>::digits10 + 1];
  const uint32_t room = file_.size() - kShortestFile + 1;
  if (record.valueLength == 0 || record.valueLength > std::min<size_t>(room, sizeof digits))
    return HVC_SNAPSHOT_DAMAGED;
  const auto text = std::span(digits).first(record.valueLength);
  file_.Read(kShortestFile - 1, std::as_writable_bytes(text));
  return ParseVersion({text.data(), text.size()});
}

HVC_ReturnStatus SnapshotFile::ReadHeader() {
  HVC_ReturnStatus status = ReadHeaderText(kSignatureKey, header_.definitions.signature);
  if (status == HVC_OK) status = ReadHeaderText(kBuildKey, header_.definitions.build);
  if (status == HVC_OK) status = ReadHeaderText(kHostKey, header_.host);
  if (status == HVC_OK) status = ReadHeaderText(kTimeKey, header_.time);
  return status;
}

HVC_ReturnStatus SnapshotFile::ReadHeaderText(std::string_view key, std::string &text) {
  RecordPlace place;
  Value value;
  if (Locate(key, place) != HVC_OK || place.valueLength > kMaxHeaderText + kValueOverhead) return HVC_SNAPSHOT_DAMAGED;
  const HVC_ReturnStatus status = Read(place, value);
  if (status != HVC_OK) return status;
  if (value.type != ValueType::kHeader) return HVC_SNAPSHOT_DAMAGED;
  if (value.text().find('\0') != std::string_view::npos) return HVC_SNAPSHOT_DAMAGED;
  text = value.text();
  return HVC_OK;
}

HVC_ReturnStatus SnapshotFile::Locate(std::string_view key, RecordPlace &place) {
  const HVC_ReturnStatus status = index_.Find(key, place);
  return file_.status() == HVC_OK ? status : file_.status();
}

HVC_ReturnStatus SnapshotFile::Find(std::string_view key, Value &value) {
  RecordPlace place;
  const HVC_ReturnStatus status = Locate(key, place);
  return status == HVC_OK ? Read(place, value) : status;
}

HVC_ReturnStatus SnapshotFile::Read(const RecordPlace &place, ValueBuffer &buffer, Value &value) const {
  buffer.Resize(place.valueLength);
  file_.Read(place.valueStart(), buffer.bytes());
  return file_.status() == HVC_OK ? Decode(buffer.bytes(), value) : file_.status();
}

HVC_ReturnStatus SnapshotFile::Decode(std::span<const std::byte> bytes, Value &value) {
  if (bytes.size() < kValueOverhead) return HVC_SNAPSHOT_DAMAGED;
  const auto checked = bytes.first(bytes.size() - kCheckBytes);
  uint32_t check;
  std::memcpy(&check, bytes.data() + checked.size(), sizeof check);
  if (Check(checked) != check || !IsValueType(std::to_integer<uint8_t>(bytes[0]))) return HVC_SNAPSHOT_DAMAGED;
  value = {.type = static_cast<ValueType>(bytes[0]), .payload = checked.subspan(1)};
  return HVC_OK;
}

// The caller uses only the type, so a change of the file between the two reads is harmless.
HVC_ReturnStatus SnapshotFile::CheckValue(const RecordPlace &place, ValueType &type) const {
  if (place.valueLength < kValueOverhead) return HVC_SNAPSHOT_DAMAGED;
  const uint32_t checked = place.valueLength - uint32_t{kCheckBytes};
  std::byte first;
  file_.Read(place.valueStart(), std::span(&first, 1));
  const bool isWhole =
      Check(file_.Unstable(place.valueStart(), checked)) == file_.Integer(place.valueStart() + checked);
  if (!isWhole || !IsValueType(std::to_integer<uint8_t>(first))) return HVC_SNAPSHOT_DAMAGED;
  type = static_cast<ValueType>(first);
  return file_.status();
}

// The entries of a group take about 1 KB.
void SnapshotFile::PrefetchAround(const RecordPlace &place) const {
  constexpr uint32_t kBefore = 512, kAfter = 768, kCacheLine = 64;
  const uint32_t position = place.valueStart();
  const uint32_t start = position - std::min(position, kBefore);
  const uint32_t end = position + std::min(index_.endOfRecords() - position, kAfter);
  for (uint32_t line = start; line < end; line += kCacheLine)
    __builtin_prefetch(file_.Unstable(line, 1).data());
}

bool SnapshotFile::IndexLeadsTo(std::string_view key, uint32_t position) {
  RecordPlace place;
  return Locate(key, place) == HVC_OK && place.position == position;
}

HVC_ReturnStatus SnapshotFile::Cursor::Next() {
  HVC_ReturnStatus status = file_.file_.status();
  if (status != HVC_OK) return status;
  if (next_ == file_.index_.endOfRecords()) return HVC_NOT_FOUND;
  RecordPlace place;
  status = file_.index_.LoadPlace(next_, place);
  if (status != HVC_OK) return status;
  file_.file_.Read(place.keyStart(), std::as_writable_bytes(std::span(key_)).first(place.keyLength));
  status = file_.file_.status();
  if (status != HVC_OK) return status;
  place_ = place;
  next_ = place.end();
  return HVC_OK;
}

}  // namespace platkit::snapshot
