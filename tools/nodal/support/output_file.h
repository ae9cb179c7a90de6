// Files that commands write.
#ifndef NODAL_SUPPORT_OUTPUT_FILE_H
#define NODAL_SUPPORT_OUTPUT_FILE_H

#include <functional>
#include <string>
#include <string_view>

#include "platkit/atomic_file.h"

namespace nodal {

// Writes the whole text. If this fails, returns a failure status and leaves errno set.
[[nodiscard]] HVC_ReturnStatus WriteAll(int fd, std::string_view text);

// Writes a file that appears whole or not at all. `write` fills the file; if it fails, it returns a failure status and
// leaves errno set. Throws a Failure that names the cause, also if a signal asks the program to end before the file is
// complete.
void WriteFile(const std::string &path, platkit::Readers readers, const std::function<HVC_ReturnStatus(int fd)> &write);
void WriteFile(const std::string &path, platkit::Readers readers, std::string_view text);

}  // namespace nodal

#endif  // NODAL_SUPPORT_OUTPUT_FILE_H
