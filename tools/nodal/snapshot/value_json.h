// The values in a snapshot file as JSON.
#ifndef NODAL_SNAPSHOT_VALUE_JSON_H
#define NODAL_SNAPSHOT_VALUE_JSON_H

#include <string_view>

#include "platkit/path.h"
#include "platkit/snapshot/format.h"
#include "tools/nodal/snapshot/record_json.h"

namespace nodal {

// Whether the value has the type and size that the catalogue has for `target`. REQUIRES: target.node is not null.
bool IsAsKnown(const platkit::PathTarget &target, const platkit::snapshot::Value &value);

// By the catalogue if the value matches it, otherwise raw.
OrderedJson ValueToJson(std::string_view key, const platkit::snapshot::Value &value);

// REQUIRES: IsAsKnown.
OrderedJson ListToJson(const platkit::snapshot::Value &value);

// The type and the payload in hexadecimal.
OrderedJson RawToJson(const platkit::snapshot::Value &value);

// The value of a node that could not be read. A value of another form is raw.
OrderedJson StoredFailureToJson(const platkit::snapshot::Value &value);

}  // namespace nodal

#endif  // NODAL_SNAPSHOT_VALUE_JSON_H
