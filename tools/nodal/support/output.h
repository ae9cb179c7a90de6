// Output, messages and failures.
#ifndef NODAL_SUPPORT_OUTPUT_H
#define NODAL_SUPPORT_OUTPUT_H

#include <stdexcept>
#include <string>
#include <string_view>

#include "platkit/status.h"

namespace nodal {

// Ends a command. The message names the place of the failure, such as a file, and its cause.
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

// Throws std::bad_alloc for HVC_NO_MEMORY. Returns any other status unchanged.
HVC_ReturnStatus ThrowIfOutOfMemory(HVC_ReturnStatus status);

// These functions throw a Failure if standard output cannot be written.
void Print(std::string_view text);
void FlushOutput();
void FinishOutput();

// Sets the program's name in its messages (default: nodal). `name` must stay valid, because only the pointer is stored.
void SetProgramName(const char *name);

// Writes a message as one line to standard error, after replacing characters as Printable does. Truncates the message
// to 8 KB.
void Complain(std::string_view message);

// Opens /dev/null on each closed standard descriptor, so that reading or writing the descriptor fails. Otherwise, the
// next opened file would get this descriptor, and output would go into the file.
void HoldStandardDescriptors();

}  // namespace nodal

#endif  // NODAL_SUPPORT_OUTPUT_H
