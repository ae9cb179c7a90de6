#include "tools/nodal/capture/vocabulary.h"

#include <algorithm>
#include <chrono>
#include <span>

#include "platkit/memory_states.h"

namespace nodal {
namespace {

constexpr std::string_view kGroupNames[] = {"host", "kernel", "vmm"};
constexpr std::string_view kGroupTags[] = {"host", "kernel", "cgroup", "process", "vm", "vmm"};
constexpr std::string_view kRemapTypes[] = {"numa", "promotion", "demotion"};

// In a form, each 0 stands for any digit.
bool HasForm(std::string_view text, std::string_view form) {
  return std::ranges::equal(
      text, form, [](char c, char expected) { return expected == '0' ? c >= '0' && c <= '9' : c == expected; });
}

// The names end in -lo or -hi, for low or high addresses.
bool IsBuddyOfMemNode(std::string_view text) {
  constexpr std::string_view kForms[] = {"memmap-00-lo",  "memmap-00-hi",   "memmap-000-lo",
                                         "memmap-000-hi", "memmap-0000-lo", "memmap-0000-hi"};
  return std::ranges::any_of(kForms, [text](std::string_view form) { return HasForm(text, form); });
}

bool Contains(std::span<const std::string_view> words, std::string_view text) {
  return std::ranges::find(words, text) != words.end();
}

int Number(std::string_view digits) {
  int number = 0;
  for (const char digit : digits)
    number = number * 10 + (digit - '0');
  return number;
}

}  // namespace

bool IsOwnWord(std::string_view what, std::string_view text) {
  if (what == "GroupNameRecord") return Contains(kGroupNames, text);
  if (what == "GroupTagRecord") return Contains(kGroupTags, text);
  if (what == "state") return Contains(platkit::kMemoryStates, text);
  if (what == "remapType") return Contains(kRemapTypes, text);
  return what == "buddy" && IsBuddyOfMemNode(text);
}

bool IsHeaderTime(std::string_view text) {
  if (!HasForm(text, "0000-00-00T00:00:00Z")) return false;
  const auto number = [text](size_t start, size_t length) { return Number(text.substr(start, length)); };
  const std::chrono::year_month_day day(std::chrono::year(number(0, 4)),
                                        std::chrono::month(static_cast<unsigned>(number(5, 2))),
                                        std::chrono::day(static_cast<unsigned>(number(8, 2))));
  return day.ok() && number(11, 2) < 24 && number(14, 2) < 60 && number(17, 2) < 60;
}

}  // namespace nodal
