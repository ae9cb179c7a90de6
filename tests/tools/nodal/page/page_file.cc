#include "tests/tools/nodal/page/page_file.h"

#include <sodium.h>
#include <zlib.h>

#include <stdexcept>

std::string Between(std::string_view all, std::string_view from, std::string_view to) {
  const size_t start = all.find(from);
  if (start == std::string_view::npos) return "";
  all.remove_prefix(start + from.size());
  const size_t end = all.find(to);
  return end == std::string_view::npos ? "" : std::string(all.substr(0, end));
}

std::string StyleOf(const std::string &page) { return Between(page, "<style>", "</style>"); }
std::string ScriptOf(const std::string &page) { return Between(page, "<script type=\"module\">", "</script>"); }
std::string EncodedDataOf(const std::string &page) { return Between(page, "id=\"data\">", "</script>"); }

std::string Unpacked(const std::string &encoded) {
  std::string bytes(encoded.size(), '\0');
  size_t size = 0;
  if (sodium_base642bin(reinterpret_cast<unsigned char *>(bytes.data()), bytes.size(), encoded.data(), encoded.size(),
                        nullptr, &size, nullptr, sodium_base64_VARIANT_ORIGINAL) != 0) {
    throw std::runtime_error("not base64");
  }
  std::string text(64 << 20, '\0');
  uLongf length = text.size();
  if (uncompress(reinterpret_cast<Bytef *>(text.data()), &length, reinterpret_cast<const Bytef *>(bytes.data()),
                 size) != Z_OK) {
    throw std::runtime_error("not compressed");
  }
  text.resize(length);
  return text;
}
