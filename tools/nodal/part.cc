#include "tools/nodal/part.h"

#include <algorithm>

#include "tools/nodal/output.h"

namespace nodal {
namespace {

constexpr std::string_view kDevices = "/hardware/pci";
constexpr std::string_view kRegisters = "/pciConfigReg/";

// Whether something of that shape can be at or below the path.
bool CanMeet(std::string_view path, std::string_view shape) {
  const std::vector<std::string_view> parts = Split(path), shapeParts = Split(shape);
  if (parts.size() > shapeParts.size()) return false;
  return std::ranges::equal(parts, std::span(shapeParts).first(parts.size()),
                            [](std::string_view part, std::string_view of) { return IsArgument(of) || part == of; });
}

bool IsWanted(std::string_view path, std::string_view of) {
  return !IsAtOrBelow(of, kDevices) || IsAtOrBelow(path, kDevices);
}

}  // namespace

bool Part::MayContain(const Shape &shape) const {
  if (shape.path.find(kRegisters) != std::string::npos) return false;
  const auto leadsThere = [&](const std::string &path) {
    return CanMeet(path, shape.path) && IsWanted(path, shape.path);
  };
  return paths_.empty() ? leadsThere("") : std::ranges::any_of(paths_, leadsThere);
}

bool Part::Contains(std::string_view path) const {
  const auto leadsThere = [&](const std::string &top) { return IsAtOrBelow(path, top) && IsWanted(top, path); };
  return paths_.empty() ? leadsThere("") : std::ranges::any_of(paths_, leadsThere);
}

std::vector<std::string> PathsOf(const std::vector<std::string> &named) {
  std::vector<std::string> paths;
  for (const std::string &path : named) {
    if (!path.starts_with('/')) throw Failure(path, "a path begins with '/'");
    paths.push_back(path.ends_with('/') ? path.substr(0, path.size() - 1) : path);
  }
  return paths;
}

bool IsAtOrBelow(std::string_view path, std::string_view top) {
  return path.starts_with(top) && (path.size() == top.size() || path[top.size()] == '/');
}

}  // namespace nodal
