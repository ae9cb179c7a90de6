/*
 * A process with every kind of memory that the reports distinguish. Started under the name and with the arguments of
 * QEMU, it looks like a virtual machine. The variable LOAD selects another load:
 *   fill:N    N MB of anonymous memory
 *   mix:N     the same, in pages that can be compressed to half their size
 *   press:N   like fill, written again and again
 *
 * When it is ready, it creates the file "ready.PID" in the current folder and sleeps until it is killed.
 */
#define _GNU_SOURCE

#include <fcntl.h>
#include <linux/io_uring.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

enum { kMB = 1 << 20, kPage = 4096 };

static void Check(int good, const char *what) {
  if (good) return;
  perror(what);
  exit(1);
}

static char *Map(size_t size, int flags) {
  char *memory = mmap(NULL, size, PROT_READ | PROT_WRITE, MAP_ANONYMOUS | flags, -1, 0);
  Check(memory != MAP_FAILED, "mmap");
  return memory;
}

/* Gives each page different contents. */
static void Fill(char *memory, size_t size) {
  for (size_t i = 0; i < size; i += kPage) {
    memset(memory + i, (int)(i / kPage), kPage);
    snprintf(memory + i, 64, "page %zu of %d", i / kPage, getpid());
  }
}

/* Half of every page is random. */
static void Mix(char *memory, size_t size) {
  unsigned long random = 88172645463325252;
  for (size_t i = 0; i < size; i += sizeof random) {
    if (i % kPage < kPage / 2) continue;
    random ^= random << 13;
    random ^= random >> 7;
    random ^= random << 17;
    memcpy(memory + i, &random, sizeof random);
  }
}

static void Merge(void) {
  char *memory = Map(8 * kMB, MAP_PRIVATE);
  memset(memory, 1, 4 * kMB);
  memset(memory + 4 * kMB, 2, 4 * kMB);
  Check(madvise(memory, 8 * kMB, MADV_MERGEABLE) == 0, "MADV_MERGEABLE");
}

static void Lock(void) {
  char *memory = Map(4 * kMB, MAP_PRIVATE);
  Check(mlock(memory, 4 * kMB) == 0, "mlock");
  Fill(memory, 4 * kMB);
}

static void Share(void) { Fill(Map(2 * kMB, MAP_SHARED), 2 * kMB); }

/* A buffer registered with a ring stays pinned. */
static void Pin(void) {
  struct iovec buffer = {.iov_base = Map(kMB, MAP_PRIVATE), .iov_len = kMB};
  struct io_uring_params parameters = {0};
  const int ring = (int)syscall(SYS_io_uring_setup, 1, &parameters);
  Check(ring >= 0, "io_uring_setup");
  Check(syscall(SYS_io_uring_register, ring, IORING_REGISTER_BUFFERS, &buffer, 1) == 0, "IORING_REGISTER_BUFFERS");
}

static void SwapOut(void) {
  char *memory = Map(6 * kMB, MAP_PRIVATE);
  Check(madvise(memory, 6 * kMB, MADV_NOHUGEPAGE) == 0, "MADV_NOHUGEPAGE");
  Fill(memory, 6 * kMB);
  Check(madvise(memory, 6 * kMB, MADV_PAGEOUT) == 0, "MADV_PAGEOUT");
}

static void UseHugePages(void) { Fill(Map(4 * kMB, MAP_PRIVATE | MAP_HUGETLB), 4 * kMB); }

static void UseTransparentHugePages(void) {
  char *memory = Map(8 * kMB, MAP_PRIVATE);
  Check(madvise(memory, 8 * kMB, MADV_HUGEPAGE) == 0, "MADV_HUGEPAGE");
  Fill(memory, 8 * kMB);
}

static void UseEveryKind(void) {
  Merge();
  Lock();
  Share();
  Pin();
  SwapOut();
  UseHugePages();
  UseTransparentHugePages();
}

static void TellReady(void) {
  char ready[32];
  snprintf(ready, sizeof ready, "ready.%d", getpid());
  Check(open(ready, O_CREAT | O_WRONLY, 0644) >= 0, ready);
}

int main(void) {
  const char *load = getenv("LOAD");
  char *memory = NULL;
  size_t size = 0;
  if (load == NULL) {
    UseEveryKind();
  } else {
    const char *megabytes = strchr(load, ':');
    Check(megabytes != NULL, load);
    size = strtoul(megabytes + 1, NULL, 10) * kMB;
    memory = Map(size, MAP_PRIVATE);
    Check(madvise(memory, size, MADV_NOHUGEPAGE) == 0, "MADV_NOHUGEPAGE");
    (*load == 'm' ? Mix : Fill)(memory, size);
  }
  TellReady();
  for (;;) {
    if (load != NULL && *load == 'p') {
      Fill(memory, size);
    } else {
      pause();
    }
  }
}
