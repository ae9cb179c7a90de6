// The value of an option on QEMU's command line, such as "memory-backend-ram,id=ram,size=4G". Management tools also
// write it as a JSON object: {"qom-type":"memory-backend-ram","id":"ram","size":4294967296}.
#ifndef PLATKIT_LINUX_KERNEL_QEMU_PROPERTIES_H
#define PLATKIT_LINUX_KERNEL_QEMU_PROPERTIES_H

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace platkit {

class QemuProperties {
 public:
  // In a list with commas, the first property may lack its key; the key is then `firstKey`. Two commas mean a literal
  // comma. Malformed JSON has no properties.
  QemuProperties(std::string_view text, std::string_view firstKey);

  // The last value of the key; empty if there is none. JSON numbers and booleans are returned as texts, such as "true".
  // JSON arrays and objects have empty values.
  std::string_view ValueOf(std::string_view key) const;

  // Whether the value is "on" or a synonym of it.
  bool IsOn(std::string_view key) const;

 private:
  void ParseCommas(std::string_view text, std::string_view firstKey);
  bool ParseJson(std::string_view text);

  std::vector<std::pair<std::string, std::string>> properties_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_QEMU_PROPERTIES_H
