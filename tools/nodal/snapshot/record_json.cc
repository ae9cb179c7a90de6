#include "tools/nodal/snapshot/record_json.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>

#include "tools/nodal/support/text.h"
#include "tools/nodal/tree/field_value.h"

namespace nodal {
namespace {

using platkit::Field;
using platkit::FieldType;
using platkit::RecordLayout;

bool IsZero(std::span<const std::byte> bytes) {
  return std::ranges::all_of(bytes, [](std::byte byte) { return byte == std::byte{0}; });
}

OrderedJson IntegerToJson(const Field &field, std::span<const std::byte> bytes) {
  const uint64_t value = IntegerOf(field, bytes);
  if (IsSigned(field.type)) return static_cast<int64_t>(value);
  if (IsNone(field, bytes)) return -1;
  return value;
}

OrderedJson FieldTextToJson(std::span<const std::byte> bytes) {
  const std::string_view all(reinterpret_cast<const char *>(bytes.data()), bytes.size());
  const std::string_view text = all.substr(0, all.find('\0'));
  if (IsZero(bytes.subspan(text.size())) && IsUtf8(text)) return text;
  return {{"hex", ToHex(bytes)}};
}

OrderedJson EntriesToJson(const Field &field, std::span<const std::byte> bytes) {
  uint32_t count = field.count;
  while (count > 0 && IsZero(bytes.subspan((count - 1) * size_t{field.size}, field.size)))
    --count;
  OrderedJson entries = OrderedJson::array();
  for (uint32_t i = 0; i < count; ++i)
    entries.push_back(RecordToJson(*field.entry, bytes.subspan(i * size_t{field.size}, field.size)));
  return entries;
}

uint64_t AllOnes(const Field &field) { return UINT64_MAX >> (64 - 8 * field.size); }

std::string RangeOf(const Field &field) {
  switch (field.type) {
    case FieldType::kI32: return "from -2147483648 to 2147483647";
    case FieldType::kI64: return "from -9223372036854775808 to 9223372036854775807";
    default: return "from -1 to " + std::to_string(AllOnes(field));
  }
}

bool Fits(const Field &field, const Json &json) {
  if (!json.is_number_integer()) return false;
  if (json.is_number_unsigned()) {
    const auto most = IsSigned(field.type) ? AllOnes(field) >> 1 : AllOnes(field);
    return json.get<uint64_t>() <= most;
  }
  const auto value = json.get<int64_t>();
  if (!IsSigned(field.type)) return value == -1;
  return field.type == FieldType::kI64 || value >= std::numeric_limits<int32_t>::min();
}

void IntegerFromJson(const Field &field, const Json &json, std::span<std::byte> bytes) {
  if (!Fits(field, json)) throw InvalidJson("expected an integer " + RangeOf(field) + ", got " + Brief(json));
  const uint64_t value = json.is_number_unsigned() ? json.get<uint64_t>() : static_cast<uint64_t>(json.get<int64_t>());
  std::memcpy(bytes.data(), &value, bytes.size());
}

std::string HexFromJson(const Json &json) {
  std::optional<std::string> bytes;
  if (json.is_string()) bytes = FromHex(json.get_ref<const std::string &>());
  if (!bytes) throw InvalidJson("expected pairs of hexadecimal digits (0-9, a-f), got " + Brief(json));
  return *std::move(bytes);
}

void GapFromJson(const Json &json, std::span<std::byte> bytes) {
  const std::string gap = HexFromJson(json);
  if (gap.size() != bytes.size()) {
    throw InvalidJson("expected " + Plural(bytes.size(), "byte") + ", got " + std::to_string(gap.size()));
  }
  std::memcpy(bytes.data(), gap.data(), gap.size());
}

void FieldTextFromJson(const Json &json, std::span<std::byte> bytes) {
  if (json.is_object()) {
    const std::string text = TextFromJson(json);
    return GapFromJson(ToHex(BytesOf(text)), bytes);
  }
  const std::string text = TextFromJson(json);
  if (text.find('\0') != std::string::npos) throw InvalidJson("text contains a NUL");
  if (text.size() > bytes.size()) {
    throw InvalidJson("text has " + Plural(text.size(), "byte") + " (maximum: " + std::to_string(bytes.size()) + ")");
  }
  std::ranges::copy(BytesOf(text), bytes.begin());
}

void EntriesFromJson(const Field &field, const Json &json, std::span<std::byte> bytes) {
  if (!json.is_array()) throw InvalidJson("expected an array, got " + Brief(json));
  if (json.size() > field.count) {
    throw InvalidJson(std::to_string(json.size()) + " entries (maximum: " + std::to_string(field.count) + ")");
  }
  for (size_t i = 0; i < json.size(); ++i) {
    try {
      RecordFromJson(*field.entry, json[i], bytes.subspan(i * field.size, field.size));
    } catch (const InvalidJson &invalid) {
      throw InvalidJson("entry " + std::to_string(i) + ": " + invalid.what());
    }
  }
}

void FieldFromJson(const Field &field, const Json &json, std::span<std::byte> record) {
  const auto bytes = record.subspan(field.offset, size_t{field.size} * field.count);
  switch (field.type) {
    case FieldType::kText: return FieldTextFromJson(json, bytes);
    case FieldType::kGap: return GapFromJson(json, bytes);
    case FieldType::kEntries: return EntriesFromJson(field, json, bytes);
    default: return IntegerFromJson(field, json, bytes);
  }
}

}  // namespace

std::span<const std::byte> BytesOfField(const Field &field, std::span<const std::byte> record) {
  return record.subspan(field.offset, size_t{field.size} * field.count);
}

OrderedJson FieldToJson(const Field &field, std::span<const std::byte> bytes) {
  switch (field.type) {
    case FieldType::kText: return FieldTextToJson(bytes);
    case FieldType::kEntries: return EntriesToJson(field, bytes);
    case FieldType::kGap: return ToHex(bytes);
    default: return IntegerToJson(field, bytes);
  }
}

OrderedJson RecordToJson(const RecordLayout &layout, std::span<const std::byte> record) {
  OrderedJson json = OrderedJson::object();
  for (const Field &field : layout.fields) {
    const auto bytes = BytesOfField(field, record);
    if (field.type == FieldType::kGap && IsZero(bytes)) continue;
    json[std::string(field.name)] = FieldToJson(field, bytes);
  }
  return json;
}

void RecordFromJson(const RecordLayout &layout, const Json &json, std::span<std::byte> record) {
  if (!json.is_object()) throw InvalidJson("expected an object, got " + Brief(json));
  std::ranges::fill(record, std::byte{0});
  for (const auto &[name, value] : json.items()) {
    const auto field = std::ranges::find(layout.fields, std::string_view(name), &Field::name);
    if (field == layout.fields.end()) throw InvalidJson("unknown field '" + name + "' in " + std::string(layout.name));
    try {
      FieldFromJson(*field, value, record);
    } catch (const InvalidJson &invalid) {
      throw InvalidJson("field '" + name + "': " + invalid.what());
    }
  }
}

std::string ShownValue(const Field &field, const OrderedJson &value) {
  if (value.is_object()) return "hex " + value["hex"].get<std::string>();
  if (value.is_string()) return Printable(value.get_ref<const std::string &>());
  if (field.unit != platkit::FieldUnit::FLAGS) return value.dump();
  // In the JSON, -1 stands for all bits set.
  char hex[24];
  std::snprintf(hex, sizeof hex, "0x%llx", static_cast<unsigned long long>(value.get<uint64_t>() & AllOnes(field)));
  return hex;
}

OrderedJson TextToJson(std::string_view text) {
  if (IsUtf8(text)) return text;
  return {{"hex", ToHex(BytesOf(text))}};
}

std::string TextFromJson(const Json &json) {
  if (json.is_string()) return json.get<std::string>();
  if (json.is_object() && json.size() == 1 && json.contains("hex")) return HexFromJson(json["hex"]);
  throw InvalidJson("expected a string, got " + Brief(json));
}

OrderedJson FailureToJson(HVC_ReturnStatus failure) {
  const std::string text = StatusText(failure);
  if (StatusOfText(text) == failure) return {{"status", text}};
  return {{"status", failure}};
}

HVC_ReturnStatus FailureFromJson(const Json &json) {
  if (!json.is_object() || json.size() != 1 || !json.contains("status")) {
    throw InvalidJson("expected an object with only the key 'status', got " + Brief(json));
  }
  const Json &status = json["status"];
  std::optional<HVC_ReturnStatus> failure;
  if (status.is_string()) failure = StatusOfText(status.get_ref<const std::string &>());
  if (status.is_number_unsigned() && status.get<uint64_t>() <= UINT32_MAX) failure = status.get<HVC_ReturnStatus>();
  if (!failure || *failure == HVC_OK)
    throw InvalidJson("expected a failure status as text or number, got " + Brief(status));
  return *failure;
}

std::string Brief(const Json &json) {
  if (json.is_object()) return "an object";
  if (json.is_array()) return "an array";
  constexpr size_t kMost = 60;
  const std::string text = json.dump(-1, ' ', true);
  return text.size() <= kMost ? text : text.substr(0, kMost) + "...";
}

}  // namespace nodal
