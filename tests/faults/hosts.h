// The hosts that the tests run over.
#ifndef TESTS_FAULTS_HOSTS_H
#define TESTS_FAULTS_HOSTS_H

#include "tests/support/standin_host.h"

namespace faults {

// Five groups, no two figures of which are alike:
//
//   0 host -+- 1 system
//           +- 4 user ---- 5 web
//           +- 7 idle
testing_support::StandinHost SmallHost();

// The group of that ID of the small host, to change and add again.
testing_support::Group SmallGroup(int64_t id);

// A host with page-sharing figures alone.
testing_support::StandinHost SharingHost();
PShareStatsRecord SharingFigures();

}  // namespace faults

#endif  // TESTS_FAULTS_HOSTS_H
