/*
 * resident MB: a process that looks like a virtual machine; copy it to qemu-system-x86_64 and start it as root. For
 * each line on its input, it allocates or releases MB megabytes of memory, and prints a line when done. It exits at the
 * end of its input.
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
  /* Small pages show a cost that grows with the number of pages. */
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
