// The values in a snapshot file as JSON.
#ifndef NODAL_SNAPSHOT_VALUE_JSON_H
#define NODAL_SNAPSHOT_VALUE_JSON_H

#include <string_view>

#include "platkit/path.h"
#include "platkit/snapshot/format.h"
#include "tools/nodal/snapshot/record_json.h"

namespace nodal {

// Whether the value has the type and size that the catalogue states for `target`. REQUIRES: target.node is not null.
bool IsAsKnown(const platkit::PathTarget &target, const platkit::snapshot::Value &value);

// Converts a value as the catalogue describes it if IsAsKnown is true, else as RawToJson does.
OrderedJson ValueToJson(std::string_view key, const platkit::snapshot::Value &value);

// REQUIRES: IsAsKnown is true for the value.
OrderedJson ListToJson(const platkit::snapshot::Value &value);

// Converts a value to its type and its payload in hexadecimal.
OrderedJson RawToJson(const platkit::snapshot::Value &value);

// Converts the value of a node that could not be read. A value that is not a status is converted as RawToJson does.
OrderedJson StoredFailureToJson(const platkit::snapshot::Value &value);

}  // namespace nodal

#endif  // NODAL_SNAPSHOT_VALUE_JSON_H
