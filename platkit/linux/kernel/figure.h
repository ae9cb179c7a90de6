// A figure of the kernel: a value, or the reason why there is no value. Arithmetic keeps absent, unreadable, unlimited
// and zero apart until the figure is stored in a cell of a record.
#ifndef PLATKIT_LINUX_KERNEL_FIGURE_H
#define PLATKIT_LINUX_KERNEL_FIGURE_H

#include <cstdint>

#include "platkit/records.h"

namespace platkit {

class Figure {
 public:
  // Absent: this kernel has no such figure.
  constexpr Figure() = default;
  constexpr explicit Figure(uint64_t value) : kind_(Kind::kValue), value_(value) {}
  static constexpr Figure Unreadable() { return Figure(Kind::kUnreadable); }
  static constexpr Figure Unlimited() { return Figure(Kind::kUnlimited); }

  constexpr bool isAbsent() const { return kind_ == Kind::kAbsent; }
  constexpr Figure IfAbsent(Figure other) const { return isAbsent() ? other : *this; }

  // The value to store in a cell: all ones if the figure is unreadable or unlimited.
  constexpr uint64_t Cell(uint64_t ifAbsent) const {
    if (kind_ == Kind::kValue) return value_;
    return isAbsent() ? ifAbsent : HVC_KB_NONE;
  }

  // As Cell(), for a cell of 8 bits: all ones if the value does not fit.
  constexpr uint8_t Cell8(uint8_t ifAbsent) const {
    const uint64_t cell = Cell(ifAbsent);
    return cell > UINT8_MAX ? UINT8_MAX : static_cast<uint8_t>(cell);
  }

  // As Cell(), for a cell of 32 bits: all ones if the value does not fit.
  constexpr uint32_t Cell32(uint32_t ifAbsent) const {
    const uint64_t cell = Cell(ifAbsent);
    return cell > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(cell);
  }

  // An absent figure adds nothing.
  friend constexpr Figure operator+(Figure a, Figure b) {
    if (a.isAbsent()) return b;
    if (b.isAbsent()) return a;
    if (a.kind_ != Kind::kValue || b.kind_ != Kind::kValue) return Worse(a, b);
    uint64_t sum = 0;
    return __builtin_add_overflow(a.value_, b.value_, &sum) ? Unreadable() : Figure(sum);
  }

  // The result is at least 0, because the figures may change between the two reads. An absent `b` subtracts nothing.
  friend constexpr Figure operator-(Figure a, Figure b) {
    if (a.isAbsent() || b.isAbsent()) return a;
    if (a.kind_ == Kind::kValue && b.kind_ == Kind::kUnlimited) return Figure(0);
    if (a.kind_ != Kind::kValue || b.kind_ != Kind::kValue) return Worse(a, b);
    return Figure(a.value_ > b.value_ ? a.value_ - b.value_ : 0);
  }

  friend constexpr Figure operator*(Figure a, uint64_t factor) {
    if (a.kind_ != Kind::kValue) return a;
    uint64_t product = 0;
    return __builtin_mul_overflow(a.value_, factor, &product) ? Unreadable() : Figure(product);
  }

  friend constexpr Figure operator/(Figure a, uint64_t divisor) {
    return a.kind_ == Kind::kValue ? Figure(a.value_ / divisor) : a;
  }

  // The lower of two bounds. An absent bound does not count.
  friend constexpr Figure Lower(Figure a, Figure b) {
    if (a.kind_ == Kind::kUnreadable || b.kind_ == Kind::kUnreadable) return Unreadable();
    if (a.kind_ != Kind::kValue) return b.isAbsent() ? a : b;
    if (b.kind_ != Kind::kValue) return a;
    return a.value_ < b.value_ ? a : b;
  }

  // The higher of two bounds. An absent bound does not count.
  friend constexpr Figure Higher(Figure a, Figure b) {
    if (a.isAbsent()) return b;
    if (b.isAbsent()) return a;
    if (a.kind_ != Kind::kValue || b.kind_ != Kind::kValue) return Worse(a, b);
    return a.value_ > b.value_ ? a : b;
  }

  friend constexpr bool operator==(Figure, Figure) = default;

 private:
  enum class Kind : uint8_t { kAbsent, kValue, kUnlimited, kUnreadable };

  constexpr explicit Figure(Kind kind) : kind_(kind) {}

  // REQUIRES: neither figure is absent, and at most one is a value.
  static constexpr Figure Worse(Figure a, Figure b) {
    return a.kind_ == Kind::kUnreadable || b.kind_ == Kind::kUnreadable ? Unreadable() : Unlimited();
  }

  Kind kind_ = Kind::kAbsent;
  uint64_t value_ = 0;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_FIGURE_H
