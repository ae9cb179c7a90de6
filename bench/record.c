/*
 * Preloaded into a report: records the keys that it looks up and the files that it reads, so that the floors can repeat
 * them.
 *
 * BENCH_KEYS is the file for the keys: the length of each key in 32 bits, then the key. BENCH_FILES is the file for
 * files and folders, with one line per open: the number of reads that returned data, and the path. Reads at the end of
 * a file and failed opens are omitted.
 */
#define _GNU_SOURCE
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <limits.h>
#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/types.h>
#include <unistd.h>

struct cdb;

static FILE *keys, *files;

/* For each open file or folder, the number of reads that returned data. */
static unsigned useful_reads[1024];

#define EXPORT __attribute__((visibility("default")))
#define NEXT(name) ((__typeof__(&(name)))(uintptr_t)dlsym(RTLD_NEXT, #name))

__attribute__((constructor)) static void Start(void) {
  const char *keys_path = getenv("BENCH_KEYS");
  const char *files_path = getenv("BENCH_FILES");
  if (keys_path != NULL) keys = fopen(keys_path, "we");
  if (files_path != NULL) files = fopen(files_path, "we");
}

__attribute__((destructor)) static void Finish(void) {
  if ((keys != NULL && fclose(keys) != 0) || (files != NULL && fclose(files) != 0)) {
    perror("record");
    _exit(EXIT_FAILURE);
  }
  keys = files = NULL; /* the report's own libraries may still close files */
}

EXPORT int cdb_find(struct cdb *database, const void *key, unsigned length);
int cdb_find(struct cdb *database, const void *key, unsigned length) {
  if (keys != NULL) {
    const uint32_t size = length;
    fwrite(&size, sizeof size, 1, keys);
    fwrite(key, 1, length, keys);
  }
  return NEXT(cdb_find)(database, key, length);
}

static ssize_t Count(int descriptor, ssize_t got) {
  if (got > 0 && descriptor < (int)(sizeof useful_reads / sizeof *useful_reads)) ++useful_reads[descriptor];
  return got;
}

EXPORT ssize_t read(int descriptor, void *buffer, size_t size) {
  return Count(descriptor, NEXT(read)(descriptor, buffer, size));
}

EXPORT ssize_t getdents64(int descriptor, void *buffer, size_t size) {
  return Count(descriptor, NEXT(getdents64)(descriptor, buffer, size));
}

EXPORT int close(int descriptor) {
  if (files != NULL && descriptor >= 0 && descriptor < (int)(sizeof useful_reads / sizeof *useful_reads) &&
      useful_reads[descriptor] > 0) {
    char link[64], path[PATH_MAX];
    snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    const ssize_t length = readlink(link, path, sizeof path);
    if (length > 0) fprintf(files, "%u %.*s\n", useful_reads[descriptor], (int)length, path);
    useful_reads[descriptor] = 0;
  }
  return NEXT(close)(descriptor);
}
