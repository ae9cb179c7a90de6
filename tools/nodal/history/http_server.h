// A small HTTP server for figures: it answers GET and HEAD with texts, one request per connection.
//
// It does not use cpp-httplib. That library serves each connection in a thread of a pool, limits the time of each read
// but not of a whole request, and queues any number of connections. A few clients that send a byte per second would
// occupy all threads.
#ifndef NODAL_HISTORY_HTTP_SERVER_H
#define NODAL_HISTORY_HTTP_SERVER_H

#include <poll.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platkit/linux/files/file_descriptor.h"

namespace nodal {

struct HttpResponse {
  int status = 200;
  std::string type = "text/plain; charset=utf-8";
  std::string lastModified = {};  // in the form of HttpDate; empty: no such header
  std::shared_ptr<const std::string> body;
};

// Formats a time such as "Sat, 21 Nov 2026 03:12:00 GMT". `wall` is in nanoseconds since 1970.
std::string HttpDate(int64_t wall);

// The server never blocks, and its memory is bounded. It closes a connection that does not send its request or take its
// answer within kMaxTime. If there are too many connections, it closes the oldest one.
class HttpServer {
 public:
  static constexpr size_t kMaxConnections = 16;
  static constexpr size_t kMaxRequest = 8192;                       // bytes of a request's head
  static constexpr int64_t kMaxTime = int64_t{10} * 1'000'000'000;  // nanoseconds, for a whole connection

  // Returns the answer to a path, such as "/metrics", without the query.
  using Handler = std::function<HttpResponse(std::string_view path)>;

  // `address` is PORT, ADDRESS:PORT or [ADDRESS]:PORT. ADDRESS is numeric; the default is 127.0.0.1. Throws a
  // UsageError if `address` is malformed, and a Failure if it is in use.
  HttpServer(const std::string &address, Handler handler);
  HttpServer(const HttpServer &) = delete;
  HttpServer &operator=(const HttpServer &) = delete;

  // The address and the port, such as 127.0.0.1:9100. If port 0 was requested, this is the free port that replaced it.
  const std::string &address() const { return address_; }

  // The descriptors and events to poll for. The array is valid until the next call of Serve.
  std::vector<pollfd> &Polled();

  // Handles the results of polling, and closes connections that have timed out. `now` is the time of a monotonic clock
  // in nanoseconds.
  void Serve(int64_t now);

  // The time at which Serve must be called even if polling reports nothing; INT64_MAX if no call is needed.
  int64_t NextTimeout() const;

  size_t connections() const { return connections_.size(); }

 private:
  struct Connection {
    platkit::FileDescriptor socket;
    int64_t deadline;
    std::string request = {};
    std::string head = {};  // the head of the answer; empty while the request is incomplete
    std::shared_ptr<const std::string> body = nullptr;
    size_t sent = 0;  // bytes of head and body that were sent
  };

  void Accept(int64_t now);
  bool Advance(Connection &connection, short events);
  bool Receive(Connection &connection);
  void Answer(Connection &connection);
  static bool Send(Connection &connection);

  Handler handler_;
  platkit::FileDescriptor listening_;
  std::string address_;
  std::vector<Connection> connections_;  // the oldest first
  std::vector<pollfd> polled_;           // entries for listening_ and for each connection
};

}  // namespace nodal

#endif  // NODAL_HISTORY_HTTP_SERVER_H
