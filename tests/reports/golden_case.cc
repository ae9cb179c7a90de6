#include "tests/reports/golden_case.h"

#include <algorithm>
#include <stdexcept>

#include "tests/support/scratch.h"

namespace reports {
namespace {

constexpr std::string_view kOutputMark = "--- stdout\n";
constexpr std::string_view kErrorsMark = "--- stderr\n";

// Removes the text up to and including a mark from `rest`, and returns the text.
std::string TakeUntil(std::string_view mark, std::string_view &rest) {
  const size_t place = rest.find(mark);
  if (place == rest.npos) throw std::runtime_error("no line '" + std::string(mark.substr(0, mark.size() - 1)) + "'");
  std::string taken(rest.substr(0, place));
  rest.remove_prefix(place + mark.size());
  return taken;
}

// Removes a line "<name>: <value>" from `rest`, and returns the value.
std::string TakeSetting(std::string_view name, std::string_view &rest) {
  if (!TakeUntil(std::string(name) + ":", rest).empty()) throw std::runtime_error("no line " + std::string(name));
  const std::string value = TakeUntil("\n", rest);
  return value.substr(std::min(value.find_first_not_of(' '), value.size()));
}

}  // namespace

GoldenCase ReadCase(const std::filesystem::path &file) {
  const std::string text = testing_support::ReadFile(file);
  std::string_view rest = text;
  GoldenCase golden;
  golden.host = TakeSetting("host", rest);
  golden.arguments = TakeSetting("arguments", rest);
  golden.exitStatus = std::stoi(TakeSetting("exit status", rest));
  if (!TakeUntil(kOutputMark, rest).empty()) throw std::runtime_error("more settings than there are");
  golden.output = TakeUntil(kErrorsMark, rest);
  golden.errors = rest;
  return golden;
}

std::string Written(const GoldenCase &golden) {
  return "host: " + golden.host + "\narguments: " + golden.arguments +
         "\nexit status: " + std::to_string(golden.exitStatus) + '\n' + std::string(kOutputMark) + golden.output +
         std::string(kErrorsMark) + golden.errors;
}

std::vector<std::filesystem::path> FindCases(const std::filesystem::path &folder) {
  std::vector<std::filesystem::path> files;
  for (const auto &entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() == ".case") files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace reports
