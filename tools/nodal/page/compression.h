// Compressed data as text.
#ifndef NODAL_PAGE_COMPRESSION_H
#define NODAL_PAGE_COMPRESSION_H

#include <string>
#include <string_view>

namespace nodal {

// Returns the text compressed in the zlib format, which browsers call "deflate", and encoded in base64. Throws
// std::bad_alloc if memory runs out.
std::string CompressedBase64(std::string_view text);

// Returns the bytes in base64. Throws std::bad_alloc if memory runs out.
std::string Base64(std::string_view bytes);

}  // namespace nodal

#endif  // NODAL_PAGE_COMPRESSION_H
