// A library that is preloaded into a program and fails some of its allocations. With FAIL_ALLOCATION=12, the twelfth
// call of malloc, calloc or realloc in the process fails. Calls from the C library count, too. FAIL_ALLOCATION=12+ also
// fails all later calls. On exit, the library writes the number of calls to the file that COUNT_ALLOCATIONS names.
#define _GNU_SOURCE

#include <errno.h>
#include <fcntl.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

// glibc's own names, for programs that replace malloc.
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *block, size_t size);

static bool isCounting;
static unsigned long allocations;
static unsigned long firstFailure;
static bool lasts;

__attribute__((constructor)) static void Start(void) {
  const char *wanted = getenv("FAIL_ALLOCATION");
  if (wanted != NULL) {
    char *end = NULL;
    firstFailure = strtoul(wanted, &end, 10);
    lasts = *end == '+';
  }
  isCounting = true;
}

__attribute__((destructor)) static void Finish(void) {
  isCounting = false;
  const char *path = getenv("COUNT_ALLOCATIONS");
  if (path == NULL) return;
  const int fd = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (fd >= 0) dprintf(fd, "%lu", allocations);
  if (fd >= 0) close(fd);
}

static bool Fails(void) {
  if (!isCounting) return false;
  ++allocations;
  if (firstFailure == 0 || (lasts ? allocations < firstFailure : allocations != firstFailure)) return false;
  errno = ENOMEM;
  return true;
}

__attribute__((visibility("default"))) void *malloc(size_t size) { return Fails() ? NULL : __libc_malloc(size); }

__attribute__((visibility("default"))) void *calloc(size_t count, size_t size) {
  return Fails() ? NULL : __libc_calloc(count, size);
}

__attribute__((visibility("default"))) void *realloc(void *block, size_t size) {
  return Fails() ? NULL : __libc_realloc(block, size);
}
