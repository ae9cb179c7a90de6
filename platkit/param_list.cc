#include "platkit/param_list.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

using platkit::ParamKind;

NODAL_ParamList::~NODAL_ParamList() {
  Clear();
  std::free(params_);
}

NODAL_ParamList *NODAL_ParamList::Make() noexcept {
  void *memory = std::malloc(sizeof(NODAL_ParamList));
  return memory == nullptr ? nullptr : new (memory) NODAL_ParamList;
}

NODAL_ParamList *NODAL_ParamList::MakeFixed(uint32_t count, uint32_t textBytes) noexcept {
  NODAL_ParamList *list = Make();
  if (list != nullptr) {
    list->maxParams_ = count;
    list->maxTextBytes_ = textBytes;
  }
  return list;
}

void NODAL_ParamList::Destroy() noexcept {
  this->~NODAL_ParamList();
  std::free(this);
}

HVC_ReturnStatus NODAL_ParamList::Add(int64_t value) noexcept {
  return Append({.kind = ParamKind::kInt, .length = 0, .integer = value});
}

HVC_ReturnStatus NODAL_ParamList::Add(std::string_view text) noexcept {
  const uint64_t bytes = text.size() + 1;
  if (textBytes_ + bytes > maxTextBytes_) return HVC_LIMIT_EXCEEDED;
  auto *copy = static_cast<char *>(std::malloc(bytes));
  if (copy == nullptr) return HVC_NO_MEMORY;
  std::memcpy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
  const auto length = static_cast<uint32_t>(text.size());
  const HVC_ReturnStatus status = Append({.kind = ParamKind::kText, .length = length, .chars = copy});
  if (status == HVC_OK) {
    textBytes_ += bytes;
  } else {
    std::free(copy);
  }
  return status;
}

HVC_ReturnStatus NODAL_ParamList::RemoveLast() noexcept {
  if (count_ == 0) return HVC_NOT_FOUND;
  const NODAL_Param &last = params_[--count_];
  if (last.kind == ParamKind::kText) {
    textBytes_ -= uint64_t{last.length} + 1;
    std::free(const_cast<char *>(last.chars));
  }
  return HVC_OK;
}

void NODAL_ParamList::Clear() noexcept {
  while (RemoveLast() == HVC_OK) {
  }
}

void NODAL_ParamList::Expect(uint64_t count) noexcept {
  const uint64_t wanted = std::min<uint64_t>(count, maxParams_);
  if (wanted > capacity_) Grow(wanted);
}

HVC_ReturnStatus NODAL_ParamList::Append(const NODAL_Param &param) noexcept {
  if (count_ == maxParams_) return HVC_LIMIT_EXCEEDED;
  if (count_ == capacity_ && !Grow(std::max<uint64_t>(kFirstCapacity, uint64_t{capacity_} * 2))) return HVC_NO_MEMORY;
  params_[count_++] = param;
  return HVC_OK;
}

bool NODAL_ParamList::Grow(uint64_t capacity) noexcept {
  capacity = std::min<uint64_t>(capacity, kUnlimited - 1);
  if (capacity <= capacity_) return false;
  void *grown = std::realloc(params_, capacity * sizeof(NODAL_Param));
  if (grown == nullptr) return false;
  params_ = static_cast<NODAL_Param *>(grown);
  capacity_ = static_cast<uint32_t>(capacity);
  return true;
}
