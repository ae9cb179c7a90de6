#include "tests/support/process.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <system_error>

#include "tests/support/scratch.h"

namespace testing_support {
namespace {

constexpr std::chrono::minutes kMostTime(1);

[[noreturn]] void Fail(const char *what) { throw std::system_error(errno, std::generic_category(), what); }

class Descriptor {
 public:
  explicit Descriptor(int value = -1) : value_(value) {}
  Descriptor(Descriptor &&other) noexcept : value_(std::exchange(other.value_, -1)) {}
  Descriptor &operator=(Descriptor &&other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  ~Descriptor() { Close(); }

  void Close() {
    if (value_ >= 0) close(std::exchange(value_, -1));
  }
  int get() const { return value_; }

 private:
  int value_;
};

// A channel: bytes written to `in` are read from `out`.
struct Channel {
  Descriptor out;
  Descriptor in;
};

Channel MakePipe() {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) Fail("pipe2");
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

Channel MakeTerminal() {
  int master, slave;
  termios raw{};
  cfmakeraw(&raw);
  if (openpty(&master, &slave, nullptr, &raw, nullptr) != 0) Fail("openpty");
  fcntl(master, F_SETFD, FD_CLOEXEC);
  fcntl(slave, F_SETFD, FD_CLOEXEC);
  return {Descriptor(master), Descriptor(slave)};
}

Channel MakeOutput(OutputTo output) {
  switch (output) {
    case OutputTo::kPipe: return MakePipe();
    case OutputTo::kTerminal: return MakeTerminal();
    case OutputTo::kFullDevice: return {Descriptor(), Descriptor(open("/dev/full", O_WRONLY | O_CLOEXEC))};
    case OutputTo::kClosedPipe: {
      Channel channel = MakePipe();
      channel.out.Close();
      return channel;
    }
  }
  std::abort();
}

std::vector<char *> Pointers(const std::vector<std::string> &texts) {
  std::vector<char *> pointers;
  pointers.reserve(texts.size() + 1);
  for (const std::string &text : texts)
    pointers.push_back(const_cast<char *>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

// The environment of the test plus the variables of the command.
std::vector<std::string> EnvironmentOf(const Command &command) {
  std::vector<std::string> environment;
  for (char **variable = environ; *variable != nullptr; ++variable) {
    const std::string_view text = *variable;
    const auto isAdded = [&](const auto &added) { return text.starts_with(added.first + "="); };
    if (std::ranges::none_of(command.environment, isAdded)) environment.emplace_back(text);
  }
  for (const auto &[name, value] : command.environment)
    environment.emplace_back(name).append("=").append(value);
  return environment;
}

// posix_spawn does not copy the test's memory, which is large with sanitizers.
pid_t Spawn(const Command &command, int input, int output, int errors) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);
  if (!command.directory.empty()) posix_spawn_file_actions_addchdir_np(&actions, command.directory.c_str());
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t defaults;
  sigemptyset(&defaults);
  sigaddset(&defaults, SIGPIPE);
  posix_spawnattr_setsigdefault(&attributes, &defaults);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);

  std::vector<std::string> words = {command.program};
  words.insert(words.end(), command.arguments.begin(), command.arguments.end());
  const std::vector<std::string> environment = EnvironmentOf(command);
  pid_t child = 0;
  errno = posix_spawn(&child, command.program.c_str(), &actions, &attributes, Pointers(words).data(),
                      Pointers(environment).data());
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  if (errno != 0) Fail(command.program.c_str());
  return child;
}

// Reads the available bytes of a channel. Disables the channel if its other end is closed, which a terminal reports as
// an error.
void ReadSome(pollfd &from, std::string &text) {
  std::array<char, 65536> buffer;
  const ssize_t count = read(from.fd, buffer.data(), buffer.size());
  if (count > 0) {
    text.append(buffer.data(), static_cast<size_t>(count));
  } else if (count == 0 || errno != EINTR) {
    from.fd = -1;  // poll ignores it from now on
  }
}

void ReadBoth(pid_t child, int output, int errors, Outcome &outcome) {
  const auto deadline = std::chrono::steady_clock::now() + kMostTime;
  std::array<pollfd, 2> channels = {pollfd{output, POLLIN, 0}, pollfd{errors, POLLIN, 0}};
  while (channels[0].fd >= 0 || channels[1].fd >= 0) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) kill(child, SIGALRM);
    const int timeout = static_cast<int>(std::max<int64_t>(left.count(), 100));
    if (poll(channels.data(), channels.size(), timeout) < 0 && errno != EINTR) Fail("poll");
    if (channels[0].fd >= 0 && channels[0].revents != 0) ReadSome(channels[0], outcome.output);
    if (channels[1].fd >= 0 && channels[1].revents != 0) ReadSome(channels[1], outcome.errors);
  }
}

// Links to libraries whose paths LD_PRELOAD cannot contain: the loader splits it at blanks and colons.
class PreloadLinks {
 public:
  const std::string &LinkTo(const std::string &library) {
    std::string &link = links_[library];
    if (link.empty()) {
      const std::filesystem::path folder = folder_.path() / std::to_string(links_.size());
      std::filesystem::create_directory(folder);
      link = folder / std::filesystem::path(library).filename();
      if (IsSplit(link)) throw std::runtime_error(link + ": LD_PRELOAD cannot have a blank or colon; change TMPDIR");
      std::filesystem::create_symlink(library, link);
    }
    return link;
  }

  static bool IsSplit(const std::string &path) { return path.find_first_of(" :") != std::string::npos; }

 private:
  ScratchDirectory folder_;
  std::map<std::string, std::string> links_;  // by library
};

std::string PathForPreload(const std::string &library) {
  if (!PreloadLinks::IsSplit(library)) return library;
  static PreloadLinks links;  // until the test program ends
  return links.LinkTo(library);
}

}  // namespace

bool HasTerminals() {
  const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (master >= 0) close(master);
  return master >= 0;
}

Outcome Run(const Command &command) {
  Channel input = MakePipe();
  Channel output = MakeOutput(command.output);
  Channel errors = MakePipe();

  const pid_t child =
      Spawn(command, input.out.get(), output.in.get(), command.errorsToOutput ? output.in.get() : errors.in.get());

  // The child has its own copies; ours would keep the channels open after it exits.
  input.out.Close();
  output.in.Close();
  errors.in.Close();
  // A child that exits without reading its input must not end the test.
  const auto previous = signal(SIGPIPE, SIG_IGN);
  const bool written = write(input.in.get(), command.input.data(), command.input.size()) >= 0 || errno == EPIPE;
  signal(SIGPIPE, previous);
  if (!written) Fail("write");
  input.in.Close();

  Outcome outcome;
  ReadBoth(child, output.out.get(), errors.out.get(), outcome);
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) Fail("waitpid");
  }
  if (WIFEXITED(status)) outcome.exitStatus = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) outcome.signal = WTERMSIG(status);
  return outcome;
}

void Preload(Command &command, const std::string &library) {
  command.environment.emplace_back("LD_PRELOAD", PathForPreload(library));
  // Without these options, the sanitizers require that they are loaded first and that each object is defined only once.
  // They also start a symbolizer, which would load the library, too, and fail.
  const char *given = std::getenv("ASAN_OPTIONS");
  command.environment.emplace_back("ASAN_OPTIONS",
                                   (given == nullptr ? "" : std::string(given) + ":") +
                                       "verify_asan_link_order=0:detect_odr_violation=0:symbolize=0:exitcode=99");
}

std::ostream &operator<<(std::ostream &stream, const Outcome &outcome) {
  stream << "exit status " << outcome.exitStatus;
  if (outcome.signal != 0) stream << ", ended by signal " << outcome.signal;
  return stream << "\n--- stdout\n" << outcome.output << "--- stderr\n" << outcome.errors;
}

}  // namespace testing_support
