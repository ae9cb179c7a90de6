// Guests behind QMP sockets. The servers are threads of the test, so the process of each guest is the test itself.
#include "tools/guests/qmp.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/sched.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <filesystem>

#include "platkit/linux/kernel/process_stat.h"
#include "tests/platkit/scratch.h"
#include "tests/tools/guests/fake_qmp.h"
#include "tools/guests/qmp_client.h"
#include "tools/guests/sample.h"

namespace guests {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using testing_support::FakeQmp;
using testing_support::kGreeting;
using testing_support::QmpResults;

using Results = std::map<std::string, std::string>;

constexpr milliseconds kLong{20'000};
constexpr milliseconds kShort{300};

std::string Seconds(int64_t ago) { return std::to_string(time(nullptr) - ago); }

// Statistics as QEMU shows them: 2^64 - 1 means not reported.
std::string Statistics(const std::string &statistics, int64_t ago = 0) {
  return "{\"last-update\": " + Seconds(ago) + ", \"stats\": {" + statistics + "}}";
}

class Qmp : public testing::Test {
 protected:
  std::string Path(const std::string &name = "qmp") const { return scratch_.Path(name); }

  // The sample of one guest, with `others` in place of some of its usual results.
  Sample Ask(const Results &others) {
    Results results = QmpResults();
    for (const auto &[key, result] : others)
      results[key] = result;
    const FakeQmp server(Path(), results);
    const Sample sample = TakeSample({.qmp = {Path()}}, kLong);
    std::filesystem::remove(Path());
    return sample;
  }

  Guest AskGuest(const Results &others) {
    const Sample sample = Ask(others);
    EXPECT_EQ(sample.failures, std::vector<std::string>{});
    EXPECT_EQ(sample.guests.size(), 1u);
    return sample.guests.empty() ? Guest() : sample.guests[0];
  }

  // The only failure of a sample whose server greets and answers like this.
  std::string FailureOf(const std::string &greeting, const std::string &answer, milliseconds deadline = kLong) {
    const FakeQmp server(Path(), greeting, [&](const std::string &) { return answer; });
    const Sample sample = TakeSample({.qmp = {Path()}}, deadline);
    std::filesystem::remove(Path());
    EXPECT_TRUE(sample.isEmpty);
    EXPECT_EQ(sample.guests.size(), 0u);
    EXPECT_EQ(sample.failures.size(), 1u);
    const std::string start = Path() + ": ";
    const std::string failure = sample.failures.empty() ? "" : sample.failures[0];
    EXPECT_TRUE(failure.starts_with(start)) << failure;
    return failure.substr(std::min(start.size(), failure.size()));
  }

  Scratch scratch_;
};

TEST_F(Qmp, AGuest) {
  const Guest guest = AskGuest({{"guest-stats", Statistics(R"("stat-total-memory": 209715200,
      "stat-free-memory": 1048576, "stat-available-memory": 104857600, "stat-disk-caches": 2048, "stat-swap-in": 4096,
      "stat-swap-out": 8192, "stat-major-faults": 7, "stat-minor-faults": 9, "stat-htlb-pgalloc": 3,
      "stat-htlb-pgfail": 18446744073709551615)")}});
  EXPECT_EQ(guest.monitor, Path());
  EXPECT_EQ(guest.id, "/machine/peripheral/balloon0");
  EXPECT_EQ(guest.name, "web");
  EXPECT_TRUE(guest.hasAnswered);
  EXPECT_EQ(guest.pollingSeconds, Figure(10));
  const auto expect = [&](GuestFigure figure, Figure expected) {
    EXPECT_EQ(guest.figures[figure], expected) << KeyOf(figure);
  };
  expect(GuestFigure::kMemory, Figure(262144));
  expect(GuestFigure::kBalloon, Figure(131072));
  expect(GuestFigure::kBalloonTarget, Figure());
  expect(GuestFigure::kBalloonDriver, Figure(1));
  expect(GuestFigure::kTotal, Figure(204800));
  expect(GuestFigure::kFree, Figure(1024));
  expect(GuestFigure::kUsable, Figure(102400));
  expect(GuestFigure::kDiskCaches, Figure(2));
  expect(GuestFigure::kSwappedIn, Figure(4));
  expect(GuestFigure::kSwappedOut, Figure(8));
  expect(GuestFigure::kMajorFaults, Figure(7));
  expect(GuestFigure::kHugePagesAllocated, Figure(3));
  expect(GuestFigure::kHugePagesRefused, Figure());
  expect(GuestFigure::kWritten, Figure(0));
}

TEST_F(Qmp, TheProcessOfAGuest) {
  const Guest guest = AskGuest({});
  platkit::HostFiles files("/", platkit::Reach::kHost);
  EXPECT_EQ(guest.figures.pid, getpid());
  EXPECT_EQ(Figure(guest.figures.startTicks), ReadStartTicks(files, getpid()));
}

TEST_F(Qmp, OldStatistics) {
  EXPECT_EQ(AskGuest({{"guest-stats", Statistics(R"("stat-total-memory": 4096)", 100)}}).figures[GuestFigure::kTotal],
            Figure());
  const Guest unpolled =
      AskGuest({{"guest-stats", Statistics(R"("stat-total-memory": 4096)")}, {"guest-stats-polling-interval", "0"}});
  EXPECT_EQ(unpolled.figures[GuestFigure::kTotal], Figure());
  EXPECT_EQ(unpolled.pollingSeconds, Figure(0));
}

TEST_F(Qmp, WithoutABalloonDevice) {
  const Guest guest = AskGuest({{"/machine/peripheral", "[]"}});
  EXPECT_EQ(guest.hasBalloon, Figure(0));
  EXPECT_EQ(guest.figures[GuestFigure::kBalloon], Figure(0));
  EXPECT_EQ(guest.figures[GuestFigure::kBalloonTarget], Figure(0));
  EXPECT_EQ(guest.figures[GuestFigure::kBalloonDriver], Figure(0));
  const Guest anonymous =
      AskGuest({{"/machine/peripheral", "[]"},
                {"/machine/peripheral-anon", R"([{"name": "device[1]", "type": "child<virtio-balloon-ccw>"}])"}});
  EXPECT_EQ(anonymous.id, "/machine/peripheral-anon/device[1]");
}

TEST_F(Qmp, AMigration) {
  const Guest guest = AskGuest({{"query-migrate", R"({"status": "active", "ram": {"transferred": 1048576,
      "remaining": 2097152, "total": 4194304, "dirty-pages-rate": 300}})"}});
  EXPECT_EQ(guest.figures[GuestFigure::kWritten], Figure(1024));
  EXPECT_EQ(guest.figures[GuestFigure::kLeftToWrite], Figure(2048));
  EXPECT_EQ(guest.figures[GuestFigure::kDirtyRate], Figure(300));
  for (const char *over : {"completed", "failed", "cancelled", "none"}) {
    const std::string migration = std::string(R"({"status": ")") + over + R"(", "ram": {"transferred": 4096}})";
    EXPECT_EQ(AskGuest({{"query-migrate", migration}}).figures[GuestFigure::kWritten], Figure(0)) << over;
  }
}

TEST_F(Qmp, EventsBetweenTheAnswers) {
  const FakeQmp server(Path(), std::string(kGreeting) + "\n", [](const std::string &line) {
    const std::string event = R"({"event": "BALLOON_CHANGE", "data": {"actual": 1}})"
                              "\n";
    return line.find("query-name") != std::string::npos ? event + event +
                                                              R"({"return": {"name": "a"}})"
                                                              "\n" +
                                                              event
                                                        : R"({"return": {}})"
                                                          "\n";
  });
  const Sample sample = TakeSample({.qmp = {Path()}}, kLong);
  ASSERT_EQ(sample.guests.size(), 1u);
  EXPECT_EQ(sample.guests[0].name, "a");
}

// A guest can report any statistics, and a compromised QEMU can give any answer.
TEST_F(Qmp, HostileAnswers) {
  const std::string deep = std::string(20000, '[') + std::string(20000, ']');
  for (const auto &[key, result] : QmpResults()) {
    if (key == "qmp_capabilities") continue;
    for (const std::string &hostile :
         {std::string("null"), std::string("[]"), std::string("{}"), std::string("-1"), std::string("\"text\""),
          std::string("18446744073709551615"), std::string("1e400"), std::string("[null, {}, {\"type\": 5}]"),
          std::string(R"({"name": 5, "actual": "x", "base-memory": -1, "stats": [], "last-update": -5})"),
          std::string(R"({"base-memory": 18446744073709551615, "plugged-memory": 18446744073709551615})"),
          std::string(R"({"actual": 99999999999999999999999})"), deep}) {
      const Sample sample = Ask({{key, hostile}});
      EXPECT_EQ(sample.guests.size() + sample.failures.size(), 1u) << key << " " << hostile.substr(0, 40);
    }
  }
}

TEST_F(Qmp, HostileStatistics) {
  for (const char *value :
       {"-1", "18446744073709551615", "1e300", "\"4096\"", "null", "[4096]", "{}", "4096.5", "true"}) {
    const Guest guest = AskGuest({{"guest-stats", Statistics("\"stat-total-memory\": " + std::string(value))}});
    EXPECT_EQ(guest.figures[GuestFigure::kTotal], Figure()) << value;
  }
}

TEST_F(Qmp, NoServer) {
  const Sample sample = TakeSample({.qmp = {Path("nowhere"), Path(std::string(200, 'x'))}}, kLong);
  EXPECT_TRUE(sample.isEmpty);
  ASSERT_EQ(sample.failures.size(), 2u);
  EXPECT_NE(sample.failures[0].find("nowhere: No such file or directory"), std::string::npos) << sample.failures[0];
  EXPECT_NE(sample.failures[1].find("the path is too long for a socket"), std::string::npos);
}

TEST_F(Qmp, ABrokenProtocol) {
  EXPECT_EQ(FailureOf("SSH-2.0\n", ""), "malformed message from the QMP server");
  EXPECT_EQ(FailureOf("{}\n", ""), "not a QMP server");
  EXPECT_EQ(FailureOf("[]\n", ""), "malformed message from the QMP server");
  const std::string greeting = std::string(kGreeting) + "\n";
  EXPECT_EQ(FailureOf(greeting, "{\"error\": {}}\n"), "the QMP server refuses commands");
  EXPECT_EQ(FailureOf(greeting, "{}\n"), "unexpected message from the QMP server");
  EXPECT_EQ(FailureOf(greeting, "{\"return\": {\n"), "malformed message from the QMP server");
}

TEST_F(Qmp, EndlessTexts) {
  EXPECT_EQ(FailureOf(std::string(100'000'000, 'x'), ""), "the QMP server sent too much data") << "no newline";
  std::string events;
  while (events.size() < 4'000'000)
    events += "{\"event\": \"x\"}\n";
  EXPECT_EQ(FailureOf(std::string(kGreeting) + "\n", events), "the QMP server sent too much data");
}

TEST_F(Qmp, ASilentServer) {
  const auto start = steady_clock::now();
  EXPECT_EQ(FailureOf("", "", kShort), "no answer");
  EXPECT_EQ(FailureOf(std::string(kGreeting) + "\n", "", kShort), "no answer");
  EXPECT_LT(steady_clock::now() - start, 2 * kShort + milliseconds(1500));
}

// The server sends single bytes at intervals.
TEST_F(Qmp, ASlowServer) {
  std::atomic<bool> isEnding = false;
  const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address = {.sun_family = AF_UNIX, .sun_path = {}};
  Path().copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
  ASSERT_EQ(listen(listener, 1), 0);
  std::thread drip([&] {
    const int client = accept(listener, nullptr, nullptr);
    while (!isEnding && send(client, "{", 1, MSG_NOSIGNAL) == 1)
      usleep(10'000);
    close(client);
  });
  const Sample sample = TakeSample({.qmp = {Path()}}, kShort);
  isEnding = true;
  drip.join();
  close(listener);
  EXPECT_EQ(sample.failures, std::vector<std::string>{Path() + ": no answer"});
}

// Ends a process at the end of the test.
class Process {
 public:
  explicit Process(pid_t pid) : pid_(pid) {}
  ~Process() {
    if (pid_ <= 0) return;
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  Process(const Process &) = delete;
  Process &operator=(const Process &) = delete;

  pid_t pid() const { return pid_; }

 private:
  pid_t pid_;
};

// Runs `act` in a child process until it is killed.
pid_t Fork(const std::function<void()> &act) {
  const pid_t pid = fork();
  if (pid != 0) return pid;
  act();
  while (true)
    pause();
}

// A child process with a PID that no process has. Only root may choose PIDs.
pid_t ForkWithPid(pid_t pid) {
  clone_args arguments = {};
  arguments.exit_signal = SIGCHLD;
  arguments.set_tid = reinterpret_cast<uint64_t>(&pid);
  arguments.set_tid_size = 1;
  const auto child = static_cast<pid_t>(syscall(SYS_clone3, &arguments, sizeof arguments));
  while (child == 0)
    pause();
  return child;
}

// A process creates the socket, and ends. Another one answers.
class QmpOfAnother : public Qmp {
 protected:
  QmpOfAnother() {
    creator_ = Fork([&] { _exit(Listen()); });
    EXPECT_EQ(waitpid(creator_, nullptr, 0), creator_);
    EXPECT_EQ(read(pids_[0], &server_, sizeof server_), static_cast<ssize_t>(sizeof server_));
  }
  ~QmpOfAnother() override {
    if (server_ > 0) kill(server_, SIGKILL);  // a child of init
    close(pids_[0]);
    close(pids_[1]);
  }

  pid_t creator_ = -1;
  pid_t server_ = -1;

 private:
  int Listen() {
    const int listener = testing_support::ListenAt(Path());
    const pid_t server = Fork([&] {
      while (true) {
        const int client = accept(listener, nullptr, nullptr);
        if (testing_support::SendAll(client, std::string(kGreeting) + "\n"))
          testing_support::AnswerLines(client, testing_support::AnswerWith(QmpResults()));
        close(client);
      }
    });
    return write(pids_[1], &server, sizeof server) == static_cast<ssize_t>(sizeof server) ? 0 : 1;
  }

  // Made before the creator is forked.
  struct Pipe {
    Pipe() { EXPECT_EQ(pipe(ends), 0); }
    int operator[](size_t i) const { return ends[i]; }
    int ends[2];
  } pids_;
};

TEST_F(QmpOfAnother, TheGuestIsTheProcessThatAnswers) {
  const Sample sample = TakeSample({.qmp = {Path()}}, kLong);
  ASSERT_EQ(sample.guests.size(), 1u);
  EXPECT_EQ(sample.guests[0].figures.pid, server_);
  platkit::HostFiles files("/", platkit::Reach::kHost);
  EXPECT_EQ(Figure(sample.guests[0].figures.startTicks), ReadStartTicks(files, server_));
}

TEST_F(QmpOfAnother, AProcessThatReusesThePidGetsNoFigures) {
  const Process reused(ForkWithPid(creator_));
  if (reused.pid() < 0) GTEST_SKIP() << "a process cannot choose its PID here: " << strerror(errno);
  ASSERT_EQ(reused.pid(), creator_);
  const Sample sample = TakeSample({.qmp = {Path()}}, kLong);
  ASSERT_EQ(sample.guests.size(), 1u);
  EXPECT_EQ(sample.guests[0].figures.pid, server_);
}

// One process greets, and another one answers.
TEST_F(Qmp, TwoProcessesAtOneSocket) {
  const int listener = testing_support::ListenAt(Path());
  const Process server(Fork([&] {
    const int client = accept(listener, nullptr, nullptr);
    testing_support::SendAll(client, std::string(kGreeting) + "\n");
    if (fork() == 0) {
      testing_support::AnswerLines(client, testing_support::AnswerWith(QmpResults()));
      _exit(0);
    }
  }));
  const Sample sample = TakeSample({.qmp = {Path()}}, kLong);
  close(listener);
  EXPECT_EQ(sample.guests.size(), 0u);
  EXPECT_EQ(sample.failures, std::vector<std::string>{Path() + ": more than one process answers at the QMP socket"});
}

// Any user can offer a socket. The figures are those of the user's own process.
TEST_F(Qmp, ASocketOfAnotherUser) {
  if (geteuid() != 0) GTEST_SKIP() << "requires root";
  const int listener = testing_support::ListenAt(Path());
  ASSERT_EQ(chown(Path().c_str(), 65534, 65534), 0);
  const Process server(Fork([&] {
    if (setgid(65534) != 0 || setuid(65534) != 0) _exit(1);
    const int client = accept(listener, nullptr, nullptr);
    testing_support::SendAll(client, std::string(kGreeting) + "\n");
    testing_support::AnswerLines(client, testing_support::AnswerWith(QmpResults()));
  }));
  const Sample sample = TakeSample({.qmp = {Path()}}, kLong);
  close(listener);
  ASSERT_EQ(sample.guests.size(), 1u);
  EXPECT_EQ(sample.guests[0].figures.pid, server.pid());
}

// The server sends descriptors along with its answers.
TEST_F(Qmp, SentDescriptorsAreNotTaken) {
  const int listener = testing_support::ListenAt(Path());
  const Process server(Fork([&] {
    const int client = accept(listener, nullptr, nullptr);
    const std::string greeting = std::string(kGreeting) + "\n";
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    iovec part = {.iov_base = const_cast<char *>(greeting.data()), .iov_len = greeting.size()};
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr *header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(int));
    memcpy(CMSG_DATA(header), &listener, sizeof listener);
    sendmsg(client, &message, MSG_NOSIGNAL);
    testing_support::AnswerLines(client, testing_support::AnswerWith(QmpResults()));
  }));
  close(listener);
  const auto openFiles = [] {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), std::filesystem::directory_iterator());
  };
  const auto before = openFiles();
  QmpClient qemu(Path());
  EXPECT_EQ(openFiles(), before + 1) << "the connection";
  EXPECT_EQ(qemu.ServerPid(), server.pid());
}

// A guest that does not answer does not affect the figures of other guests.
TEST_F(Qmp, AnotherGuestAnswers) {
  const FakeQmp silent(Path("silent"), "", [](const std::string &) { return ""; });
  const FakeQmp server(Path("web"), QmpResults());
  const Sample sample = TakeSample({.qmp = {Path("silent"), Path("web")}}, kShort);
  EXPECT_FALSE(sample.isEmpty);
  ASSERT_EQ(sample.guests.size(), 1u);
  EXPECT_EQ(sample.guests[0].monitor, Path("web"));
  EXPECT_EQ(sample.failures, std::vector<std::string>{Path("silent") + ": no answer"});
}

TEST_F(Qmp, SocketsOfLibvirtAreNotAsked) {
  EXPECT_TRUE(IsSocketOfLibvirt("/var/lib/libvirt/qemu/domain-1-web/monitor.sock"));
  EXPECT_TRUE(IsSocketOfLibvirt("/run/libvirt/qemu/x"));
  EXPECT_FALSE(IsSocketOfLibvirt("/run/web.qmp"));
  const FakeQmp server(Path("monitor.sock"), QmpResults());
  std::filesystem::create_symlink(Path("monitor.sock"), Path("link"));
  const Sample sample = TakeSample({.qmp = {Path("link")}}, kLong);
  EXPECT_TRUE(sample.isEmpty);
  EXPECT_EQ(sample.failures,
            std::vector<std::string>{Path("link") + ": this socket belongs to libvirt and is not used"});
}

}  // namespace
}  // namespace guests
