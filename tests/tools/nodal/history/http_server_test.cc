#include "tools/nodal/history/http_server.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/tools/nodal/history/durations.h"
#include "tools/nodal/support/output.h"

namespace nodal {
namespace {

class HttpServerTest : public testing::Test {
 protected:
  HttpServerTest()
      : server_("0", [this](std::string_view path) {
          asked_.emplace_back(path);
          HttpResponse response;
          if (path == "/none")
            response.status = 503;
          else
            response.body = body_;
          return response;
        }) {}

  // A client's connection.
  platkit::FileDescriptor Connect() const {
    platkit::FileDescriptor client(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(Port());
    EXPECT_EQ(connect(client.get(), reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    EXPECT_EQ(fcntl(client.get(), F_SETFL, O_NONBLOCK), 0);
    return client;
  }
  uint16_t Port() const {
    return static_cast<uint16_t>(std::stoi(server_.address().substr(server_.address().rfind(':') + 1)));
  }
  static void Send(const platkit::FileDescriptor &client, const std::string &text) {
    EXPECT_EQ(send(client.get(), text.data(), text.size(), MSG_NOSIGNAL), static_cast<ssize_t>(text.size()));
  }

  // Serves the connections that are ready now.
  void Serve(int rounds = 3) {
    for (int i = 0; i < rounds; ++i) {
      std::vector<pollfd> &polled = server_.Polled();
      poll(polled.data(), polled.size(), 5);
      server_.Serve(now_);
    }
  }

  // Reads what has arrived. `isClosed` tells whether the server has closed the connection.
  static std::string Receive(const platkit::FileDescriptor &client, bool *isClosed = nullptr) {
    std::string text;
    char buffer[65536];
    ssize_t got = 0;
    while ((got = recv(client.get(), buffer, sizeof buffer, 0)) > 0)
      text.append(buffer, static_cast<size_t>(got));
    if (isClosed != nullptr) *isClosed = got == 0 || errno == ECONNRESET;
    return text;
  }

  std::string Exchange(const std::string &request) {
    const platkit::FileDescriptor client = Connect();
    Send(client, request);
    Serve();
    bool isClosed = false;
    const std::string text = Receive(client, &isClosed);
    EXPECT_TRUE(isClosed) << request;
    return text;
  }

  std::shared_ptr<const std::string> body_ = std::make_shared<const std::string>("figures\n");
  std::vector<std::string> asked_;
  HttpServer server_;
  int64_t now_ = 100 * kSecond;
};

TEST_F(HttpServerTest, AnswersGet) {
  EXPECT_EQ(Exchange("GET /metrics?name=x HTTP/1.1\r\nHost: a\r\n\r\n"),
            "HTTP/1.1 200 OK\r\nContent-Type: text/plain; charset=utf-8\r\nContent-Length: 8\r\nConnection: "
            "close\r\n\r\nfigures\n");
  EXPECT_EQ(asked_, std::vector<std::string>{"/metrics"});
  EXPECT_EQ(server_.connections(), 0u);
}

TEST_F(HttpServerTest, AnswersHeadWithoutTheBody) {
  const std::string answer = Exchange("HEAD /metrics HTTP/1.0\r\n\r\n");
  EXPECT_NE(answer.find("Content-Length: 8\r\n"), std::string::npos);
  EXPECT_TRUE(answer.ends_with("\r\n\r\n"));
}

TEST_F(HttpServerTest, RefusesOtherRequests) {
  EXPECT_TRUE(Exchange("POST /metrics HTTP/1.1\r\n\r\n").starts_with("HTTP/1.1 405 "));
  for (const char *request : {"\r\n\r\n", "GET\r\n\r\n", "GET /metrics\r\n\r\n", "GET metrics HTTP/1.1\r\n\r\n",
                              "GET /metrics FTP/1\r\n\r\n", "\x16\x03\x01\x02\r\n\r\n"})
    EXPECT_TRUE(Exchange(request).starts_with("HTTP/1.1 400 ")) << request;
  EXPECT_TRUE(asked_.empty());
}

TEST_F(HttpServerTest, AnAnswerWithoutATextHasOne) {
  EXPECT_TRUE(Exchange("GET /none HTTP/1.1\r\n\r\n").ends_with("\r\n\r\nService Unavailable\n"));
}

TEST_F(HttpServerTest, TheRequestIsBounded) {
  const platkit::FileDescriptor client = Connect();
  Send(client, "GET /metrics HTTP/1.1\r\nA: " + std::string(HttpServer::kMaxRequest, 'x'));
  Serve(10);
  EXPECT_TRUE(Receive(client).starts_with("HTTP/1.1 431 "));
  EXPECT_EQ(server_.connections(), 0u);
}

TEST_F(HttpServerTest, ARequestMayArriveInPieces) {
  const platkit::FileDescriptor client = Connect();
  for (const char c : std::string("GET /metrics HTTP/1.1\r\n\r\n")) {
    EXPECT_EQ(Receive(client), "");
    Send(client, std::string(1, c));
    Serve(2);
  }
  Serve();
  EXPECT_TRUE(Receive(client).ends_with("figures\n"));
}

TEST_F(HttpServerTest, ASlowClientIsClosed) {
  const platkit::FileDescriptor slow = Connect();
  Send(slow, "GET /metr");
  Serve();
  EXPECT_EQ(server_.connections(), 1u);
  EXPECT_EQ(server_.NextTimeout(), now_ + HttpServer::kMaxTime);
  now_ += HttpServer::kMaxTime;
  Serve(1);
  EXPECT_EQ(server_.connections(), 0u);
  EXPECT_EQ(server_.NextTimeout(), INT64_MAX);
  bool isClosed = false;
  Receive(slow, &isClosed);
  EXPECT_TRUE(isClosed);
}

TEST_F(HttpServerTest, AClientThatDoesNotReadIsClosed) {
  body_ = std::make_shared<const std::string>(50 << 20, 'x');
  const platkit::FileDescriptor client = Connect();
  Send(client, "GET /metrics HTTP/1.1\r\n\r\n");
  Serve(10);
  EXPECT_EQ(server_.connections(), 1u);
  now_ += HttpServer::kMaxTime;
  Serve(1);
  EXPECT_EQ(server_.connections(), 0u);
}

TEST_F(HttpServerTest, ALargeAnswerArrivesWhole) {
  body_ = std::make_shared<const std::string>(5 << 20, 'x');
  const platkit::FileDescriptor client = Connect();
  Send(client, "GET /metrics HTTP/1.1\r\n\r\n");
  std::string answer;
  bool isClosed = false;
  for (int i = 0; i < 10'000 && !isClosed; ++i) {
    Serve(1);
    answer += Receive(client, &isClosed);
  }
  EXPECT_TRUE(isClosed);
  EXPECT_EQ(answer.substr(answer.find("\r\n\r\n") + 4), *body_);
}

TEST_F(HttpServerTest, AClientThatIsGoneDoesNotMatter) {
  {
    const platkit::FileDescriptor client = Connect();
    Send(client, "GET /metrics HTTP/1.1\r\n");
  }
  {
    const platkit::FileDescriptor client = Connect();
    Send(client, "GET /metrics HTTP/1.1\r\n\r\n");
    const linger reset = {.l_onoff = 1, .l_linger = 0};
    setsockopt(client.get(), SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
  }
  Serve(5);
  EXPECT_EQ(server_.connections(), 0u);
  EXPECT_NE(Exchange("GET /metrics HTTP/1.1\r\n\r\n"), "");
}

TEST_F(HttpServerTest, ManyClients) {
  std::vector<platkit::FileDescriptor> idle;
  for (int i = 0; i < 100; ++i) {
    idle.push_back(Connect());
    Serve(1);
    EXPECT_LE(server_.connections(), HttpServer::kMaxConnections);
  }
  EXPECT_TRUE(Exchange("GET /metrics HTTP/1.1\r\n\r\n").ends_with("figures\n")) << "the oldest one made room";
  EXPECT_TRUE(Exchange("GET /metrics HTTP/1.1\r\n\r\n").ends_with("figures\n"));
}

std::string FailureOf(const std::string &address) {
  try {
    const HttpServer server(address, [](std::string_view) { return HttpResponse(); });
    return server.address();
  } catch (const Failure &failure) {
    return failure.what();
  }
}

TEST(HttpServer, Addresses) {
  EXPECT_TRUE(FailureOf("0").starts_with("127.0.0.1:"));
  EXPECT_TRUE(FailureOf("127.0.0.2:0").starts_with("127.0.0.2:"));
  if (FailureOf("[::1]:0").find("annot assign") == std::string::npos) {
    EXPECT_TRUE(FailureOf("[::1]:0").starts_with("[::1]:"));
  }
  for (const char *malformed : {"", "x", "65536", ":9100", "::1:9100", "127.0.0.1:", "127.0.0.1:http", "[]:1", "-1"}) {
    EXPECT_EQ(FailureOf(malformed),
              "--listen " + std::string(malformed) + ": expected PORT or ADDRESS:PORT, such as 9100 or [::1]:9100");
  }
  EXPECT_TRUE(FailureOf("localhost:0").starts_with("--listen localhost:0: ")) << "names are not looked up";
  const HttpServer server("0", [](std::string_view) { return HttpResponse(); });
  EXPECT_EQ(FailureOf(server.address()), "--listen " + server.address() + ": Address already in use");
}

TEST(HttpDate, IsInGmt) {
  EXPECT_EQ(HttpDate(0), "Thu, 01 Jan 1970 00:00:00 GMT");
  EXPECT_EQ(HttpDate(1'763'694'720 * kSecond + 999), "Fri, 21 Nov 2025 03:12:00 GMT");
}

}  // namespace
}  // namespace nodal
