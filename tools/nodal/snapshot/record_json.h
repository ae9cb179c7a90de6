// Records, texts and raw values as JSON, and back. What cannot be taken back throws an InvalidJson.
#ifndef NODAL_SNAPSHOT_RECORD_JSON_H
#define NODAL_SNAPSHOT_RECORD_JSON_H

#include <cstddef>
#include <nlohmann/json.hpp>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platkit/catalogue.h"
#include "platkit/status.h"

namespace nodal {

using Json = nlohmann::json;
using OrderedJson = nlohmann::ordered_json;  // keeps the order of fields

class InvalidJson : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

OrderedJson RecordToJson(const platkit::RecordLayout &layout, std::span<const std::byte> record);

// `record` has the record's size.
void RecordFromJson(const platkit::RecordLayout &layout, const Json &json, std::span<std::byte> record);

// The bytes of a field in its record.
std::span<const std::byte> BytesOfField(const platkit::Field &field, std::span<const std::byte> record);

// The value of a field; of bytes between the named fields, hexadecimal digits.
OrderedJson FieldToJson(const platkit::Field &field, std::span<const std::byte> bytes);

// The JSON value of a field that has a name, as people read it.
std::string ShownValue(const platkit::Field &field, const OrderedJson &value);

// A string, or {"hex": ...} for what is not UTF-8.
OrderedJson TextToJson(std::string_view text);
std::string TextFromJson(const Json &json);

// {"status": "No permission"}; a number for what has no text.
OrderedJson FailureToJson(HVC_ReturnStatus failure);
HVC_ReturnStatus FailureFromJson(const Json &json);

// A value of one line, as it stands in an error message.
std::string Brief(const Json &json);

}  // namespace nodal

#endif  // NODAL_SNAPSHOT_RECORD_JSON_H
