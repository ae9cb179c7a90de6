#include "tools/guests/qmp_client.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace guests {
namespace {

using nlohmann::json;

// The maximum sizes of one message and of all messages. The answers to all our commands together are a few KB.
constexpr size_t kMaxMessage = 64 * 1024;
constexpr size_t kMaxReceived = 1024 * 1024;

[[noreturn]] void ThrowErrno() { throw std::runtime_error(std::strerror(errno)); }

pid_t SenderOf(msghdr &message) {
  const cmsghdr *header = CMSG_FIRSTHDR(&message);
  if (header == nullptr || header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_CREDENTIALS) return 0;
  ucred sender = {};
  std::memcpy(&sender, CMSG_DATA(header), sizeof sender);
  return sender.pid;
}

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
  // From now on, the kernel tells the sender of each message.
  const int on = 1;
  if (setsockopt(socket_.get(), SOL_SOCKET, SO_PASSCRED, &on, sizeof on) != 0) ThrowErrno();
  if (connect(socket_.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) ThrowErrno();
  const json greeting = ReadMessage();
  if (!greeting.is_object() || !greeting.contains("QMP")) throw std::runtime_error("not a QMP server");
  if (Execute("qmp_capabilities").is_null()) throw std::runtime_error("the QMP server refuses commands");
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
    const size_t got = Receive(buffer);
    if (got == 0) throw std::runtime_error("the QMP server closed the connection");
    received_.append(buffer, got);
    totalReceived_ += got;
    if (received_.size() > kMaxMessage || totalReceived_ > kMaxReceived)
      throw std::runtime_error("the QMP server sent too much data");
  }
  json message = json::parse(received_.substr(0, end), RequireShallow, false);
  received_.erase(0, end + 1);
  if (!message.is_object()) throw std::runtime_error("malformed message from the QMP server");
  return message;
}

size_t QmpClient::Receive(std::span<char> buffer) {
  iovec part = {.iov_base = buffer.data(), .iov_len = buffer.size()};
  // Too small for descriptors that the server could send.
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(ucred))];
  msghdr message = {};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  message.msg_control = control;
  message.msg_controllen = sizeof control;
  ssize_t got = 0;
  do {
    got = recvmsg(socket_.get(), &message, MSG_CMSG_CLOEXEC);
  } while (got < 0 && errno == EINTR);
  if (got < 0) ThrowErrno();
  if (got > 0 && serverPid_.value_or(SenderOf(message)) != SenderOf(message))
    throw std::runtime_error("more than one process answers at the QMP socket");
  if (got > 0) serverPid_ = SenderOf(message);
  return static_cast<size_t>(got);
}

void QmpClient::Write(std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = send(socket_.get(), text.data(), text.size(), MSG_NOSIGNAL);
    if (count < 0 && errno != EINTR) ThrowErrno();
    if (count > 0) text.remove_prefix(static_cast<size_t>(count));
  }
}

}  // namespace guests
