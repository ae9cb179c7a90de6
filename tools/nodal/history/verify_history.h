// Checks the files of a history for damage.
#ifndef NODAL_HISTORY_VERIFY_HISTORY_H
#define NODAL_HISTORY_VERIFY_HISTORY_H

#include <string>

namespace nodal {

// Reads every sample, and prints the problems and a summary. Returns whether there are none. An incomplete frame at the
// end of a segment is printed, but is no problem: it is being written, or the recorder was killed. Throws a Failure.
bool VerifyHistory(const std::string &folder);

}  // namespace nodal

#endif  // NODAL_HISTORY_VERIFY_HISTORY_H
