// Values of snapshots as JSON.
#ifndef NODAL_SNAPSHOT_VALUE_JSON_H
#define NODAL_SNAPSHOT_VALUE_JSON_H

#include <string_view>

#include "platkit/path.h"
#include "platkit/snapshot/format.h"
#include "tools/nodal/snapshot/record_json.h"

namespace nodal {

// Whether a value of `target`, which is in the catalogue, is of the kind and size that the catalogue says.
bool IsAsKnown(const platkit::PathTarget &target, const platkit::snapshot::Value &value);

// In the catalogue's terms where it has any, else raw.
OrderedJson ValueToJson(std::string_view key, const platkit::snapshot::Value &value);

// Of values that are as known.
OrderedJson ListToJson(const platkit::snapshot::Value &value);

// Type and payload.
OrderedJson RawToJson(const platkit::snapshot::Value &value);

// Of the value behind a failure's key; a value of another form is raw.
OrderedJson StoredFailureToJson(const platkit::snapshot::Value &value);

}  // namespace nodal

#endif  // NODAL_SNAPSHOT_VALUE_JSON_H
