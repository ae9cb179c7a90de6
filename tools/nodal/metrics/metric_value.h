// The values of metrics.
#ifndef NODAL_METRICS_METRIC_VALUE_H
#define NODAL_METRICS_METRIC_VALUE_H

#include <cstddef>
#include <optional>
#include <span>

#include "platkit/catalogue.h"

namespace nodal {

// Returns a field's value in base units: bytes, seconds, ratios from 0 to 1. Returns std::nullopt if the value is
// unavailable or unlimited.
std::optional<double> ValueOf(const platkit::Field &field, std::span<const std::byte> bytes);

}  // namespace nodal

#endif  // NODAL_METRICS_METRIC_VALUE_H
