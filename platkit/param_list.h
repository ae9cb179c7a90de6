// Parameters and parameter lists: the opaque types of nodal.h.
#ifndef PLATKIT_PARAM_LIST_H
#define PLATKIT_PARAM_LIST_H

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "platkit/nodal.h"

namespace platkit {

enum class ParamKind : uint32_t { kInt, kText };

}  // namespace platkit

struct NODAL_Param {
  platkit::ParamKind kind;
  uint32_t length;  // length of a text in bytes, without its terminator
  union {
    int64_t integer;
    const char *chars;
  };

  std::string_view text() const { return {chars, length}; }
};

// Each text has its own allocation, which never moves, because callers hold pointers to it.
struct NODAL_ParamList {
 public:
  NODAL_ParamList(const NODAL_ParamList &) = delete;
  NODAL_ParamList &operator=(const NODAL_ParamList &) = delete;

  // Return an empty list, or null if memory is short. A fixed list takes at most `count` parameters and `textBytes`
  // bytes of text, terminators included.
  static NODAL_ParamList *Make() noexcept;
  static NODAL_ParamList *MakeFixed(uint32_t count, uint32_t textBytes) noexcept;
  void Destroy() noexcept;

  // HVC_LIMIT_EXCEEDED: a fixed list is full. If memory runs out, these throw std::bad_alloc and leave the list
  // unchanged.
  [[nodiscard]] HVC_ReturnStatus Add(int64_t value);
  [[nodiscard]] HVC_ReturnStatus Add(std::string_view text);

  // HVC_NOT_FOUND: the list is empty.
  [[nodiscard]] HVC_ReturnStatus RemoveLast() noexcept;
  void Clear() noexcept;

  // Makes room for `count` parameters in one step. Throws std::bad_alloc.
  void Expect(uint64_t count);

  std::span<const NODAL_Param> params() const { return params_; }

 private:
  static constexpr size_t kFirstCapacity = 8;
  static constexpr uint32_t kUnlimited = UINT32_MAX;

  NODAL_ParamList() = default;
  ~NODAL_ParamList();
  HVC_ReturnStatus Append(const NODAL_Param &param);

  std::vector<NODAL_Param> params_;
  uint32_t maxParams_ = kUnlimited;
  uint32_t maxTextBytes_ = kUnlimited;
  uint64_t textBytes_ = 0;  // size of all texts, terminators included
};

namespace platkit {

using ParamList = ::NODAL_ParamList;

struct DestroyParamList {
  void operator()(ParamList *list) const { list->Destroy(); }
};
using OwnedParamList = std::unique_ptr<ParamList, DestroyParamList>;

// Return a parameter that belongs to no list. The caller owns the text.
inline NODAL_Param IntParam(int64_t value) { return {.kind = ParamKind::kInt, .length = 0, .integer = value}; }
inline NODAL_Param TextParam(std::string_view text) {
  return {.kind = ParamKind::kText, .length = static_cast<uint32_t>(text.size()), .chars = text.data()};
}

// The arguments of a read, outermost first.
using Arguments = std::span<const NODAL_Param>;

}  // namespace platkit

#endif  // PLATKIT_PARAM_LIST_H
