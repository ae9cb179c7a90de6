/*
 * floor_lookups SNAPSHOT KEYS OUTPUT: lower bound for a report on a snapshot. Looks up the recorded keys in order,
 * copies each value, and writes the bytes of the report.
 */
#include <cdb.h>
#include <fcntl.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

static char value[1 << 24];

static const char *Map(const char *path, size_t *size) {
  struct stat about;
  const int file = open(path, O_RDONLY);
  if (file < 0 || fstat(file, &about) != 0) {
    perror(path);
    exit(EXIT_FAILURE);
  }
  *size = (size_t)about.st_size;
  if (*size == 0) return "";
  const char *bytes = mmap(NULL, *size, PROT_READ, MAP_PRIVATE, file, 0);
  if (bytes == MAP_FAILED) {
    perror(path);
    exit(EXIT_FAILURE);
  }
  return bytes;
}

int main(int argc, char **argv) {
  if (argc != 4) return EXIT_FAILURE;
  struct cdb database;
  const int snapshot = open(argv[1], O_RDONLY);
  if (snapshot < 0 || cdb_init(&database, snapshot) != 0) {
    perror(argv[1]);
    return EXIT_FAILURE;
  }
  size_t keys_size, output_size;
  const char *keys = Map(argv[2], &keys_size);
  const char *output = Map(argv[3], &output_size);
  for (size_t i = 0; i < keys_size;) {
    uint32_t length;
    memcpy(&length, keys + i, sizeof length);
    if (cdb_find(&database, keys + i + sizeof length, length) > 0 && cdb_datalen(&database) <= sizeof value) {
      cdb_read(&database, value, cdb_datalen(&database), cdb_datapos(&database));
    }
    i += sizeof length + length;
  }
  while (output_size > 0) {
    const ssize_t written = write(STDOUT_FILENO, output, output_size < 65536 ? output_size : 65536);
    if (written < 0) {
      perror("write");
      return EXIT_FAILURE;
    }
    output += written;
    output_size -= (size_t)written;
  }
  return EXIT_SUCCESS;
}
