#include "tools/nodal/support/output_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platkit/errno_status.h"
#include "tools/nodal/support/output.h"
#include "tools/nodal/support/signals.h"
#include "tools/nodal/support/text.h"

namespace nodal {
namespace {

void ThrowUnlessOk(const std::string &path, HVC_ReturnStatus status) {
  if (status == HVC_OK) return;
  if (status == HVC_ALREADY_EXISTS) throw Failure(path, "not a regular file");
  if (status == HVC_LIMIT_EXCEEDED) throw Failure(path, "too many keys collide in the index (hash collisions)");
  throw Failure(path, errno != 0 ? std::strerror(errno) : StatusText(status));
}

}  // namespace

HVC_ReturnStatus WriteAll(int fd, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = write(fd, text.data(), text.size());
    if (count < 0 && errno != EINTR) return platkit::StatusOfErrno(errno, HVC_WRITE_ERROR);
    if (count > 0) text.remove_prefix(static_cast<size_t>(count));
  }
  return HVC_OK;
}

void WriteFile(const std::string &path, platkit::Readers readers,
               const std::function<HVC_ReturnStatus(int fd)> &write) {
  CatchSignals();
  platkit::AtomicFile file;
  errno = 0;
  HVC_ReturnStatus status = file.Create(path, readers);
  ThrowUnlessOk(path, status);
  errno = 0;
  status = write(file.fd());
  if (status == HVC_OK) status = file.Sync();
  // A signal may have arrived while the file was written and synced. After the rename, the command has succeeded and
  // must not fail.
  ThrowIfSignalled();
  if (status == HVC_OK) status = file.Commit();
  ThrowUnlessOk(path, status);
}

void WriteFile(const std::string &path, platkit::Readers readers, std::string_view text) {
  WriteFile(path, readers, [text](int fd) { return WriteAll(fd, text); });
}

}  // namespace nodal
