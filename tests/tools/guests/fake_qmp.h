// A QMP server that answers as a test wants.
#ifndef TESTS_TOOLS_GUESTS_FAKE_QMP_H
#define TESTS_TOOLS_GUESTS_FAKE_QMP_H

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <latch>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>

namespace testing_support {

inline constexpr char kGreeting[] = R"({"QMP": {"version": {}, "capabilities": []}})";

// The results of QEMU 7.2 by command. The results of qom-list are found by folder, those of qom-get by property.
inline std::map<std::string, std::string> QmpResults() {
  return {{"qmp_capabilities", "{}"},
          {"query-name", R"({"name": "web"})"},
          {"query-memory-size-summary", R"({"base-memory": 268435456, "plugged-memory": 0})"},
          {"/machine/peripheral", R"([{"name": "type", "type": "string"},
                                      {"name": "balloon0", "type": "child<virtio-balloon-pci>"}])"},
          {"/machine/peripheral-anon", "[]"},
          {"query-balloon", R"({"actual": 134217728})"},
          {"guest-stats-polling-interval", "10"},
          {"guest-stats", R"({"last-update": 0, "stats": {}})"},
          {"query-migrate", "{}"}};
}

// A socket that listens at this path.
inline int ListenAt(const std::string &path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  EXPECT_EQ(bind(listener, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0) << path;
  EXPECT_EQ(listen(listener, 5), 0);
  return listener;
}

// Called with each received line; returns what to send, with its newline.
using QmpAnswer = std::function<std::string(const std::string &line)>;

// Answers a command with its result, or with an error if it has none.
inline QmpAnswer AnswerWith(std::map<std::string, std::string> results) {
  return [results = std::move(results)](const std::string &line) -> std::string {
    const nlohmann::json request = nlohmann::json::parse(line);
    std::string key = request["execute"];
    if (key == "qom-list") key = request["arguments"]["path"];
    if (key == "qom-get") key = request["arguments"]["property"];
    const auto found = results.find(key);
    if (found == results.end()) return "{\"error\": {\"class\": \"GenericError\"}}\n";
    std::string result = found->second;
    std::ranges::replace(result, '\n', ' ');
    return "{\"return\": " + result + "}\n";
  };
}

inline bool SendAll(int client, std::string_view text) {
  while (!text.empty()) {
    const ssize_t sent = send(client, text.data(), text.size(), MSG_NOSIGNAL);
    if (sent <= 0) return false;
    text.remove_prefix(static_cast<size_t>(sent));
  }
  return true;
}

// Answers the lines of a client until it goes away.
inline void AnswerLines(int client, const QmpAnswer &answer) {
  std::string received;
  char buffer[4096];
  for (ssize_t got = 0; (got = read(client, buffer, sizeof buffer)) > 0;) {
    received.append(buffer, static_cast<size_t>(got));
    for (size_t end = 0; (end = received.find('\n')) != std::string::npos; received.erase(0, end + 1)) {
      if (!SendAll(client, answer(received.substr(0, end)))) return;
    }
  }
}

// Serves one connection after another, in a thread.
class FakeQmp {
 public:
  FakeQmp(const std::string &path, std::string greeting, QmpAnswer answer)
      : greeting_(std::move(greeting)), answer_(std::move(answer)), listener_(ListenAt(path)) {
    thread_ = std::thread([this] { Serve(); });
    started_.wait();
  }

  FakeQmp(const std::string &path, std::map<std::string, std::string> results)
      : FakeQmp(path, std::string(kGreeting) + "\n", AnswerWith(std::move(results))) {}

  ~FakeQmp() {
    isEnding_ = true;
    shutdown(listener_, SHUT_RDWR);
    thread_.join();
    close(listener_);
  }
  FakeQmp(const FakeQmp &) = delete;
  FakeQmp &operator=(const FakeQmp &) = delete;

 private:
  void Serve() {
    started_.count_down();
    while (!isEnding_) {
      const int client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
      if (client < 0) continue;
      if (SendAll(client, greeting_)) AnswerLines(client, answer_);
      close(client);
    }
  }

  std::string greeting_;
  QmpAnswer answer_;
  std::atomic<bool> isEnding_ = false;
  int listener_;
  // The constructor waits until the thread has started, because the thread allocates memory at its start. If the test
  // forked in the meantime, the sanitizers' allocator would stay locked in the child.
  std::latch started_{1};
  std::thread thread_;
};

}  // namespace testing_support

#endif  // TESTS_TOOLS_GUESTS_FAKE_QMP_H
