#include "tools/nodal/capture/pseudonyms.h"

#include <sys/random.h>

#include <algorithm>
#include <cctype>
#include <cstring>

#include "tools/nodal/support/output.h"

namespace nodal {
namespace {

using platkit::FieldType;

SipKey RandomKey() {
  SipKey key;
  if (getrandom(key.data(), sizeof key, 0) != sizeof key) throw Failure("random numbers", std::strerror(errno));
  return key;
}

constexpr std::string_view kUuidForm = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";

bool IsUuid(std::string_view name) {
  return std::ranges::equal(name, kUuidForm, [](char c, char form) {
    return form == '-' ? c == '-' : std::isxdigit(static_cast<unsigned char>(c)) != 0;
  });
}

// Letters and digits that are not mistaken for each other, as many as five bits can tell apart.
constexpr std::string_view kDigits = "abcdefghijkmnpqrstuvwxyz23456789";
static_assert(kDigits.size() == 32);
constexpr size_t kMostDigits = 10;
constexpr std::string_view kPrefix = "name-";

std::string Digits(uint64_t hash, size_t count) {
  std::string digits;
  for (; digits.size() < count; hash >>= 5)
    digits += kDigits[hash % kDigits.size()];
  return digits;
}

// What the kernel calls its own groups, and the kinds of groups.
bool IsOfTheTree(std::string_view name) {
  constexpr std::string_view kWords[] = {"host", "kernel", "cgroup", "process", "vm", "vmm", "uw"};
  return std::ranges::find(kWords, name) != std::end(kWords);
}

bool IsKept(std::string_view what, std::string_view name) {
  return what == "state" || what == "remapType" || (what == "buddy" && name.starts_with("memmap"));
}

}  // namespace

Pseudonyms::Pseudonyms(const std::string &key) {
  key_ = key.empty() ? RandomKey() : SipKey{SipHash({1, 0}, key), SipHash({2, 0}, key)};
}

uint64_t Pseudonyms::Hash(std::string_view name, uint64_t use) const { return SipHash({key_[0] ^ use, key_[1]}, name); }

std::string Pseudonyms::Of(std::string_view name, size_t room) const {
  if (name.empty() || IsOfTheTree(name)) return std::string(name.substr(0, room));
  if (IsUuid(name) && room >= kUuidForm.size()) {
    std::string uuid(kUuidForm);
    uint64_t bits[] = {Hash(name, 1), Hash(name, 2)};
    for (size_t i = 0, digit = 0; i < uuid.size(); ++i) {
      if (uuid[i] == '-') continue;
      uuid[i] = "0123456789abcdef"[bits[digit++ / 16] & 15];
      bits[(digit - 1) / 16] >>= 4;
    }
    return uuid;
  }
  const uint64_t hash = Hash(name, 0);
  if (room < kPrefix.size() + kMostDigits) return Digits(hash, std::min(room, kMostDigits));
  return std::string(kPrefix) + Digits(hash, kMostDigits);
}

Argument Pseudonyms::Of(std::string_view what, const Argument &instance) const {
  if (instance.kind != ParamKind::kText || IsKept(what, instance.text)) return instance;
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
