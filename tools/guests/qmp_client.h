// A client of QEMU's machine protocol (QMP), over a Unix socket.
#ifndef GUESTS_QMP_CLIENT_H
#define GUESTS_QMP_CLIENT_H

#include <sys/types.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <string>

#include "platkit/linux/files/file_descriptor.h"

namespace guests {

// The server may be hostile. The constructor and Execute throw an std::runtime_error if the server breaks the protocol
// or sends too much data. They wait for its messages without a time limit.
class QmpClient {
 public:
  explicit QmpClient(const std::string &path);

  // The process that sent all messages so far; 0 if it is in a PID namespace that is not visible here.
  //
  // This may be another process than the one that created the socket. Programs such as libvirt create the sockets of
  // their QEMU processes. And a process that created a socket may have ended, so that its PID belongs to another one.
  pid_t ServerPid() const { return serverPid_.value_or(0); }

  // Executes a command and returns its result; null if the command fails.
  nlohmann::json Execute(const char *command, const nlohmann::json &arguments = nullptr);

 private:
  nlohmann::json ReadMessage();
  size_t Receive(std::span<char> buffer);
  void Write(std::string_view text);

  platkit::FileDescriptor socket_;
  std::optional<pid_t> serverPid_;
  std::string received_;
  size_t totalReceived_ = 0;
};

}  // namespace guests

#endif  // GUESTS_QMP_CLIENT_H
