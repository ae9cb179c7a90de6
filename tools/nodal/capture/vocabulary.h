// Texts that an anonymized capture keeps, because they say nothing about a host.
#ifndef NODAL_CAPTURE_VOCABULARY_H
#define NODAL_CAPTURE_VOCABULARY_H

#include <string_view>

namespace nodal {

// Whether the library itself uses exactly this text as a name or tag of a group, a memory state, a type of remapping,
// or the name of a memory node's buddy allocator. `what` says which: the kind of an instance, such as "buddy", or the
// name of a record with a text, such as "GroupTagRecord".
bool IsOwnWord(std::string_view what, std::string_view text);

// Whether the text is a time in the form of a snapshot's header: 2026-03-14T09:26:53Z.
bool IsHeaderTime(std::string_view text);

}  // namespace nodal

#endif  // NODAL_CAPTURE_VOCABULARY_H
