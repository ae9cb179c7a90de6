// Fields of records as numbers.
#ifndef NODAL_FIGURES_H
#define NODAL_FIGURES_H

#include <cstddef>
#include <optional>
#include <span>

#include "platkit/catalogue.h"

namespace nodal {

// What the field stands for, in base units: bytes, seconds, a part of 1; or as it is. Nothing if it is not available,
// or a limit that is not set.
std::optional<double> FigureOf(const platkit::Field &field, std::span<const std::byte> bytes);

}  // namespace nodal

#endif  // NODAL_FIGURES_H
