#include "tools/guests/qmp_client.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "platkit/linux/files/system_calls.h"

namespace guests {
namespace {

using nlohmann::json;

// The maximum sizes of one message and of all messages. The answers to all our commands together are a few KB.
constexpr size_t kMaxMessage = 64 * 1024;
constexpr size_t kMaxReceived = 1024 * 1024;

[[noreturn]] void ThrowErrno() { throw std::runtime_error(std::strerror(errno)); }

// Copying and comparing a value takes stack space for each level of nesting. QEMU's messages have fewer than ten
// levels.
bool RequireShallow(int depth, json::parse_event_t, const json &) {
  constexpr int kMaxDepth = 64;
  if (depth > kMaxDepth) throw std::runtime_error("a message from the QMP server is nested too deeply");
  return true;
}

}  // namespace

QmpClient::QmpClient(const std::string &path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) throw std::runtime_error("the path is too long for a socket");
  path.copy(address.sun_path, path.size());
  socket_ = platkit::FileDescriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (!socket_.isOpen()) ThrowErrno();
  if (connect(socket_.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) ThrowErrno();
  const json greeting = ReadMessage();
  if (!greeting.is_object() || !greeting.contains("QMP")) throw std::runtime_error("not a QMP server");
  if (Execute("qmp_capabilities").is_null()) throw std::runtime_error("the QMP server refuses commands");
}

pid_t QmpClient::ServerPid() const {
  ucred peer = {};
  socklen_t size = sizeof peer;
  return getsockopt(socket_.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 ? peer.pid : 0;
}

json QmpClient::Execute(const char *command, const json &arguments) {
  json request = {{"execute", command}};
  if (!arguments.is_null()) request["arguments"] = arguments;
  Write(request.dump() + "\n");
  while (true) {
    const json message = ReadMessage();
    if (message.contains("return")) return message["return"];
    if (message.contains("error")) return nullptr;
    if (!message.contains("event")) throw std::runtime_error("unexpected message from the QMP server");
  }
}

json QmpClient::ReadMessage() {
  size_t end = 0;
  while ((end = received_.find('\n')) == std::string::npos) {
    char buffer[4096];
    const ssize_t got = platkit::ReadOnce(socket_, buffer);
    if (got < 0) ThrowErrno();
    if (got == 0) throw std::runtime_error("the QMP server closed the connection");
    received_.append(buffer, static_cast<size_t>(got));
    totalReceived_ += static_cast<size_t>(got);
    if (received_.size() > kMaxMessage || totalReceived_ > kMaxReceived)
      throw std::runtime_error("the QMP server sent too much data");
  }
  json message = json::parse(received_.substr(0, end), RequireShallow, false);
  received_.erase(0, end + 1);
  if (!message.is_object()) throw std::runtime_error("malformed message from the QMP server");
  return message;
}

void QmpClient::Write(std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = send(socket_.get(), text.data(), text.size(), MSG_NOSIGNAL);
    if (count < 0 && errno != EINTR) ThrowErrno();
    if (count > 0) text.remove_prefix(static_cast<size_t>(count));
  }
}

}  // namespace guests
