// A client of QEMU's machine protocol (QMP), over a Unix socket.
#ifndef GUESTS_QMP_CLIENT_H
#define GUESTS_QMP_CLIENT_H

#include <sys/types.h>

#include <nlohmann/json.hpp>
#include <string>

#include "platkit/linux/files/file_descriptor.h"

namespace guests {

// The server may be hostile. The constructor and Execute throw an std::runtime_error if the server breaks the protocol
// or sends too much data. They wait for its messages without a time limit.
class QmpClient {
 public:
  explicit QmpClient(const std::string &path);

  // The PID of the process that listens on the socket; 0 if it is unknown.
  pid_t ServerPid() const;

  // Executes a command and returns its result; null if the command fails.
  nlohmann::json Execute(const char *command, const nlohmann::json &arguments = nullptr);

 private:
  nlohmann::json ReadMessage();
  void Write(std::string_view text);

  platkit::FileDescriptor socket_;
  std::string received_;
  size_t totalReceived_ = 0;
};

}  // namespace guests

#endif  // GUESTS_QMP_CLIENT_H
