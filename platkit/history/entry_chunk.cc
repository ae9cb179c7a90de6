#include "platkit/history/entry_chunk.h"

#include <algorithm>

#include "platkit/history/format.h"

namespace platkit::history {
namespace {

constexpr ValueType kTypes[] = {ValueType::kRecord, ValueType::kIntegers, ValueType::kTexts};

}  // namespace

void EntryChunkWriter::Clear() {
  raw_.clear();
  key_.clear();
  for (auto &[size, reference] : references_)
    reference.clear();
}

void EntryChunkWriter::Add(const Entry &entry) {
  if (raw_.empty()) firstKey_ = entry.key;
  const auto common = static_cast<size_t>(std::ranges::mismatch(entry.key, key_).in1 - entry.key.begin());
  AppendVarint(raw_, common);
  AppendVarint(raw_, entry.key.size() - common);
  AppendBytes(raw_, std::as_bytes(std::span(entry.key.substr(common))));
  key_ = entry.key;
  const auto type = static_cast<uint8_t>(std::ranges::find(kTypes, entry.type) - kTypes);
  AddPayload(entry.payload, type);
}

// Uses the coded form only if it is at most half as long as the payload, because whole bytes compress better than
// differences.
void EntryChunkWriter::AddPayload(Payload payload, uint8_t type) {
  ByteVector &reference = references_[payload.size()];
  Coding coding = Coding::kWhole;
  coded_.clear();
  if (kTypes[type] == ValueType::kIntegers) {
    AppendSteps(payload, coded_);
    coding = Coding::kSteps;
  } else if (!payload.empty() && reference.size() == payload.size()) {
    AppendWords(payload, reference, coded_);
    coding = Coding::kWords;
  }
  const bool isSmall = coding != Coding::kWhole && coded_.size() <= payload.size() / 2;
  if (!isSmall) coding = Coding::kWhole;
  raw_.push_back(static_cast<std::byte>(unsigned{type} << kCodingBits | static_cast<unsigned>(coding)));
  AppendVarint(raw_, payload.size());
  AppendBytes(raw_, isSmall ? Payload(coded_) : payload);
  reference.assign(payload.begin(), payload.end());
}

bool EntryChunkReader::ReadKey() {
  uint32_t common, more;
  std::span<const std::byte> bytes;
  if (!reader_.Varint(key_.size(), common)) return false;
  if (!reader_.Varint(snapshot::kMaxKeyBytes - common, more) || !reader_.Bytes(more, bytes)) return false;
  key_.resize(common);
  key_.append(reinterpret_cast<const char *>(bytes.data()), bytes.size());
  return true;
}

bool EntryChunkReader::Next(Entry &entry) {
  uint8_t form;
  uint32_t size;
  if (!ReadKey() || !reader_.Byte(form) || form >> kCodingBits >= std::size(kTypes)) return false;
  if (!reader_.Varint(kMaxPayloadBytes, size)) return false;
  entry.key = key_;
  entry.type = kTypes[form >> kCodingBits];
  return ReadPayload(static_cast<Coding>(form & ((1u << kCodingBits) - 1)), size, entry.payload);
}

bool EntryChunkReader::ReadPayload(Coding coding, uint32_t size, Payload &payload) {
  const auto known = references_.find(size);
  ByteVector &reference = known != references_.end() ? known->second : references_[size];
  if (coding == Coding::kWhole) {
    if (!reader_.Bytes(size, payload)) return false;
    reference.assign(payload.begin(), payload.end());
    return true;
  }
  if (coding == Coding::kWords) {
    if (known == references_.end() || !ApplyWords(reader_, reference)) return false;
  } else if (coding == Coding::kSteps) {
    // Each integer takes at least one byte, so a small chunk cannot claim a large payload.
    if (!reader_.HasBytes(size / 8)) return false;
    reference.resize(size);
    if (!ReadSteps(reader_, reference)) return false;
  } else {
    return false;
  }
  payload = reference;
  return true;
}

}  // namespace platkit::history
