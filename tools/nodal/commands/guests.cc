// nodal guests: runs nodal-guests, a separate program, because only that program depends on libvirt.
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <memory>

#include "tools/nodal/commands/command.h"
#include "tools/nodal/support/output.h"

namespace nodal {
namespace {

constexpr char kProgram[] = "nodal-guests";

// Returns the path of nodal-guests, in the folder of nodal itself.
std::string PathOfProgram() {
  char self[PATH_MAX];
  const ssize_t size = readlink("/proc/self/exe", self, sizeof self);
  if (size < 0) throw Failure("/proc/self/exe", std::strerror(errno));
  const std::string_view path(self, static_cast<size_t>(size));
  return std::string(path.substr(0, path.rfind('/') + 1)) + kProgram;
}

// Returns only if the program cannot be run; errno says why.
void Execute(const std::string &path, const std::vector<std::string> &arguments) {
  std::vector<const char *> words = {kProgram};
  for (const std::string &argument : arguments)
    words.push_back(argument.c_str());
  words.push_back(nullptr);
  execv(path.c_str(), const_cast<char *const *>(words.data()));
}

}  // namespace

Run DeclareGuests(OptionSet &options, const SourceOptions &) {
  const auto arguments = std::make_shared<std::vector<std::string>>();
  options.AddArgumentsOfOther(*arguments);
  options.SetFooter("Takes the options of nodal-guests, which is a separate package. See nodal-guests(1).");
  return [arguments]() -> ExitStatus {
    const std::string path = PathOfProgram();
    Execute(path, *arguments);
    if (errno == ENOENT) throw Failure(path, "not installed; install the Debian package nodal-guests");
    throw Failure(path, std::strerror(errno));
  };
}

}  // namespace nodal
