#include "tools/nodal/commands/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <sstream>

#include "platkit/catalogue.h"
#include "platkit/version.h"
#include "tools/nodal/history/moment_file.h"
#include "tools/nodal/support/output.h"

// This is the only file that includes CLI11, so it also implements options.h.
namespace nodal {
namespace {

std::string NameOnly(const std::string &name) { return name.substr(0, name.find(' ')); }

std::string ValueName(const std::string &name) {
  const size_t space = name.find(' ');
  return space == std::string::npos ? "" : name.substr(space + 1);
}

}  // namespace

Option Option::Required() {
  option_->required();
  return *this;
}

Option Option::NotEmpty() {
  option_->check([](const std::string &value) { return value.empty() ? "the value is empty" : ""; });
  return *this;
}

Option Option::Check(std::string (*problem)(const std::string &value)) {
  option_->check(problem);
  return *this;
}

Option Option::ShowDefault() {
  option_->capture_default_str();
  return *this;
}

Option Option::Excludes(const Option &other) {
  option_->excludes(other.option_);
  return *this;
}

Option Option::Needs(const Option &other) {
  option_->needs(other.option_);
  return *this;
}

Option OptionSet::Add(const std::string &name, std::string &value, const std::string &help) {
  return Option(app_.add_option(NameOnly(name), value, help)->type_name(ValueName(name)));
}

Option OptionSet::AddFlag(const std::string &name, bool &value, const std::string &help) {
  return Option(app_.add_flag(name, value, help));
}

Option OptionSet::AddRepeatable(const std::string &name, std::vector<std::string> &values, const std::string &help) {
  // An option takes one value per occurrence, so that the operands after it remain operands.
  const bool isOption = name.starts_with('-');
  return Option(app_.add_option(NameOnly(name), values, help)->type_name(ValueName(name))->allow_extra_args(!isOption));
}

void OptionSet::Refuse(const std::string &name, const std::string &message) {
  const auto refuse = [=](const CLI::results_t &) -> bool { throw CLI::ValidationError(name, message); };
  app_.add_option(name, refuse)->group("");
}

void OptionSet::AddArgumentsOfOther(std::vector<std::string> &values) {
  // Among these arguments, options of nodal itself are not recognized.
  app_.prefix_command()->fallthrough(false);
  app_.parse_complete_callback([app = &app_, &values] { values = app->remaining(); });
}

void OptionSet::SetFooter(const std::string &text) { app_.footer(text); }

namespace {

// Sets the words for commands and operands in --help.
void SetWording(CLI::App &app) {
  app.get_formatter()->label("SUBCOMMAND", "COMMAND");
  app.get_formatter()->label("Positionals", "Operands");
}

void DeclareSource(CLI::App &app, SourceOptions &source) {
  OptionSet options(app);
  const Option cache = options
                           .Add("--cache SNAPSHOT", source.cache,
                                "Read a snapshot, or a moment of a history (FOLDER@TIME), instead of the running host "
                                "(ls, get, metrics, capture, page, top)")
                           .NotEmpty()
                           .Check(ProblemOfTime);
  options
      .Add("--root FOLDER", source.root,
           "Read a folder with a saved /proc and /sys instead of the running host (ls, get, metrics, capture, page, "
           "top)")
      .NotEmpty()
      .Excludes(cache);
}

struct DeclaredCommand {
  const CLI::App *app;
  Invocation invocation;
};

std::vector<DeclaredCommand> DeclareCommands(CLI::App &app, const std::shared_ptr<SourceOptions> &source) {
  std::vector<DeclaredCommand> declared;
  for (const Command &command : Commands()) {
    CLI::App *own = app.add_subcommand(command.name, command.summary)->group("Commands");
    OptionSet options(*own);
    // The lambda owns `source`, to which the command refers.
    Run run = [source, run = command.declare(options, *source)] { return run(); };
    declared.push_back({own, {std::move(run), command.failureStatus}});
  }
  return declared;
}

Run PrintText(const CLI::App &app, const CLI::Success &request) {
  std::ostringstream text;
  app.exit(request, text, text);
  return [text = text.str()] {
    Print(text);
    return kSuccess;
  };
}

std::string MissingCommand(const CLI::App &app) {
  const std::vector<std::string> unexpected = app.remaining();
  if (unexpected.empty()) return "no command given";
  return (unexpected[0].starts_with('-') ? "unknown option '" : "unknown command '") + unexpected[0] + "'";
}

std::string SeeHelp(const CLI::App &app) {
  const auto parsed = app.get_subcommands();
  return " (see nodal " + (parsed.empty() ? "" : parsed[0]->get_name() + " ") + "--help)";
}

}  // namespace

Invocation ParseCommandLine(int argc, const char *const *argv) {
  CLI::App app("Reads the system-information tree of a hypervisor host, and saves, shows and compares snapshots of it.",
               "nodal");
  SetWording(app);
  app.require_subcommand(1);
  app.fallthrough();
  app.set_version_flag("--version", "nodal " PLATKIT_VERSION ", definitions " + platkit::OwnDefinitions().build);
  const auto source = std::make_shared<SourceOptions>();
  DeclareSource(app, *source);
  const std::vector<DeclaredCommand> commands = DeclareCommands(app, source);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success &request) {
    return {PrintText(app, request)};
  } catch (const CLI::ParseError &error) {
    throw UsageError((app.get_subcommands().empty() ? MissingCommand(app) : error.what()) + SeeHelp(app));
  }
  return std::ranges::find_if(commands, [](const auto &command) { return command.app->parsed(); })->invocation;
}

}  // namespace nodal
