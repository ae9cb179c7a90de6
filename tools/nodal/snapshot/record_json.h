// Converts records, texts and statuses to JSON and back. The ...FromJson functions throw an InvalidJson for an invalid
// value.
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

// REQUIRES: `record` has the size that the layout states.
void RecordFromJson(const platkit::RecordLayout &layout, const Json &json, std::span<std::byte> record);

// Returns the bytes of a field in its record.
std::span<const std::byte> BytesOfField(const platkit::Field &field, std::span<const std::byte> record);

// Converts the value of a field. Unnamed bytes become hexadecimal digits.
OrderedJson FieldToJson(const platkit::Field &field, std::span<const std::byte> bytes);

// Formats a named field's value from JSON for people.
std::string ShownValue(const platkit::Field &field, const OrderedJson &value);

// A text becomes a string, or {"hex": ...} if it is not UTF-8.
OrderedJson TextToJson(std::string_view text);
std::string TextFromJson(const Json &json);

// A status becomes an object such as {"status": "No permission"}, with the status's number if it has no text.
OrderedJson FailureToJson(HVC_ReturnStatus failure);
HVC_ReturnStatus FailureFromJson(const Json &json);

// Returns the value in one short line, for messages.
std::string Brief(const Json &json);

}  // namespace nodal

#endif  // NODAL_SNAPSHOT_RECORD_JSON_H
