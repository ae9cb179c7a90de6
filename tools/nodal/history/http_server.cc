#include "tools/nodal/history/http_server.h"

#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <optional>

#include "tools/nodal/support/output.h"

namespace nodal {
namespace {

constexpr std::string_view kLoopback = "127.0.0.1";

struct FreeAddresses {
  void operator()(addrinfo *addresses) const { freeaddrinfo(addresses); }
};

// Splits an address such as "[::1]:9100", "127.0.0.1:9100" or "9100".
void SplitAddress(const std::string &text, std::string &host, std::string &port) {
  const size_t colon = text.rfind(':');
  host = colon == std::string::npos ? std::string(kLoopback) : text.substr(0, colon);
  port = colon == std::string::npos ? text : text.substr(colon + 1);
  const bool hasBrackets = host.size() >= 2 && host.front() == '[' && host.back() == ']';
  if (hasBrackets) host = host.substr(1, host.size() - 2);
  const bool isNumber = !port.empty() && port.size() <= 5 && port.find_first_not_of("0123456789") == std::string::npos;
  if (!isNumber || std::stoi(port) > 65535 || host.empty() || (!hasBrackets && host.find(':') != std::string::npos))
    throw UsageError("--listen " + text, "expected PORT or ADDRESS:PORT, such as 9100 or [::1]:9100");
}

std::unique_ptr<addrinfo, FreeAddresses> Resolve(const std::string &text) {
  std::string host, port;
  SplitAddress(text, host, port);
  addrinfo hints = {};
  hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV | AI_PASSIVE;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo *found = nullptr;
  const int error = getaddrinfo(host.c_str(), port.c_str(), &hints, &found);
  if (error != 0) throw UsageError("--listen " + text, gai_strerror(error));
  return std::unique_ptr<addrinfo, FreeAddresses>(found);
}

platkit::FileDescriptor Listen(const std::string &text) {
  const auto address = Resolve(text);
  platkit::FileDescriptor listening(socket(address->ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  const int on = 1;
  const bool isListening =
      listening.isOpen() && setsockopt(listening.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) == 0 &&
      bind(listening.get(), address->ai_addr, address->ai_addrlen) == 0 && listen(listening.get(), SOMAXCONN) == 0;
  if (!isListening) throw Failure("--listen " + text, std::strerror(errno));
  return listening;
}

std::string AddressOf(int listening) {
  sockaddr_storage address = {};
  socklen_t size = sizeof address;
  char host[NI_MAXHOST], port[NI_MAXSERV];
  auto *const generic = reinterpret_cast<sockaddr *>(&address);
  if (getsockname(listening, generic, &size) != 0 ||
      getnameinfo(generic, size, host, sizeof host, port, sizeof port, NI_NUMERICHOST | NI_NUMERICSERV) != 0)
    return "";
  return (address.ss_family == AF_INET6 ? "[" + std::string(host) + "]" : std::string(host)) + ":" + port;
}

std::string_view ReasonOf(int status) {
  switch (status) {
    case 200: return "OK";
    case 400: return "Bad Request";
    case 404: return "Not Found";
    case 405: return "Method Not Allowed";
    case 431: return "Request Header Fields Too Large";
    default: return "Service Unavailable";
  }
}

HttpResponse ErrorOf(int status) {
  return {.status = status, .body = std::make_shared<const std::string>(std::string(ReasonOf(status)) + "\n")};
}

// The first line of a request: "GET /metrics?name=value HTTP/1.1".
struct RequestLine {
  std::string_view method, path;
};

std::optional<RequestLine> ParseRequestLine(std::string_view head) {
  const std::string_view line = head.substr(0, head.find_first_of("\r\n"));
  const size_t first = line.find(' ');
  const size_t last = line.rfind(' ');
  if (first == std::string_view::npos || first == last || !line.substr(last + 1).starts_with("HTTP/1."))
    return std::nullopt;
  const std::string_view target = line.substr(first + 1, last - first - 1);
  if (!target.starts_with('/')) return std::nullopt;
  return RequestLine{line.substr(0, first), target.substr(0, target.find('?'))};
}

bool IsTemporary(int error) { return error == EAGAIN || error == EWOULDBLOCK || error == EINTR; }

}  // namespace

std::string HttpDate(int64_t wall) {
  static constexpr const char *kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  static constexpr const char *kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                            "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const time_t seconds = wall / 1'000'000'000;
  tm parts = {};
  gmtime_r(&seconds, &parts);
  char text[64];
  std::snprintf(text, sizeof text, "%s, %02d %s %04d %02d:%02d:%02d GMT", kDays[parts.tm_wday], parts.tm_mday,
                kMonths[parts.tm_mon], parts.tm_year + 1900, parts.tm_hour, parts.tm_min, parts.tm_sec);
  return text;
}

HttpServer::HttpServer(const std::string &address, Handler handler)
    : handler_(std::move(handler)), listening_(Listen(address)), address_(AddressOf(listening_.get())) {}

std::vector<pollfd> &HttpServer::Polled() {
  polled_.clear();
  polled_.push_back({.fd = listening_.get(), .events = POLLIN, .revents = 0});
  for (const Connection &connection : connections_) {
    const short events = connection.head.empty() ? POLLIN : POLLOUT;
    polled_.push_back({.fd = connection.socket.get(), .events = events, .revents = 0});
  }
  return polled_;
}

void HttpServer::Serve(int64_t now) {
  for (size_t i = 0, polled = 1; i < connections_.size(); ++polled) {
    const bool isPolled = polled < polled_.size();
    const bool stays = connections_[i].deadline > now &&
                       (!isPolled || polled_[polled].revents == 0 || Advance(connections_[i], polled_[polled].revents));
    if (stays) {
      ++i;
    } else {
      connections_.erase(connections_.begin() + static_cast<std::ptrdiff_t>(i));
    }
  }
  if (!polled_.empty() && polled_[0].revents != 0) Accept(now);
  polled_.clear();
}

int64_t HttpServer::NextTimeout() const { return connections_.empty() ? INT64_MAX : connections_.front().deadline; }

// Accepts at most kMaxConnections connections per call, so that a flood of connections does not delay the next sample.
void HttpServer::Accept(int64_t now) {
  for (size_t i = 0; i < kMaxConnections; ++i) {
    platkit::FileDescriptor socket(accept4(listening_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (!socket.isOpen()) {
      // Closes the oldest connection to free a descriptor. Otherwise the new connection would keep waiting, and polling
      // would never wait.
      if ((errno == EMFILE || errno == ENFILE) && !connections_.empty()) connections_.erase(connections_.begin());
      return;
    }
    if (connections_.size() == kMaxConnections) connections_.erase(connections_.begin());
    connections_.push_back({.socket = std::move(socket), .deadline = now + kMaxTime});
  }
}

// Returns false if the connection is over.
bool HttpServer::Advance(Connection &connection, short events) {
  if ((events & (POLLERR | POLLNVAL)) != 0) return false;
  if (connection.head.empty() && !Receive(connection)) return false;
  return connection.head.empty() || Send(connection);
}

bool HttpServer::Receive(Connection &connection) {
  char buffer[2048];
  const ssize_t got = recv(connection.socket.get(), buffer, sizeof buffer, 0);
  if (got < 0) return IsTemporary(errno);
  if (got == 0) return false;
  connection.request.append(buffer, static_cast<size_t>(got));
  const bool isWhole =
      connection.request.find("\r\n\r\n") != std::string::npos || connection.request.find("\n\n") != std::string::npos;
  if (isWhole || connection.request.size() > kMaxRequest) Answer(connection);
  return true;
}

void HttpServer::Answer(Connection &connection) {
  const std::optional<RequestLine> line = ParseRequestLine(connection.request);
  HttpResponse response;
  if (connection.request.size() > kMaxRequest) {
    response = ErrorOf(431);
  } else if (!line) {
    response = ErrorOf(400);
  } else if (line->method != "GET" && line->method != "HEAD") {
    response = ErrorOf(405);
  } else {
    response = handler_(line->path);
    if (response.body == nullptr) response = ErrorOf(response.status);
  }
  connection.head = "HTTP/1.1 " + std::to_string(response.status) + " " + std::string(ReasonOf(response.status)) +
                    "\r\nContent-Type: " + response.type +
                    "\r\nContent-Length: " + std::to_string(response.body->size()) + "\r\nConnection: close\r\n";
  if (response.status == 405) connection.head += "Allow: GET, HEAD\r\n";
  if (!response.lastModified.empty()) connection.head += "Last-Modified: " + response.lastModified + "\r\n";
  connection.head += "\r\n";
  const bool isHead = line && line->method == "HEAD";
  connection.body = isHead ? std::make_shared<const std::string>() : response.body;
  connection.request = {};
}

// Sends as much as the client takes. Returns false after the last byte, or if the client is gone.
bool HttpServer::Send(Connection &connection) {
  const size_t head = connection.head.size();
  while (connection.sent < head + connection.body->size()) {
    const std::string_view rest = connection.sent < head
                                      ? std::string_view(connection.head).substr(connection.sent)
                                      : std::string_view(*connection.body).substr(connection.sent - head);
    const ssize_t sent = send(connection.socket.get(), rest.data(), rest.size(), MSG_NOSIGNAL);
    if (sent < 0) return IsTemporary(errno);
    connection.sent += static_cast<size_t>(sent);
  }
  return false;
}

}  // namespace nodal
