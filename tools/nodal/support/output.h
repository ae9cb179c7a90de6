// Output, messages and failures.
#ifndef NODAL_SUPPORT_OUTPUT_H
#define NODAL_SUPPORT_OUTPUT_H

#include <stdexcept>
#include <string>
#include <string_view>

#include "platkit/status.h"

namespace nodal {

// Ends a command. The message says where the failure is and what it is.
class Failure : public std::runtime_error {
 public:
  Failure(std::string_view where, std::string_view what);
  Failure(std::string_view where, HVC_ReturnStatus status);

 protected:
  explicit Failure(const std::string &message) : std::runtime_error(message) {}
};

// A mistake in the command line, which has an exit status of its own.
class UsageError : public Failure {
 public:
  explicit UsageError(const std::string &message) : Failure(message) {}
  // `option` is the option and its value, such as "--every 5x".
  UsageError(std::string_view option, std::string_view what) : Failure(option, what) {}
};

// Throws std::bad_alloc for HVC_NO_MEMORY, and returns other statuses.
HVC_ReturnStatus ThrowIfOutOfMemory(HVC_ReturnStatus status);

// These throw if standard output cannot be written.
void Print(std::string_view text);
void FlushOutput();
void FinishOutput();

// The program's name in its messages (default: nodal). The text must be static.
void SetProgramName(const char *name);

// Writes a line to standard error, without control characters. Truncates a message of more than 8 KB.
void Complain(std::string_view message);

// Occupies closed standard descriptors with descriptors on which reading or writing fails. Otherwise the next opened
// file would get such a descriptor, and output would go into the file.
void HoldStandardDescriptors();

}  // namespace nodal

#endif  // NODAL_SUPPORT_OUTPUT_H
