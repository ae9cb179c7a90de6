/* crowd COUNT: starts COUNT idle processes and prints a line when all exist. They end when crowd itself ends. */
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <unistd.h>

int main(int argc, char **argv) {
  const pid_t first = getpid();
  for (int left = argc == 2 ? atoi(argv[1]) : 0; left > 0; --left) {
    const pid_t child = fork();
    if (child < 0) {
      perror("crowd");
      return EXIT_FAILURE;
    }
    if (child == 0) {
      prctl(PR_SET_PDEATHSIG, SIGKILL);
      if (getppid() != first) return EXIT_FAILURE;
      for (;;)
        pause();
    }
  }
  puts("ready");
  fflush(stdout);
  for (;;)
    pause();
}
