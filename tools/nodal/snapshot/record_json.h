// Records, texts and statuses to JSON and back. The functions from JSON throw an InvalidJson for an invalid value.
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

// The value of a field. Unnamed bytes become hexadecimal digits.
OrderedJson FieldToJson(const platkit::Field &field, std::span<const std::byte> bytes);

// Formats a named field's value from JSON for people.
std::string ShownValue(const platkit::Field &field, const OrderedJson &value);

// A string, or {"hex": ...} if the text is not UTF-8.
OrderedJson TextToJson(std::string_view text);
std::string TextFromJson(const Json &json);

// {"status": "No permission"}, or the number of a status without text.
OrderedJson FailureToJson(HVC_ReturnStatus failure);
HVC_ReturnStatus FailureFromJson(const Json &json);

// The value in one short line, for messages.
std::string Brief(const Json &json);

}  // namespace nodal

#endif  // NODAL_SNAPSHOT_RECORD_JSON_H
