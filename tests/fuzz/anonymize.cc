// Anonymizes a snapshot that has a marker in every text, in every unused byte of a record, and in every unknown key.
// The marker must not occur in the result. The result must have as many entries as a capture that keeps the names, and
// nodal verify must find problems in both or in neither.
#include <algorithm>
#include <cstring>
#include <vector>

#include "platkit/nodal.h"
#include "platkit/path.h"
#include "platkit/snapshot/snapshot_file.h"
#include "platkit/snapshot/snapshot_writer.h"
#include "tests/fuzz/nodal.h"
#include "tests/fuzz/target.h"
#include "tests/fuzz/tree_form.h"
#include "tests/support/scratch.h"
#include "tools/nodal/capture/capture.h"
#include "tools/nodal/tree/arguments.h"

namespace {

using platkit::Field;
using platkit::FieldType;
using namespace platkit::snapshot;

// Fits into every text field. It is long enough that no checksum has the same bytes by chance.
constexpr std::string_view kMarker = "Marker#!";
static_assert(kMarker.size() == sizeof(GroupTagRecord));

void FillWithMarkers(std::span<char> bytes) {
  for (size_t i = 0; i < bytes.size(); ++i)
    bytes[i] = kMarker[i % kMarker.size()];
}

// Inserts the marker before the text. Fills the bytes after the text's terminator with markers.
void MarkText(std::span<char> bytes) {
  const std::string text(bytes.data(), strnlen(bytes.data(), bytes.size() - kMarker.size()));
  FillWithMarkers(bytes);
  std::ranges::copy(text, bytes.subspan(kMarker.size()).begin());
  if (bytes.size() > kMarker.size() + text.size()) bytes[kMarker.size() + text.size()] = '\0';
}

void MarkRecord(const platkit::RecordLayout &layout, std::span<char> record) {
  for (const Field &field : layout.fields) {
    const auto bytes = record.subspan(field.offset, size_t{field.size} * field.count);
    if (field.type == FieldType::kText) MarkText(bytes);
    if (field.type == FieldType::kGap) FillWithMarkers(bytes);
    for (uint32_t i = 0; field.type == FieldType::kEntries && i < field.count; ++i)
      MarkRecord(*field.entry, bytes.subspan(i * size_t{field.size}, field.size));
  }
}

std::string MarkedTexts(std::string_view payload) {
  std::string marked;
  while (!payload.empty()) {
    const size_t size = std::min(payload.find('\0') + 1, payload.size());
    marked += kMarker;
    marked += payload.substr(0, size);
    payload.remove_prefix(size);
  }
  return marked;
}

std::string MarkedPath(platkit::PathTarget target) {
  for (nodal::Argument &argument : target.arguments) {
    if (argument.kind == platkit::ParamKind::kText) argument.text.insert(0, kMarker);
  }
  return nodal::PathOf(*target.node, target.arguments);
}

std::string MarkedKey(std::string_view key) {
  const bool isFailure = IsFailureKey(key);
  const platkit::PathTarget target = platkit::ParsePath(isFailure ? key.substr(kFailurePrefix.size()) : key);
  if (target.node == nullptr) return std::string(key) + std::string(kMarker);
  return (isFailure ? std::string(kFailurePrefix) : "") + MarkedPath(target);
}

std::string MarkedPayload(std::string_view key, const Value &value) {
  std::string payload(value.text());
  if (value.type == ValueType::kTexts) return MarkedTexts(payload);
  const platkit::PathTarget target = platkit::ParsePath(key);
  if (target.asRecord && payload.size() == target.node->record->size) MarkRecord(*target.node->record, payload);
  return payload;
}

// Returns false if the writer refuses an entry, for example because the marker makes its key too long.
bool WriteMarked(const std::string &from, const std::string &to) {
  SnapshotFile file;
  REQUIRE(file.Open(from.c_str()) == HVC_OK);
  SnapshotWriter writer;
  const std::string marker(kMarker);
  const Header header = {.definitions = {.signature = file.header().definitions.signature, .build = marker},
                         .host = marker + file.header().host.substr(0, kMaxHeaderText - marker.size()),
                         .time = {}};
  REQUIRE(writer.AddHeader(header) == HVC_OK);
  SnapshotFile::Cursor cursor(file);
  for (Value value; cursor.Next() == HVC_OK;) {
    const std::string key(cursor.key());
    if (IsHeaderKey(key)) continue;
    REQUIRE(cursor.Read(value) == HVC_OK);
    const std::string payload = MarkedPayload(key, value);
    if (writer.Add(MarkedKey(key), value.type, std::as_bytes(std::span(payload))) != HVC_OK) return false;
  }
  return writer.Write(to) == HVC_OK;
}

bool Capture(const std::string &from, const std::string &to, bool anonymize) {
  const fuzz::KeptSignals signals;
  REQUIRE(NODAL_UseCache(from.c_str(), NODAL_CACHE_SNAPSHOT) == HVC_OK);
  return fuzz::Succeeds([&] { nodal::Capture({.snapshot = to, .anonymize = anonymize, .cache = from}); });
}

size_t EntriesOf(const std::string &snapshot) {
  SnapshotFile file;
  REQUIRE(file.Open(snapshot.c_str()) == HVC_OK);
  SnapshotFile::Cursor cursor(file);
  size_t count = 0;
  while (cursor.Next() == HVC_OK)
    ++count;
  return count;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string_view input = fuzz::Text(data, size);
  // The result keeps the numbers of the input, and their bytes could spell the marker.
  if (input.find(kMarker) != std::string_view::npos) return 0;
  const std::string folder = fuzz::ScratchFolder();
  const std::string original = folder + "/original", marked = folder + "/marked", plain = folder + "/plain",
                    anonymous = folder + "/anonymous";
  if (!fuzz::WriteTree(input, original) || !WriteMarked(original, marked)) return 0;
  const bool isCaptured = Capture(marked, plain, false);
  REQUIRE(Capture(marked, anonymous, true) == isCaptured);
  if (!isCaptured) return 0;
  REQUIRE(testing_support::ReadFile(anonymous).find(kMarker) == std::string::npos);
  REQUIRE(EntriesOf(anonymous) == EntriesOf(plain));
  REQUIRE(fuzz::IsSound(anonymous) == fuzz::IsSound(plain));
  return 0;
}
