// Texts that an anonymized capture keeps, because they say nothing about a host.
#ifndef NODAL_CAPTURE_VOCABULARY_H
#define NODAL_CAPTURE_VOCABULARY_H

#include <string_view>

namespace nodal {

// Whether the text is exactly one of the words that the library itself uses at this place: a kind of group, a memory
// state, a type of remapping, or a buddy allocator of a memory node. `what` is the kind of an instance, such as
// "buddy", or the name of a record with a text, such as "GroupTagRecord".
bool IsOwnWord(std::string_view what, std::string_view text);

// Whether the text is a time in the form of a snapshot's header: 2026-03-14T09:26:53Z.
bool IsHeaderTime(std::string_view text);

}  // namespace nodal

#endif  // NODAL_CAPTURE_VOCABULARY_H
