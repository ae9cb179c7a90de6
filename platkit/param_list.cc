#include "platkit/param_list.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

using platkit::ParamKind;

// Destroyed lists, kept for their next maker: a program that reads the tree makes and destroys lists by the million.
struct SpareLists {
  static constexpr int kMost = 32;

  ~SpareLists() {
    while (NODAL_ParamList *list = Take()) {
      list->~NODAL_ParamList();
      std::free(list);
    }
  }

  NODAL_ParamList *Take() {
    NODAL_ParamList *list = first;
    if (list != nullptr) {
      first = list->nextSpare_;
      --count;
    }
    return list;
  }

  bool Keep(NODAL_ParamList *list) {
    if (count == kMost) return false;
    list->nextSpare_ = first;
    first = list;
    ++count;
    return true;
  }

  NODAL_ParamList *first = nullptr;
  int count = 0;
};

namespace {

thread_local SpareLists spareLists;

}  // namespace

NODAL_ParamList::NODAL_ParamList() : newest_(&inlineText_.block) {
  inlineText_.block = {.older = nullptr, .capacity = kInlineText, .used = 0};
}

NODAL_ParamList::~NODAL_ParamList() {
  Clear();
  if (params_ != inlineParams_) std::free(params_);
}

NODAL_ParamList *NODAL_ParamList::Make() {
  if (NODAL_ParamList *spare = spareLists.Take()) return spare;
  void *memory = std::malloc(sizeof(NODAL_ParamList));
  return memory == nullptr ? nullptr : new (memory) NODAL_ParamList;
}

NODAL_ParamList *NODAL_ParamList::MakeFixed(uint32_t count, uint32_t textBytes) {
  NODAL_ParamList *list = Make();
  if (list != nullptr) {
    list->mostParams_ = count;
    list->mostText_ = textBytes;
  }
  return list;
}

void NODAL_ParamList::Destroy() {
  Clear();
  mostParams_ = mostText_ = kUnlimited;
  if (capacity_ <= kMostKeptParams && spareLists.Keep(this)) return;
  this->~NODAL_ParamList();
  std::free(this);
}

HVC_ReturnStatus NODAL_ParamList::Add(int64_t value) {
  return Append({.kind = ParamKind::kInt, .length = 0, .integer = value});
}

HVC_ReturnStatus NODAL_ParamList::Add(std::string_view text) {
  const uint64_t bytes = text.size() + 1;
  if (textBytes_ + bytes > mostText_) return HVC_LIMIT_EXCEEDED;
  char *copy = TextRoom(bytes);
  if (copy == nullptr) return HVC_NO_MEMORY;
  std::memcpy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
  const auto length = static_cast<uint32_t>(text.size());
  const HVC_ReturnStatus status = Append({.kind = ParamKind::kText, .length = length, .chars = copy});
  if (status == HVC_OK) {
    newest_->used += length + 1;
    textBytes_ += bytes;
  }
  return status;
}

HVC_ReturnStatus NODAL_ParamList::RemoveLast() {
  if (count_ == 0) return HVC_NOT_FOUND;
  const NODAL_Param &last = params_[--count_];
  if (last.kind == ParamKind::kText) {
    const uint32_t bytes = last.length + 1;
    textBytes_ -= bytes;
    // Its room is free again if nothing was stored behind it, so a list that is used for one text after the other does
    // not grow.
    if (newest_->used >= bytes && last.chars == newest_->bytes() + newest_->used - bytes) newest_->used -= bytes;
  }
  return HVC_OK;
}

void NODAL_ParamList::Clear() {
  while (newest_ != &inlineText_.block) {
    TextBlock *older = newest_->older;
    std::free(newest_);
    newest_ = older;
  }
  newest_->used = 0;
  textBytes_ = 0;
  count_ = 0;
}

void NODAL_ParamList::Expect(uint64_t count) {
  const uint64_t wanted = std::min<uint64_t>(count, mostParams_);
  if (wanted > capacity_) Grow(wanted);
}

HVC_ReturnStatus NODAL_ParamList::Append(const NODAL_Param &param) {
  if (count_ == mostParams_) return HVC_LIMIT_EXCEEDED;
  if (count_ == capacity_ && !Grow(uint64_t{capacity_} * 2)) return HVC_NO_MEMORY;
  params_[count_++] = param;
  return HVC_OK;
}

bool NODAL_ParamList::Grow(uint64_t capacity) {
  capacity = std::min<uint64_t>(capacity, kUnlimited - 1);
  if (capacity <= capacity_) return false;
  NODAL_Param *old = params_ == inlineParams_ ? nullptr : params_;
  void *grown = std::realloc(old, capacity * sizeof(NODAL_Param));
  if (grown == nullptr) return false;
  if (old == nullptr) std::memcpy(grown, inlineParams_, count_ * sizeof(NODAL_Param));
  params_ = static_cast<NODAL_Param *>(grown);
  capacity_ = static_cast<uint32_t>(capacity);
  return true;
}

// Room for `bytes` at the end of the newest block; the caller counts it as used once the text is in the list.
char *NODAL_ParamList::TextRoom(uint64_t bytes) {
  if (newest_->capacity - newest_->used < bytes) {
    const uint64_t capacity = std::max<uint64_t>(bytes, uint64_t{newest_->capacity} * 2);
    if (bytes >= kUnlimited) return nullptr;
    const auto bounded = static_cast<uint32_t>(std::min<uint64_t>(capacity, kUnlimited - 1));
    void *memory = std::malloc(sizeof(TextBlock) + bounded);
    if (memory == nullptr) return nullptr;
    newest_ = new (memory) TextBlock{.older = newest_, .capacity = bounded, .used = 0};
  }
  return newest_->bytes() + newest_->used;
}
