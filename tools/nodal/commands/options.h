// The options of a command line. Each option is declared once; parsing and --help follow from the declaration.
//
// These classes are thin wrappers around CLI11. Each file that includes CLI11 takes ten seconds longer to compile, so
// only command_line.cc includes it.
#ifndef NODAL_COMMANDS_OPTIONS_H
#define NODAL_COMMANDS_OPTIONS_H

#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace nodal {

// One option or operand. Each function returns the option itself, so that calls can be chained.
class Option {
 public:
  explicit Option(CLI::Option *option) : option_(option) {}

  Option Required();
  Option NotEmpty();
  // `problem` returns what is wrong with a value, or nothing.
  Option Check(std::string (*problem)(const std::string &value));
  Option ShowDefault();
  Option Excludes(const Option &other);
  Option Needs(const Option &other);

 private:
  CLI::Option *option_;
};

// `name` is the name of an operand, such as "path", or the names of an option and its value, such as "-o,--output
// FILE". A variable whose option is not on the command line keeps its value. The variables must live until the command
// line is parsed.
class OptionSet {
 public:
  explicit OptionSet(CLI::App &app) : app_(app) {}

  Option Add(const std::string &name, std::string &value, const std::string &help);
  Option AddFlag(const std::string &name, bool &value, const std::string &help);
  // May be repeated, each time with one value.
  Option AddRepeatable(const std::string &name, std::vector<std::string> &values, const std::string &help);

  // Declares an option of earlier versions that takes a value. Using it is an error with this message, and --help omits
  // it.
  void Refuse(const std::string &name, const std::string &message);
  // Stores all arguments of the command, for another program to parse. The command itself handles only --help as its
  // first argument.
  void AddArgumentsOfOther(std::vector<std::string> &values);

  // The text below the options in --help.
  void SetFooter(const std::string &text);

 private:
  CLI::App &app_;
};

}  // namespace nodal

#endif  // NODAL_COMMANDS_OPTIONS_H
