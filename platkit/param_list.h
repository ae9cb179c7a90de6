// Parameters and parameter lists: what the opaque types of nodal.h are made of.
#ifndef PLATKIT_PARAM_LIST_H
#define PLATKIT_PARAM_LIST_H

#include <cstdint>
#include <span>
#include <string_view>

#include "platkit/nodal.h"

namespace platkit {

enum class ParamKind : uint32_t { kInt, kText };

}  // namespace platkit

struct NODAL_Param {
  platkit::ParamKind kind;
  uint32_t length;  // of a text, without its terminator
  union {
    int64_t integer;
    const char *chars;
  };

  std::string_view text() const { return {chars, length}; }
};

// Lists live on the C heap and throw nothing: an operation that runs out of memory answers with a status.
//
// A list starts with room inside itself, so that arguments need no allocation of their own, and destroyed lists are
// kept for the next maker. Texts stand in blocks that never move, because callers hold pointers to them.
struct NODAL_ParamList {
 public:
  NODAL_ParamList(const NODAL_ParamList &) = delete;
  NODAL_ParamList &operator=(const NODAL_ParamList &) = delete;

  // Null if memory is short.
  static NODAL_ParamList *Make();
  static NODAL_ParamList *MakeFixed(uint32_t count, uint32_t textBytes);
  void Destroy();

  [[nodiscard]] HVC_ReturnStatus Add(int64_t value);
  [[nodiscard]] HVC_ReturnStatus Add(std::string_view text);
  [[nodiscard]] HVC_ReturnStatus RemoveLast();
  void Clear();

  // Makes room for `count` parameters in one step. If memory is short, that shows at the Add which needs it.
  void Expect(uint64_t count);

  std::span<const NODAL_Param> params() const { return {params_, count_}; }

 private:
  struct TextBlock {
    TextBlock *older;
    uint32_t capacity;
    uint32_t used;

    char *bytes() { return reinterpret_cast<char *>(this + 1); }
  };

  static constexpr uint32_t kInlineParams = 8;
  static constexpr uint32_t kInlineText = 240;
  static constexpr uint32_t kMostKeptParams = 1024;  // a spare list does not sit on more
  static constexpr uint32_t kUnlimited = UINT32_MAX;

  friend struct SpareLists;

  NODAL_ParamList();
  ~NODAL_ParamList();
  HVC_ReturnStatus Append(const NODAL_Param &param);
  bool Grow(uint64_t capacity);
  char *TextRoom(uint64_t bytes);

  NODAL_Param *params_ = inlineParams_;
  uint32_t count_ = 0;
  uint32_t capacity_ = kInlineParams;
  uint32_t mostParams_ = kUnlimited;  // what a list of fixed room takes
  uint32_t mostText_ = kUnlimited;
  uint64_t textBytes_ = 0;  // held now, terminators included
  TextBlock *newest_;
  NODAL_ParamList *nextSpare_ = nullptr;
  NODAL_Param inlineParams_[kInlineParams];
  struct {
    TextBlock block;
    char bytes[kInlineText];
  } inlineText_;
};

namespace platkit {

using ParamList = ::NODAL_ParamList;

// The arguments of a read, outermost first.
using Arguments = std::span<const NODAL_Param>;

}  // namespace platkit

#endif  // PLATKIT_PARAM_LIST_H
