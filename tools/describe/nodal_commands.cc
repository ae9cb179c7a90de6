// Prints the commands and options of nodal from their declarations.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include "tools/describe/roff.h"
#include "tools/describe/writers.h"
#include "tools/nodal/commands/command.h"

namespace describe::manual {
namespace {

const nodal::Command &FindCommand(const std::string &name) {
  for (const nodal::Command &command : nodal::Commands()) {
    if (command.name == name) return command;
  }
  throw std::runtime_error("unknown command: " + name);
}

// The options of a command, except those that its help omits.
class Declaration {
 public:
  explicit Declaration(const nodal::Command &command) {
    nodal::OptionSet options(app_);
    run_ = command.declare(options, source_);
  }

  std::vector<const CLI::Option *> Options() const {
    std::vector<const CLI::Option *> options;
    for (const CLI::Option *option : app_.get_options()) {
      const bool isHidden = option->get_group().empty();
      if (option->nonpositional() && !isHidden && option != app_.get_help_ptr()) options.push_back(option);
    }
    return options;
  }

  const CLI::Option &Find(const std::string &name) const {
    for (const CLI::Option *option : Options()) {
      if (option->check_name(name)) return *option;
    }
    throw std::runtime_error("unknown option: " + name);
  }

 private:
  CLI::App app_;
  nodal::SourceOptions source_;
  nodal::Run run_;  // owns the variables that the options set
};

std::string LongName(const CLI::Option &option) { return "--" + option.get_lnames().at(0); }

}  // namespace

void PrintCommand(std::ostream &out, const std::string &name) {
  const nodal::Command &command = FindCommand(name);
  out << ".SS " << Literal(command.name) << '\n' << Prose(command.summary) << ".\n";
}

void PrintOption(std::ostream &out, const std::string &command, const std::string &name, const std::string &argument) {
  const Declaration declaration(FindCommand(command));
  const CLI::Option &option = declaration.Find(name);
  if ((option.get_expected_max() > 0) == argument.empty())
    throw std::runtime_error(command + ' ' + name + (argument.empty() ? " has an argument" : " has no argument"));
  out << ".TP\n";
  for (const std::string &letter : option.get_snames())
    out << Bold('-' + letter) << ", ";
  out << Bold(LongName(option)) << (argument.empty() ? "" : ' ' + Italic(argument)) << '\n';
  out << Prose(option.get_description());
  if (!option.get_default_str().empty()) out << " (default: " << Bold(option.get_default_str()) << ')';
  out << ".\n";
  for (const CLI::Option *needed : option.get_needs())
    out << "Requires " << Bold(LongName(*needed)) << ".\n";
}

std::vector<std::string> CommandPlaceholders() {
  std::vector<std::string> placeholders;
  for (const nodal::Command &command : nodal::Commands()) {
    placeholders.push_back("command " + std::string(command.name));
    const Declaration declaration(command);
    for (const CLI::Option *option : declaration.Options())
      placeholders.push_back("option " + std::string(command.name) + ' ' + LongName(*option));
  }
  return placeholders;
}

}  // namespace describe::manual
