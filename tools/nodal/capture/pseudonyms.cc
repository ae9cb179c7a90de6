#include "tools/nodal/capture/pseudonyms.h"

#include <sodium.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <stdexcept>

namespace nodal {
namespace {

using platkit::FieldType;

constexpr std::string_view kUuidForm = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";

bool IsUuid(std::string_view name) {
  return std::ranges::equal(name, kUuidForm, [](char c, char form) {
    return form == '-' ? c == '-' : std::isxdigit(static_cast<unsigned char>(c)) != 0;
  });
}

// 32 letters and digits that look different; each encodes five bits.
constexpr std::string_view kDigits = "abcdefghijkmnpqrstuvwxyz23456789";
static_assert(kDigits.size() == 32);
constexpr size_t kDigitCount = 10;
constexpr std::string_view kPrefix = "name-";

std::string Digits(std::span<const unsigned char> digest, size_t count) {
  std::string digits;
  for (const unsigned char byte : digest.first(count))
    digits += kDigits[byte % kDigits.size()];
  return digits;
}

// Names of the kernel's own groups and of kinds of groups.
bool IsFixedName(std::string_view name) {
  constexpr std::string_view kNames[] = {"host", "kernel", "cgroup", "process", "vm", "vmm", "uw"};
  return std::ranges::find(kNames, name) != std::end(kNames);
}

bool IsFixedInstance(std::string_view what, std::string_view name) {
  return what == "state" || what == "remapType" || (what == "buddy" && name.starts_with("memmap"));
}

}  // namespace

Pseudonyms::Pseudonyms(const std::string &key) {
  if (sodium_init() < 0) throw std::runtime_error("libsodium: no random numbers");
  if (key.empty()) {
    randombytes_buf(key_.data(), key_.size());
  } else {
    const auto *text = reinterpret_cast<const unsigned char *>(key.data());
    crypto_generichash(key_.data(), key_.size(), text, key.size(), nullptr, 0);
  }
}

Pseudonyms::Digest Pseudonyms::Hash(std::string_view name) const {
  Digest digest;
  const auto *text = reinterpret_cast<const unsigned char *>(name.data());
  crypto_generichash(digest.data(), digest.size(), text, name.size(), key_.data(), key_.size());
  return digest;
}

std::string Pseudonyms::Uuid(const Digest &digest) {
  char digits[2 * sizeof digest + 1];
  sodium_bin2hex(digits, sizeof digits, digest.data(), digest.size());
  std::string uuid(kUuidForm);
  for (const char *digit = digits; char &c : uuid) {
    if (c != '-') c = *digit++;
  }
  return uuid;
}

std::string Pseudonyms::Of(std::string_view name, size_t room) const {
  if (name.empty() || IsFixedName(name)) return std::string(name.substr(0, room));
  const Digest digest = Hash(name);
  if (IsUuid(name) && room >= kUuidForm.size()) return Uuid(digest);
  if (room < kPrefix.size() + kDigitCount) return Digits(digest, std::min(room, kDigitCount));
  return std::string(kPrefix) + Digits(digest, kDigitCount);
}

Argument Pseudonyms::Of(std::string_view what, const Argument &instance) const {
  if (instance.kind != ParamKind::kText || IsFixedInstance(what, instance.text)) return instance;
  return TextArgument(Of(instance.text));
}

void Pseudonyms::Replace(const platkit::RecordLayout &layout, std::span<std::byte> record) const {
  for (const platkit::Field &field : layout.fields) {
    const auto bytes = record.subspan(field.offset, size_t{field.size} * field.count);
    if (field.type == FieldType::kEntries) {
      for (uint32_t i = 0; i < field.count; ++i)
        Replace(*field.entry, bytes.subspan(i * size_t{field.size}, field.size));
    } else if (field.type == FieldType::kGap) {
      std::ranges::fill(bytes, std::byte{0});
    } else if (field.type == FieldType::kText) {
      const std::string_view all(reinterpret_cast<const char *>(bytes.data()), bytes.size());
      const std::string pseudonym = Of(all.substr(0, all.find('\0')), bytes.size() - 1);
      std::ranges::fill(bytes, std::byte{0});
      std::memcpy(bytes.data(), pseudonym.data(), pseudonym.size());
    }
  }
}

}  // namespace nodal
