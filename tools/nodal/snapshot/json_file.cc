#include "tools/nodal/snapshot/json_file.h"

#include <sys/stat.h>

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

constexpr size_t kMaxFileBytes = size_t{1} << 30;
constexpr size_t kMaxDepth = 64;  // JSON of a snapshot has fewer than ten levels

[[noreturn]] void ThrowTooLarge(const std::string &path) {
  throw Failure(path, "larger than 1 GiB, the maximum for JSON");
}

// Throws at the first NUL, which valid JSON never contains, because devices such as /dev/zero have no end.
std::string ReadAll(std::FILE *file, const std::string &path) {
  std::string text;
  char block[65536];
  while (const size_t size = std::fread(block, 1, sizeof block, file)) {
    text.append(block, size);
    if (text.size() > kMaxFileBytes) ThrowTooLarge(path);
    const size_t nul = text.find('\0', text.size() - size);
    if (nul != std::string::npos) throw Failure(path, "not JSON: NUL at byte " + std::to_string(nul));
  }
  if (std::ferror(file)) throw Failure(path, std::strerror(errno));
  return text;
}

std::string ReadFile(const std::string &path) {
  if (path == "-") return ReadAll(stdin, path);
  const std::unique_ptr<std::FILE, Close> file(std::fopen(path.c_str(), "rbe"));
  if (file == nullptr) throw Failure(path, std::strerror(errno));
  struct stat info;
  if (fstat(fileno(file.get()), &info) == 0 && S_ISREG(info.st_mode) && info.st_size > off_t{kMaxFileBytes}) {
    ThrowTooLarge(path);
  }
  return ReadAll(file.get(), path);
}

// Finds duplicate keys and excessive nesting. The parser would silently keep only the last value of a duplicate key,
// and excessive nesting would exhaust the stack. This check is a separate pass over the text, because the parser's
// callback takes quadratic time in the size of an object.
class StructureCheck : public nlohmann::json_sax<Json> {
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
    return Enter();
  }
  bool end_object() override {
    objects_.pop_back();
    return Leave();
  }
  bool start_array(size_t) override { return Enter(); }
  bool end_array() override { return Leave(); }

  bool null() override { return true; }
  bool boolean(bool) override { return true; }
  bool number_integer(int64_t) override { return true; }
  bool number_unsigned(uint64_t) override { return true; }
  bool number_float(double, const std::string &) override { return true; }
  bool string(std::string &) override { return true; }
  bool binary(Json::binary_t &) override { return true; }
  // Json::parse will report the error.
  bool parse_error(size_t, const std::string &, const nlohmann::detail::exception &) override { return false; }

 private:
  struct Object {
    std::set<std::string> keys;
    std::string current;
  };

  bool Enter() {
    if (++depth_ > kMaxDepth) throw InvalidJson("nested deeper than " + std::to_string(kMaxDepth) + " levels");
    return true;
  }
  bool Leave() { return --depth_, true; }

  std::vector<Object> objects_;
  size_t depth_ = 0;
};

// Returns the line and column of the last character that the parser read, counted from 1.
std::string Place(const std::string &text, size_t bytesRead) {
  const std::string_view before = std::string_view(text).substr(0, bytesRead == 0 ? 0 : bytesRead - 1);
  const auto line = 1 + std::ranges::count(before, '\n');
  const size_t lineStart = before.rfind('\n') == std::string_view::npos ? 0 : before.rfind('\n') + 1;
  return std::to_string(line) + ":" + std::to_string(before.size() - lineStart + 1);
}

// Returns the JSON library's message without the error's identifier and position.
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
    StructureCheck check;
    Json::sax_parse(text, &check);
    return Json::parse(text);
  } catch (const Json::parse_error &error) {
    throw Failure(path + ":" + Place(text, error.byte), Reason(error));
  } catch (const Json::out_of_range &error) {
    throw Failure(path, Reason(error));  // a number out of range; the library does not say where
  }
}

}  // namespace nodal
