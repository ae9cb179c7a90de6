#include "tools/nodal/snapshot/json_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <set>

#include "tools/nodal/support/output.h"

namespace nodal {
namespace {

struct Close {
  void operator()(std::FILE *file) const { std::fclose(file); }
};

std::string ReadFile(const std::string &path) {
  std::unique_ptr<std::FILE, Close> opened;
  std::FILE *file = stdin;
  if (path != "-") {
    opened.reset(std::fopen(path.c_str(), "rbe"));
    if (opened == nullptr) throw Failure(path, std::strerror(errno));
    file = opened.get();
  }
  std::string text;
  char block[65536];
  while (const size_t size = std::fread(block, 1, sizeof block, file))
    text.append(block, size);
  if (std::ferror(file)) throw Failure(path, std::strerror(errno));
  return text;
}

// Finds duplicate keys, of which the parser silently keeps the last value. This needs a second pass over the text,
// because the parser's callback in the first pass takes quadratic time in the size of an object.
class DuplicateCheck : public nlohmann::json_sax<Json> {
 public:
  bool key(std::string &name) override {
    if (!objects_.back().keys.insert(name).second) {
      const std::string where = objects_.size() < 2 ? "" : objects_[objects_.size() - 2].current + ": ";
      throw InvalidJson(where + "duplicate key '" + name + "'");
    }
    objects_.back().current = name;
    return true;
  }
  bool start_object(size_t) override {
    objects_.emplace_back();
    return true;
  }
  bool end_object() override {
    objects_.pop_back();
    return true;
  }

  bool null() override { return true; }
  bool boolean(bool) override { return true; }
  bool number_integer(int64_t) override { return true; }
  bool number_unsigned(uint64_t) override { return true; }
  bool number_float(double, const std::string &) override { return true; }
  bool string(std::string &) override { return true; }
  bool binary(Json::binary_t &) override { return true; }
  bool start_array(size_t) override { return true; }
  bool end_array() override { return true; }
  // The first pass has reported it.
  bool parse_error(size_t, const std::string &, const nlohmann::detail::exception &) override { return false; }

 private:
  struct Object {
    std::set<std::string> keys;
    std::string current;
  };
  std::vector<Object> objects_;
};

// Line and column of the last character that the parser read, counted from 1.
std::string Place(const std::string &text, size_t bytesRead) {
  const std::string_view before = std::string_view(text).substr(0, bytesRead == 0 ? 0 : bytesRead - 1);
  const auto line = 1 + std::ranges::count(before, '\n');
  const size_t lineStart = before.rfind('\n') == std::string_view::npos ? 0 : before.rfind('\n') + 1;
  return std::to_string(line) + ":" + std::to_string(before.size() - lineStart + 1);
}

// The JSON library's message without its name and position.
std::string Reason(const Json::exception &error) {
  std::string what = error.what();
  for (const char *prefix : {"] ", "parse error", ": "}) {
    if (const size_t found = what.find(prefix); found != std::string::npos) what.erase(0, found + std::strlen(prefix));
  }
  return what;
}

}  // namespace

Json ParseJsonFile(const std::string &path) {
  const std::string text = ReadFile(path);
  try {
    Json json = Json::parse(text);
    DuplicateCheck check;
    Json::sax_parse(text, &check);
    return json;
  } catch (const Json::parse_error &error) {
    throw Failure(path + ":" + Place(text, error.byte), Reason(error));
  } catch (const Json::out_of_range &error) {
    throw Failure(path, Reason(error));  // a number; the library does not say where
  }
}

}  // namespace nodal
