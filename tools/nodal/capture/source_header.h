// The header of a snapshot of the source that the process reads.
#ifndef NODAL_CAPTURE_SOURCE_HEADER_H
#define NODAL_CAPTURE_SOURCE_HEADER_H

#include <string>

#include "platkit/snapshot/snapshot_file.h"
#include "tools/nodal/capture/pseudonyms.h"

namespace nodal {

// Returns the header of the snapshot or moment `cache`. If `cache` is empty, returns a header that names the host of
// the saved root folder `root`, or the running host if `root` is empty too. The header of a root folder has no time,
// because nobody knows when the folder was saved. Throws a Failure if the snapshot cannot be opened, or has other
// definitions than this program.
platkit::snapshot::Header SourceHeader(const std::string &cache, const std::string &root);

// Replaces the host name and the definitions of a header, because those of a foreign snapshot may contain any text.
// Keeps the time. Throws a Failure unless the time is empty or has the form 2026-03-14T09:26:53Z.
void AnonymizeHeader(platkit::snapshot::Header &header, Pseudonyms &pseudonyms);

}  // namespace nodal

#endif  // NODAL_CAPTURE_SOURCE_HEADER_H
