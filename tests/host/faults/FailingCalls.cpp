// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Preloaded into the program, lets one call of the system's library fail: the disk is full, the
// disk is broken, there is no memory.
//
//     LD_PRELOAD=libvelorn_failing_calls.so FAILING_CALL=write FAILING_AT=7 velorn run
//     flight.velorn
//
// FAILING_CALL is open (for writing), write, fsync, rename or allocate (64 kB and more); with
// FAILING_AT=0 nothing fails. FAILING_COUNT names a file that gets the number of such calls.
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

// NOLINTBEGIN(bugprone-reserved-identifier): the names of the C library
extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

enum Kind { Open, Write, Fsync, Rename, Allocate, None };
constexpr const char* names[] = {"open", "write", "fsync", "rename", "allocate"};
constexpr std::size_t large = 65536;  // [bytes]

Kind failing = None;
long place = 0;
std::atomic<long> calls{0};

/// @return whether this call is the one
bool fails(Kind kind) {
  return kind == failing && ++calls == place;
}

bool allocationFails(std::size_t bytes) {
  if (bytes < large || !fails(Allocate)) return false;
  errno = ENOMEM;
  return true;
}

template <typename Function>
Function next(Function, const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

__attribute__((constructor)) void begin() {
  const char* const kind = std::getenv("FAILING_CALL");
  for (int i = 0; kind && i < None; ++i) {
    if (std::strcmp(kind, names[i]) == 0) failing = static_cast<Kind>(i);
  }
  if (const char* const at = std::getenv("FAILING_AT")) place = std::strtol(at, nullptr, 10);
  unsetenv("LD_PRELOAD");  // gnuplot is not what is tested
}

__attribute__((destructor)) void end() {
  const char* const path = std::getenv("FAILING_COUNT");
  const long count = calls;
  failing = None;
  if (FILE* const file = path ? std::fopen(path, "w") : nullptr) {
    std::fprintf(file, "%ld\n", count);
    std::fclose(file);
  }
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" {

void* malloc(std::size_t bytes) {
  return allocationFails(bytes) ? nullptr : __libc_malloc(bytes);
}
void* calloc(std::size_t count, std::size_t bytes) {
  return allocationFails(count * bytes) ? nullptr : __libc_calloc(count, bytes);
}
void* realloc(void* old, std::size_t bytes) {
  return allocationFails(bytes) ? nullptr : __libc_realloc(old, bytes);
}
void* memalign(std::size_t alignment, std::size_t bytes) {
  return allocationFails(bytes) ? nullptr : __libc_memalign(alignment, bytes);
}
void* aligned_alloc(std::size_t alignment, std::size_t bytes) {
  return memalign(alignment, bytes);
}
int posix_memalign(void** result, std::size_t alignment, std::size_t bytes) {
  *result = memalign(alignment, bytes);
  return *result ? 0 : ENOMEM;
}

int open(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const auto mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  if ((flags & O_ACCMODE) != O_RDONLY && fails(Open)) {
    errno = ENOSPC;
    return -1;
  }
  static const auto real = next(&open, "open");
  return real(path, flags, mode);
}
int open64(const char*, int, ...) __attribute__((alias("open")));

FILE* fopen(const char* path, const char* mode) {
  if (std::strpbrk(mode, "wa+") && fails(Open)) {
    errno = ENOSPC;
    return nullptr;
  }
  static const auto real = next(&fopen, "fopen");
  return real(path, mode);
}
FILE* fopen64(const char*, const char*) __attribute__((alias("fopen")));

// The three streams of the program are no files of the run.
ssize_t write(int file, const void* bytes, std::size_t count) {
  if (file > 2 && fails(Write)) {
    errno = ENOSPC;
    return -1;
  }
  static const auto real = next(&write, "write");
  return real(file, bytes, count);
}
ssize_t writev(int file, const iovec* parts, int count) {
  if (file > 2 && fails(Write)) {
    errno = ENOSPC;
    return -1;
  }
  static const auto real = next(&writev, "writev");
  return real(file, parts, count);
}
ssize_t pwrite(int file, const void* bytes, std::size_t count, off_t at) {
  if (fails(Write)) {
    errno = ENOSPC;
    return -1;
  }
  static const auto real = next(&pwrite, "pwrite");
  return real(file, bytes, count, at);
}
ssize_t pwrite64(int, const void*, std::size_t, off64_t) __attribute__((alias("pwrite")));

int fsync(int file) {
  if (fails(Fsync)) {
    errno = EIO;
    return -1;
  }
  static const auto real = next(&fsync, "fsync");
  return real(file);
}

int rename(const char* from, const char* to) {
  if (fails(Rename)) {
    errno = EIO;
    return -1;
  }
  static const auto real = next(&rename, "rename");
  return real(from, to);
}

}  // extern "C"
#pragma GCC visibility pop
