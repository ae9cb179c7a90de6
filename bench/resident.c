/*
 * resident MB: a process in the guise of a virtual machine, to be started as qemu-system-x86_64. A line on its input
 * makes that much memory resident, or lets it go again; it answers with a line when that is done, and ends with its
 * input.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>

int main(int argc, char **argv) {
  const size_t size = argc < 2 ? 0 : strtoull(argv[argc - 1], NULL, 10) << 20;
  char *memory = mmap(NULL, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (memory == MAP_FAILED) {
    perror("resident");
    return EXIT_FAILURE;
  }
  /* Small pages: what grows with memory grows with their number. */
  madvise(memory, size, MADV_NOHUGEPAGE);
  char line[16];
  for (int resident = 0; fgets(line, sizeof line, stdin) != NULL; resident = !resident) {
    if (resident) {
      madvise(memory, size, MADV_DONTNEED);
    } else {
      for (size_t i = 0; i < size; i += 4096)
        memory[i] = 1;
    }
    puts("done");
    fflush(stdout);
  }
  return EXIT_SUCCESS;
}
