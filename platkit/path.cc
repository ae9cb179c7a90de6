#include "platkit/path.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <optional>

namespace platkit {
namespace {

constexpr char kHexDigits[] = "0123456789ABCDEF";

bool IsEncoded(unsigned char c) { return c == '/' || c == '%' || c < 0x20 || c == 0x7f; }

std::optional<int64_t> ParseInteger(std::string_view text) {
  int64_t value = 0;
  const char *end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end) return std::nullopt;
  // Reject other forms of the same integer, such as 007.
  char canonical[24];
  const auto written = std::to_chars(canonical, canonical + sizeof canonical, value);
  if (std::string_view(canonical, static_cast<size_t>(written.ptr - canonical)) != text) return std::nullopt;
  return value;
}

std::optional<std::string> DecodeText(std::string_view text) {
  std::string decoded;
  for (size_t i = 0; i < text.size(); ++i) {
    auto c = static_cast<unsigned char>(text[i]);
    if (c == '%') {
      if (text.size() - i < 3) return std::nullopt;
      const char *high = std::strchr(kHexDigits, text[i + 1]);
      const char *low = std::strchr(kHexDigits, text[i + 2]);
      if (text[i + 1] == '\0' || text[i + 2] == '\0' || high == nullptr || low == nullptr) return std::nullopt;
      c = static_cast<unsigned char>((high - kHexDigits) << 4 | (low - kHexDigits));
      // A text must not contain a NUL or unnecessary encodings.
      if (c == '\0' || !IsEncoded(c)) return std::nullopt;
      i += 2;
    } else if (IsEncoded(c)) {
      return std::nullopt;
    }
    decoded += static_cast<char>(c);
  }
  return decoded;
}

std::optional<PathTarget::Argument> ParseArgument(std::string_view text, ParamKind kind) {
  PathTarget::Argument argument{.kind = kind, .integer = 0, .text = {}};
  if (kind == ParamKind::kInt) {
    const std::optional<int64_t> value = ParseInteger(text);
    if (!value) return std::nullopt;
    argument.integer = *value;
  } else {
    std::optional<std::string> decoded = DecodeText(text);
    if (!decoded) return std::nullopt;
    argument.text = *std::move(decoded);
  }
  return argument;
}

// Matches a path against one node. The target's node stays null if they do not match.
PathTarget MatchNode(const Node &node, std::string_view path) {
  PathTarget target;
  const auto parseArgument = [&](const Instance &instance) {
    const size_t end = std::min(path.find('/'), path.size());
    auto argument = ParseArgument(path.substr(0, end), instance.kind);
    if (!argument) return false;
    target.arguments.push_back(*std::move(argument));
    path.remove_prefix(end);
    return true;
  };

  for (size_t i = 0;; ++i) {
    if (!path.starts_with(node.pieces[i])) return target;
    path.remove_prefix(node.pieces[i].size());
    if (i == node.pathArguments) break;
    if (!parseArgument(node.arguments[i])) return target;
  }
  target.asRecord = !node.isList;
  if (node.isList && node.isRecord() && path.starts_with('/')) {
    path.remove_prefix(1);
    if (!parseArgument(node.entry)) return target;
    target.asRecord = true;
  }
  if (path.empty()) target.node = &node;
  return target;
}

}  // namespace

PathWriter &PathWriter::Literal(std::string_view text) {
  if (kMaxBytes - size_ < text.size()) {
    ok_ = false;
  } else {
    std::memcpy(bytes_ + size_, text.data(), text.size());
    size_ += text.size();
  }
  return *this;
}

PathWriter &PathWriter::Integer(int64_t value) {
  const auto written = std::to_chars(bytes_ + size_, bytes_ + kMaxBytes, value);
  if (written.ec != std::errc()) {
    ok_ = false;
  } else {
    size_ = static_cast<size_t>(written.ptr - bytes_);
  }
  return *this;
}

PathWriter &PathWriter::Text(std::string_view text) {
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (IsEncoded(byte)) {
      const char encoded[] = {'%', kHexDigits[byte >> 4], kHexDigits[byte & 15]};
      Literal({encoded, sizeof encoded});
    } else {
      Literal({&c, 1});
    }
  }
  return *this;
}

void WritePath(const Node &node, Arguments arguments, PathWriter &path) {
  for (size_t i = 0; i < arguments.size(); ++i) {
    if (i < node.pathArguments) {
      path.Literal(node.pieces[i]);
    } else {
      path.Literal(node.pieces[i]).Literal("/");
    }
    if (arguments[i].kind == ParamKind::kInt) {
      path.Integer(arguments[i].integer);
    } else {
      path.Text(arguments[i].text());
    }
  }
  if (arguments.size() <= node.pathArguments) path.Literal(node.pieces[arguments.size()]);
}

PathTarget ParsePath(std::string_view path) {
  for (const Node &node : Nodes()) {
    PathTarget target = MatchNode(node, path);
    if (target.node != nullptr) return target;
  }
  return {};
}

}  // namespace platkit
