#include "tools/nodal/page/compression.h"

#include <sodium.h>
#include <zlib.h>

#include <new>

namespace nodal {

std::string CompressedBase64(std::string_view text) {
  uLongf size = compressBound(text.size());
  std::string bytes(size, '\0');
  // The only failure is a lack of memory, because the buffer is large enough.
  if (compress2(reinterpret_cast<Bytef *>(bytes.data()), &size, reinterpret_cast<const Bytef *>(text.data()),
                text.size(), Z_BEST_COMPRESSION) != Z_OK) {
    throw std::bad_alloc();
  }
  bytes.resize(size);
  return Base64(bytes);
}

std::string Base64(std::string_view bytes) {
  std::string text(sodium_base64_encoded_len(bytes.size(), sodium_base64_VARIANT_ORIGINAL), '\0');
  sodium_bin2base64(text.data(), text.size(), reinterpret_cast<const unsigned char *>(bytes.data()), bytes.size(),
                    sodium_base64_VARIANT_ORIGINAL);
  text.pop_back();  // the terminator
  return text;
}

}  // namespace nodal
