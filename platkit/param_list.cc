#include "platkit/param_list.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

using platkit::ParamKind;

NODAL_ParamList::~NODAL_ParamList() { Clear(); }

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

HVC_ReturnStatus NODAL_ParamList::Add(int64_t value) {
  return Append({.kind = ParamKind::kInt, .length = 0, .integer = value});
}

HVC_ReturnStatus NODAL_ParamList::Add(std::string_view text) {
  const uint64_t bytes = text.size() + 1;
  if (textBytes_ + bytes > maxTextBytes_) return HVC_LIMIT_EXCEEDED;
  auto copy = std::make_unique_for_overwrite<char[]>(bytes);
  std::memcpy(copy.get(), text.data(), text.size());
  copy[text.size()] = '\0';
  const auto length = static_cast<uint32_t>(text.size());
  const HVC_ReturnStatus status = Append({.kind = ParamKind::kText, .length = length, .chars = copy.get()});
  if (status != HVC_OK) return status;
  static_cast<void>(copy.release());
  textBytes_ += bytes;
  return HVC_OK;
}

HVC_ReturnStatus NODAL_ParamList::RemoveLast() noexcept {
  if (params_.empty()) return HVC_NOT_FOUND;
  const NODAL_Param &last = params_.back();
  if (last.kind == ParamKind::kText) {
    textBytes_ -= uint64_t{last.length} + 1;
    delete[] last.chars;
  }
  params_.pop_back();
  return HVC_OK;
}

void NODAL_ParamList::Clear() noexcept {
  while (RemoveLast() == HVC_OK) {
  }
}

void NODAL_ParamList::Expect(uint64_t count) { params_.reserve(std::min<uint64_t>(count, maxParams_)); }

HVC_ReturnStatus NODAL_ParamList::Append(const NODAL_Param &param) {
  if (params_.size() == maxParams_) return HVC_LIMIT_EXCEEDED;
  if (params_.capacity() == 0) params_.reserve(kFirstCapacity);
  params_.push_back(param);
  return HVC_OK;
}
