// A preloaded library (LD_PRELOAD) for the fault-injection test: it makes
// the file system refuse one of the program's writes, and optionally every
// one after it, the way a failing or full disk does.
//
// Counted are the calls that change files: write, pwrite (and the 64-bit
// forms), fsync, fdatasync, ftruncate and rename; writes and truncations
// count only on regular files and folders (a terminal, pipe or socket is
// not the disk). The environment says what to do:
//   QUILLMONT_FAULT_AT=n       the n-th such call (from 1) fails with EIO
//   QUILLMONT_FAULT_ALWAYS=1   and so does every call after it
//   QUILLMONT_FAULT_COUNT=file at exit, how many calls were made is written
//                              to `file` (so a run without a fault counts
//                              the points an operation can fail at)
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

std::atomic<long> calls{0};

long faultAt() {
  static const long at = [] {
    const char* text = std::getenv("QUILLMONT_FAULT_AT");
    return text != nullptr ? std::atol(text) : 0L;
  }();
  return at;
}

bool always() {
  static const bool value = [] {
    const char* text = std::getenv("QUILLMONT_FAULT_ALWAYS");
    return text != nullptr && std::strcmp(text, "1") == 0;
  }();
  return value;
}

template <typename Function>
Function real(const char* name) {
  return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

bool onDisk(int descriptor) {
  struct stat status {};
  return ::fstat(descriptor, &status) == 0 && (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode));
}

/// Counts one call; true when it is to fail (errno is then EIO).
bool refused() {
  const long number = ++calls;
  const long at = faultAt();
  if (at <= 0 || number < at || (number > at && !always())) return false;
  errno = EIO;
  return true;
}

struct CountAtExit {
  ~CountAtExit() {
    const char* file = std::getenv("QUILLMONT_FAULT_COUNT");
    if (file == nullptr) return;
    using Open = int (*)(const char*, int, ...);
    using Write = ssize_t (*)(int, const void*, size_t);
    const int descriptor = real<Open>("open")(file, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (descriptor < 0) return;
    char text[32];
    const int length = std::snprintf(text, sizeof text, "%ld\n", calls.load());
    if (length > 0) (void)real<Write>("write")(descriptor, text, static_cast<size_t>(length));
    ::close(descriptor);
  }
} countAtExit;

}  // namespace

extern "C" {

ssize_t write(int descriptor, const void* buffer, size_t size) {
  static const auto next = real<ssize_t (*)(int, const void*, size_t)>("write");
  if (onDisk(descriptor) && refused()) return -1;
  return next(descriptor, buffer, size);
}

ssize_t writev(int descriptor, const struct iovec* vectors, int count) {
  static const auto next = real<ssize_t (*)(int, const struct iovec*, int)>("writev");
  if (onDisk(descriptor) && refused()) return -1;
  return next(descriptor, vectors, count);
}

ssize_t pwrite(int descriptor, const void* buffer, size_t size, off_t offset) {
  static const auto next = real<ssize_t (*)(int, const void*, size_t, off_t)>("pwrite");
  if (onDisk(descriptor) && refused()) return -1;
  return next(descriptor, buffer, size, offset);
}

ssize_t pwrite64(int descriptor, const void* buffer, size_t size, off64_t offset) {
  static const auto next = real<ssize_t (*)(int, const void*, size_t, off64_t)>("pwrite64");
  if (onDisk(descriptor) && refused()) return -1;
  return next(descriptor, buffer, size, offset);
}

int fsync(int descriptor) {
  static const auto next = real<int (*)(int)>("fsync");
  if (refused()) return -1;
  return next(descriptor);
}

int fdatasync(int descriptor) {
  static const auto next = real<int (*)(int)>("fdatasync");
  if (refused()) return -1;
  return next(descriptor);
}

int ftruncate(int descriptor, off_t length) {
  static const auto next = real<int (*)(int, off_t)>("ftruncate");
  if (onDisk(descriptor) && refused()) return -1;
  return next(descriptor, length);
}

int ftruncate64(int descriptor, off64_t length) {
  static const auto next = real<int (*)(int, off64_t)>("ftruncate64");
  if (onDisk(descriptor) && refused()) return -1;
  return next(descriptor, length);
}

int rename(const char* from, const char* to) {
  static const auto next = real<int (*)(const char*, const char*)>("rename");
  if (refused()) return -1;
  return next(from, to);
}

int renameat(int fromFolder, const char* from, int toFolder, const char* to) {
  static const auto next = real<int (*)(int, const char*, int, const char*)>("renameat");
  if (refused()) return -1;
  return next(fromFolder, from, toFolder, to);
}

}  // extern "C"
