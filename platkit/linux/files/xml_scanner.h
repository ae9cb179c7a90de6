// Finds elements in simple XML text, such as the files of libvirt.
#ifndef PLATKIT_LINUX_FILES_XML_SCANNER_H
#define PLATKIT_LINUX_FILES_XML_SCANNER_H

#include <string>
#include <string_view>

namespace platkit {

// Visits the elements in the order of their start tags. The text may be hostile: malformed text, a document type
// declaration and very deep nesting end the scan, as the end of the text does. Entities are not resolved.
class XmlScanner {
 public:
  explicit XmlScanner(std::string_view text) : rest_(text) {}

  // Goes to the next start tag. Returns false at the end.
  bool Next();

  // The path of the element: the names of the elements around it and its own name, such as "/domain/devices/disk".
  // Valid until the next call.
  std::string_view path() const { return path_; }

  // The value of an attribute of the element, as written. Empty if the element does not have it.
  std::string_view Attribute(std::string_view name) const;

  // The characters between the start tag and the next tag, as written.
  std::string_view text() const { return rest_.substr(0, rest_.find('<')); }

 private:
  bool SkipTo(std::string_view end);
  bool TakeStartTag();
  bool TakeEndTag();
  bool LeaveElement(std::string_view name);
  bool EndScan();

  std::string_view rest_;        // after the last tag
  std::string_view attributes_;  // of the last start tag
  std::string path_;
  bool isEmpty_ = false;  // the last start tag was also an end tag, as in <a/>
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_FILES_XML_SCANNER_H
