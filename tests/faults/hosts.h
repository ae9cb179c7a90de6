// The hosts that the tests run over.
#ifndef TESTS_FAULTS_HOSTS_H
#define TESTS_FAULTS_HOSTS_H

#include "tests/support/standin_host.h"

namespace faults {

// Five groups, all of whose figures differ:
//
//   0 host -+- 1 system
//           +- 4 user ---- 5 web
//           +- 7 idle
testing_support::StandinHost SmallHost();

// The group with this ID in the small host. A test can change it and add it to the host again.
testing_support::Group SmallGroup(int64_t id);

// Virtual machines and user worlds; mail is both. All figures differ. In the records of clients, no byte that the
// reports do not read is zero. The groups:
//
//   0 host -+- 10 web ----- 11 vmm.web      led by 110, its VMM by 111
//           +- 20 shell --- 21 usr.shell    led by 120; clients 120 (copy, move, zero) and 121 (copy, move)
//           +- 30 mail ---- 31 vmm.mail     led by 130, its VMM by 131; client 130 (copy)
testing_support::StandinHost MachinesHost();

// As above, with these leaders of the group and of its VMM.
testing_support::StandinHost MachinesHostLedBy(int64_t group, uint32_t leader, uint32_t vmmLeader);

// Groups whose figures and identifiers, and the numbers in their names, are multiples of their owner's number. 137 is a
// VM and a user world.
// The groups without a kind in parentheses are sub-containers of the group above them.
//
//   0 host -+- 127 (VM) ----+- 254
//           |               +- 139 (user world) -- 278
//           |               +- 149 (VM) ---------- 298
//           +- 131 (user world) -- 262
//           +- 137 (both) -------- 274
testing_support::StandinHost OwnersHost();

// A host that has only page-sharing figures.
testing_support::StandinHost SharingHost();
PShareStatsRecord SharingFigures();

}  // namespace faults

#endif  // TESTS_FAULTS_HOSTS_H
