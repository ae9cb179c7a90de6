// A process whose name determines its figures. load-N has N MB of resident memory, which is locked if possible. Its
// limit of address space is 1024 MB higher. The process changes its name when the memory and the limit are ready, and
// exits after MICROSECONDS:
//
//   named_load N MICROSECONDS [FILE]
//
// FILE is the cgroup.procs file of a control group, which the process enters first.
#define _GNU_SOURCE
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

int main(int argc, char **argv) {
  if (argc < 3) return 2;
  const size_t megabytes = (size_t)atoi(argv[1]);
  if (argc > 3) {
    const int group = open(argv[3], O_WRONLY);
    if (group < 0 || write(group, "0", 1) != 1) return 1;
    close(group);
  }
  const size_t most = (megabytes + 1024) << 20;
  const struct rlimit limit = {.rlim_cur = most, .rlim_max = most};
  if (setrlimit(RLIMIT_AS, &limit) != 0) return 1;
  char *memory = mmap(NULL, megabytes << 20, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) return 1;
  memset(memory, 1, megabytes << 20);
  (void)!mlock(memory, megabytes << 20);
  char name[16];
  snprintf(name, sizeof name, "load-%zu", megabytes);
  if (prctl(PR_SET_NAME, name) != 0) return 1;
  usleep((useconds_t)atoi(argv[2]));
  return 0;
}
