#include "tests/stress/library_answers.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "platkit/nodal.h"
#include "tests/stress/allocations.h"

// The linker replaces kestrel's calls of NODAL_Get by calls of __wrap_NODAL_Get; see CMakeLists.txt.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
decltype(NODAL_Get) __real_NODAL_Get;
decltype(NODAL_GetInstanceListAlloc) __real_NODAL_GetInstanceListAlloc;
decltype(NODAL_GetInstanceListAllocHint) __real_NODAL_GetInstanceListAllocHint;
decltype(NODAL_GetInstanceList) __real_NODAL_GetInstanceList;
decltype(NODAL_ParamListCreate) __real_NODAL_ParamListCreate;
decltype(NODAL_ParamListCreateAndAllocateParams) __real_NODAL_ParamListCreateAndAllocateParams;
decltype(NODAL_ParamListAddInt) __real_NODAL_ParamListAddInt;
decltype(NODAL_ParamListAddString) __real_NODAL_ParamListAddString;
}

namespace stress {
namespace {

// This code must not allocate memory, because it runs while allocations are counted and fail.

// FNV-1a.
class Digest {
 public:
  Digest &Add(const void *bytes, size_t size) {
    for (size_t i = 0; i < size; ++i)
      value_ = (value_ ^ static_cast<const unsigned char *>(bytes)[i]) * 0x100000001b3;
    return *this;
  }
  Digest &Add(int64_t number) { return Add(&number, sizeof number); }
  Digest &Add(const NODAL_ParamList *list) {
    const uint32_t count = NODAL_ParamListUsedCount(list);
    Add(count);
    for (uint32_t i = 0; i < count; ++i)
      AddParam(list, i);
    return *this;
  }

  uint64_t value() const { return value_; }

 private:
  void AddParam(const NODAL_ParamList *list, uint32_t index) {
    int64_t number = 0;
    const char *text = nullptr;
    if (NODAL_ParamListGetInt64(list, index, &number) == HVC_OK) {
      Add('i').Add(number);
    } else if (NODAL_ParamListGetString(list, index, &text) == HVC_OK) {
      Add('t').Add(text, std::strlen(text) + 1);
    }
  }

  uint64_t value_ = 0xcbf29ce484222325;
};

struct Known {
  uint64_t call = 0;  // 0: free
  uint64_t answer = 0;
  bool varies = false;  // the same read has had several answers
};

enum class Mode { kIgnore, kLearn, kCheck };

Mode mode = Mode::kIgnore;
std::array<Known, 1 << 16> known;
std::array<char, 256> wrong;
uint64_t refused = 0;

HVC_ReturnStatus Counted(HVC_ReturnStatus status) {
  if (status == HVC_NO_MEMORY) ++refused;
  return status;
}

NODAL_ParamList *Counted(NODAL_ParamList *list) {
  if (list == nullptr) ++refused;
  return list;
}

Known &PlaceOf(uint64_t call) {
  size_t i = call % known.size();
  while (known[i].call != 0 && known[i].call != call)
    i = (i + 1) % known.size();
  return known[i];
}

void Complain(uint32_t node, HVC_ReturnStatus status, const char *what) {
  if (wrong[0] != '\0') return;
  std::snprintf(wrong.data(), wrong.size(), "node %u, status %#x: %s", node, status, what);
}

void Observe(uint32_t node, uint64_t call, HVC_ReturnStatus status, uint64_t answer) {
  if (mode == Mode::kIgnore) return;
  Known &place = PlaceOf(call);
  if (mode == Mode::kLearn) {
    place.varies = place.varies || (place.call == call && place.answer != answer);
    place.call = call;
    place.answer = answer;
  } else if (Counted(status) == HVC_NO_MEMORY) {
    if (FailedAllocations() == 0) Complain(node, status, "no allocation has failed");
  } else if (place.call != call) {
    Complain(node, status, "a read that does not occur with enough memory");
  } else if (!place.varies && place.answer != answer) {
    Complain(node, status, "another answer than with enough memory");
  }
}

template <typename List>
HVC_ReturnStatus ObserveList(uint32_t node, const NODAL_ParamList *arguments, NODAL_ParamList **list, List read) {
  const uint64_t call = Digest().Add('l').Add(node).Add(arguments).value();
  const NODAL_ParamList *before = *list;
  const HVC_ReturnStatus status = read();
  Observe(node, call, status, Digest().Add(status).Add(status == HVC_OK ? *list : nullptr).value());
  if (status != HVC_OK && *list != before) Complain(node, status, "the output has changed");
  return status;
}

}  // namespace

void LearnAnswers() {
  known.fill({});
  mode = Mode::kLearn;
}

void CheckAnswers() {
  wrong.fill('\0');
  refused = 0;
  mode = Mode::kCheck;
}

void IgnoreAnswers() { mode = Mode::kIgnore; }

uint64_t RefusedCalls() { return refused; }

std::string WrongAnswer() { return wrong.data(); }

}  // namespace stress

extern "C" {

HVC_ReturnStatus __wrap_NODAL_Get(uint32_t node, const NODAL_ParamList *arguments, void *record, uint32_t size) {
  using stress::Digest;
  const uint64_t call = Digest().Add('g').Add(node).Add(arguments).value();
  const uint64_t before = Digest().Add(record, size).value();
  const HVC_ReturnStatus status = __real_NODAL_Get(node, arguments, record, size);
  const uint64_t after = Digest().Add(record, size).value();
  stress::Observe(node, call, status,
                  Digest().Add(status).Add(status == HVC_OK ? record : "", status == HVC_OK ? size : 0).value());
  if (status != HVC_OK && after != before) stress::Complain(node, status, "the record has changed");
  return status;
}

HVC_ReturnStatus __wrap_NODAL_GetInstanceListAlloc(uint32_t node, const NODAL_ParamList *arguments,
                                                   NODAL_ParamList **list) {
  return stress::ObserveList(node, arguments, list,
                             [&] { return __real_NODAL_GetInstanceListAlloc(node, arguments, list); });
}

HVC_ReturnStatus __wrap_NODAL_GetInstanceListAllocHint(uint32_t node, const NODAL_ParamList *arguments, uint32_t hint,
                                                       NODAL_ParamList **list) {
  return stress::ObserveList(node, arguments, list,
                             [&] { return __real_NODAL_GetInstanceListAllocHint(node, arguments, hint, list); });
}

// Expects that a failed call leaves the list empty.
HVC_ReturnStatus __wrap_NODAL_GetInstanceList(uint32_t node, const NODAL_ParamList *arguments, NODAL_ParamList *list) {
  using stress::Digest;
  const uint64_t call = Digest().Add('f').Add(node).Add(arguments).value();
  const HVC_ReturnStatus status = __real_NODAL_GetInstanceList(node, arguments, list);
  stress::Observe(node, call, status, Digest().Add(status).Add(list).value());
  if (status != HVC_OK && NODAL_ParamListUsedCount(list) != 0) stress::Complain(node, status, "the list is not empty");
  return status;
}

NODAL_ParamList *__wrap_NODAL_ParamListCreate(uint32_t kind, uint32_t capacity) {
  return stress::Counted(__real_NODAL_ParamListCreate(kind, capacity));
}

NODAL_ParamList *__wrap_NODAL_ParamListCreateAndAllocateParams(uint32_t kind, uint32_t count, uint32_t bytes) {
  return stress::Counted(__real_NODAL_ParamListCreateAndAllocateParams(kind, count, bytes));
}

HVC_ReturnStatus __wrap_NODAL_ParamListAddInt(NODAL_ParamList *list, int64_t value) {
  return stress::Counted(__real_NODAL_ParamListAddInt(list, value));
}

HVC_ReturnStatus __wrap_NODAL_ParamListAddString(NODAL_ParamList *list, const char *text) {
  return stress::Counted(__real_NODAL_ParamListAddString(list, text));
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
