// The header of a snapshot of the source that the process reads.
#ifndef NODAL_CAPTURE_SOURCE_HEADER_H
#define NODAL_CAPTURE_SOURCE_HEADER_H

#include <string>

#include "platkit/snapshot/snapshot_file.h"
#include "tools/nodal/capture/pseudonyms.h"

namespace nodal {

// A snapshot at `cache` has a header of its own. Otherwise, the header names the host below the folder `root`, or the
// running host if `root` is empty. The time at which a root folder was saved is unknown. Throws a Failure if the
// snapshot cannot be opened, or has other definitions than this program.
platkit::snapshot::Header SourceHeader(const std::string &cache, const std::string &root);

// Replaces the texts of a header, which may contain anything in a foreign snapshot. Keeps the time, and throws a
// Failure if that has another form than 2026-03-14T09:26:53Z.
void AnonymizeHeader(platkit::snapshot::Header &header, Pseudonyms &pseudonyms);

}  // namespace nodal

#endif  // NODAL_CAPTURE_SOURCE_HEADER_H
