// Checks the files of a history for damage.
#ifndef NODAL_HISTORY_VERIFY_HISTORY_H
#define NODAL_HISTORY_VERIFY_HISTORY_H

#include <string>

namespace nodal {

// Reads every sample, and prints the problems and a summary. Returns true if there are no problems. Also prints an
// incomplete frame at the end of a segment, but this is no problem: the frame is being written, or the recorder was
// killed. Throws a Failure.
bool VerifyHistory(const std::string &folder);

}  // namespace nodal

#endif  // NODAL_HISTORY_VERIFY_HISTORY_H
