// Standard output, and failures.
#ifndef NODAL_SUPPORT_OUTPUT_H
#define NODAL_SUPPORT_OUTPUT_H

#include <stdexcept>
#include <string>
#include <string_view>

#include "platkit/status.h"

namespace nodal {

// Ends a command: where and what, ready to be shown.
class Failure : public std::runtime_error {
 public:
  Failure(std::string_view where, std::string_view what);
  Failure(std::string_view where, HVC_ReturnStatus status);
};

// Both throw if standard output cannot be written.
void Print(std::string_view text);
void FinishOutput();

// Writes a line to standard error, without control characters.
void Complain(std::string_view message);

// A standard descriptor that the caller closed would be given to the next file that is opened, and output would go
// there. Fills the gaps with descriptors on which reading or writing fails.
void HoldStandardDescriptors();

}  // namespace nodal

#endif  // NODAL_SUPPORT_OUTPUT_H
