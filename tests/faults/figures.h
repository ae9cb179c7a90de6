// Test figures whose values show which record and field they come from.
#ifndef TESTS_FAULTS_FIGURES_H
#define TESTS_FAULTS_FIGURES_H

#include <cstdint>

namespace faults {

class Figures {
 public:
  // Figures that are `first` plus the number of the field, for example 2001 and 2002.
  Figures(uint64_t first) : Figures(first, first, false) {}

  // As above, for the memory client with this number. The wide figures start at a larger number than the narrow ones:
  // the seventh figure of client 110 is 110000000007 or 110007.
  static Figures OfClient(uint64_t client) { return {client * 1000000000, client * 1000, false}; }

  // Multiples of the owner's number. Sums and differences of these figures are multiples, too.
  static Figures MultiplesOf(uint64_t owner) { return {owner, owner, true}; }

  Figures Times(uint64_t factor) const { return {wide_ * factor, narrow_ * factor, multiples_}; }

  uint64_t Wide(uint64_t number) const { return multiples_ ? wide_ * number : wide_ + number; }
  uint32_t Narrow(uint32_t number) const {
    return static_cast<uint32_t>(multiples_ ? narrow_ * number : narrow_ + number);
  }
  int32_t Signed(uint32_t number) const { return static_cast<int32_t>(Narrow(number)); }
  uint8_t Byte(uint8_t number) const { return static_cast<uint8_t>(multiples_ ? narrow_ : narrow_ / 1000 + number); }

 private:
  Figures(uint64_t wide, uint64_t narrow, bool multiples) : wide_(wide), narrow_(narrow), multiples_(multiples) {}

  uint64_t wide_;
  uint64_t narrow_;
  bool multiples_;
};

}  // namespace faults

#endif  // TESTS_FAULTS_FIGURES_H
