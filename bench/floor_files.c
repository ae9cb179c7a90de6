/*
 * floor_files LIST: lower bound for a report on the running host. Opens, reads and closes the recorded files and
 * folders, and makes only the reads that returned data.
 */
#define _GNU_SOURCE
#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static char buffer[65536];

int main(int argc, char **argv) {
  FILE *list = argc == 2 ? fopen(argv[1], "re") : NULL;
  if (list == NULL) return EXIT_FAILURE;
  unsigned reads;
  char path[PATH_MAX];
  while (fscanf(list, "%u %4095[^\n]", &reads, path) == 2) {
    const int file = openat(AT_FDCWD, path, O_RDONLY | O_CLOEXEC);
    if (file < 0) continue; /* its group or process has ended since */
    for (; reads > 0; --reads) {
      if (read(file, buffer, sizeof buffer) < 0 && errno == EISDIR) {
        if (getdents64(file, buffer, sizeof buffer) < 0) break;
      }
    }
    close(file);
  }
  return EXIT_SUCCESS;
}
