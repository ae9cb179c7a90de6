// What is kept of a file that several records share.
#ifndef PLATKIT_LINUX_FILES_KEPT_H
#define PLATKIT_LINUX_FILES_KEPT_H

#include <cstdint>
#include <optional>
#include <utility>

namespace platkit {

// Each record is made once from what is kept: one that is asked for again has the file read anew.
template <typename Figures>
class Kept {
 public:
  Kept() = default;
  explicit Kept(Figures figures) : figures_(std::move(figures)) {}

  // What `read` gives, or gave, for the record of a number below 32.
  template <typename Read>
  Figures &For(uint32_t record, Read read) {
    const uint32_t bit = uint32_t{1} << record;
    if ((given_ & bit) != 0) figures_.reset();
    if (!figures_) {
      figures_ = read();
      given_ = 0;
    }
    given_ |= bit;
    return *figures_;
  }

  // The same for what is no record.
  template <typename Read>
  Figures &Any(Read read) {
    if (!figures_) figures_ = read();
    return *figures_;
  }

 private:
  std::optional<Figures> figures_;
  uint32_t given_ = 0;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_FILES_KEPT_H
