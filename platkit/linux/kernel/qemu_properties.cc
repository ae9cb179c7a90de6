#include "platkit/linux/kernel/qemu_properties.h"

#include <algorithm>

#include "platkit/linux/files/text_scanner.h"

namespace platkit {
namespace {

// Removes the first property. A comma ends the property; two commas mean a literal comma.
std::string TakeProperty(std::string_view &text) {
  std::string property;
  while (!text.empty()) {
    const char c = text.front();
    text.remove_prefix(1);
    if (c == ',') {
      if (!text.starts_with(',')) break;
      text.remove_prefix(1);
    }
    property += c;
  }
  return property;
}

void SkipJsonBlanks(TextScanner &json) {
  do {
    json.SkipBlanks();
  } while (json.Take("\n") || json.Take("\r"));
}

bool TakeJson(TextScanner &json, std::string_view expected) {
  SkipJsonBlanks(json);
  return json.Take(expected);
}

// Takes the rest of a string after its opening quote. Escaped characters other than quotes, slashes and backslashes
// become question marks: no text that the parser looks for contains such characters.
bool TakeRestOfString(TextScanner &json, std::string &text) {
  constexpr size_t kCodeLength = 4;  // the digits after \u
  std::string_view rest = json.rest();
  for (size_t i = 0; i < rest.size(); ++i) {
    if (rest[i] == '"') return json.Take(rest.substr(0, i + 1));
    if (rest[i] != '\\') {
      text += rest[i];
    } else if (++i < rest.size()) {
      text += rest[i] == '"' || rest[i] == '/' || rest[i] == '\\' ? rest[i] : '?';
      if (rest[i] == 'u') i += kCodeLength;
    }
  }
  return false;
}

// The characters of a number, true, false or null.
constexpr std::string_view kWordCharacters = "+-.0123456789abcdefghijklmnopqrstuvwxyzE";

// Skips an array or an object. Counts brackets instead of recursing, because the text may nest thousands of them.
bool SkipBrackets(TextScanner &json) {
  size_t depth = 0;
  do {
    if (json.Take("\"")) {
      std::string ignored;
      if (!TakeRestOfString(json, ignored)) return false;
      continue;
    }
    const std::string_view rest = json.rest();
    if (rest.empty()) return false;
    if (rest[0] == '[' || rest[0] == '{') ++depth;
    if (rest[0] == ']' || rest[0] == '}') --depth;
    json.Take(rest.substr(0, 1));
  } while (depth > 0);
  return true;
}

bool TakeJsonValue(TextScanner &json, std::string &value) {
  if (TakeJson(json, "\"")) return TakeRestOfString(json, value);
  if (json.rest().starts_with('[') || json.rest().starts_with('{')) return SkipBrackets(json);
  const std::string_view word = json.rest().substr(0, json.rest().find_first_not_of(kWordCharacters));
  value = word;
  return !word.empty() && json.Take(word);
}

}  // namespace

QemuProperties::QemuProperties(std::string_view text, std::string_view firstKey) {
  if (!text.starts_with('{')) {
    ParseCommas(text, firstKey);
  } else if (!ParseJson(text)) {
    properties_.clear();
  }
}

void QemuProperties::ParseCommas(std::string_view text, std::string_view firstKey) {
  for (bool isFirst = true; !text.empty(); isFirst = false) {
    const std::string property = TakeProperty(text);
    const size_t equals = property.find('=');
    if (equals != std::string::npos) {
      properties_.emplace_back(property.substr(0, equals), property.substr(equals + 1));
    } else if (isFirst) {
      properties_.emplace_back(firstKey, property);
    }
  }
}

bool QemuProperties::ParseJson(std::string_view text) {
  TextScanner json(text);
  if (!TakeJson(json, "{")) return false;
  do {
    std::string key, value;
    if (!TakeJson(json, "\"") || !TakeRestOfString(json, key) || !TakeJson(json, ":") || !TakeJsonValue(json, value)) {
      return false;
    }
    properties_.emplace_back(std::move(key), std::move(value));
  } while (TakeJson(json, ","));
  return TakeJson(json, "}");
}

std::string_view QemuProperties::ValueOf(std::string_view key) const {
  const auto found =
      std::find_if(properties_.rbegin(), properties_.rend(), [key](const auto &p) { return p.first == key; });
  return found == properties_.rend() ? std::string_view() : found->second;
}

bool QemuProperties::IsOn(std::string_view key) const {
  const std::string_view value = ValueOf(key);
  return value == "on" || value == "yes" || value == "true" || value == "y";
}

}  // namespace platkit
