// The options of a command line, declared once: parsing and --help follow from the declaration.
//
// Thin wrappers of CLI11, which adds ten seconds to the compilation of each file that includes it. Only command_line.cc
// does.
#ifndef NODAL_COMMANDS_OPTIONS_H
#define NODAL_COMMANDS_OPTIONS_H

#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace nodal {

// One option or operand. Each function returns the option itself, for the next one.
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

// `name` is the name of an operand, such as "path", or of an option and its value, such as "-o,--output FILE". Without
// a value on the command line, the variables are unchanged. They must live until the command line is parsed.
class OptionSet {
 public:
  explicit OptionSet(CLI::App &app) : app_(app) {}

  Option Add(const std::string &name, std::string &value, const std::string &help);
  Option AddFlag(const std::string &name, bool &value, const std::string &help);
  // May be repeated, each time with one value.
  Option AddRepeatable(const std::string &name, std::vector<std::string> &values, const std::string &help);

  // An option of earlier versions, with a value. Its use is an error with this message, and --help omits it.
  void Refuse(const std::string &name, const std::string &message);
  // Stores all arguments of the command, as another program parses them. Only a first --help is the command's own.
  void AddArgumentsOfOther(std::vector<std::string> &values);

  // The text below the options in --help.
  void SetFooter(const std::string &text);

 private:
  CLI::App &app_;
};

}  // namespace nodal

#endif  // NODAL_COMMANDS_OPTIONS_H
