#include "platform/store/WriterLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <thread>

#include "platform/store/StoreError.h"

namespace quillmont {

WriterLock::~WriterLock() {
  if (descriptor_ >= 0) ::close(descriptor_);  // releases the lock too
}

void WriterLock::acquire(std::chrono::milliseconds timeout) {
  if (held_ || folder_.empty()) return;
  if (descriptor_ < 0) {
    descriptor_ = ::open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor_ < 0) return;
  }
  // Writers hold the lock for a few milliseconds: poll, backing off, rather
  // than block without a deadline behind a process that stopped holding it.
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  auto pause = std::chrono::microseconds(200);
  while (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
    if (errno == EINTR) continue;
    if (errno != EWOULDBLOCK) return;  // a file system without flock
    if (std::chrono::steady_clock::now() >= deadline) {
      throw StoreError(StoreError::Code::busy,
                       "the store in " + folder_.string() + " is being changed by another program; try again");
    }
    std::this_thread::sleep_for(pause);
    pause = std::min(pause * 2, std::chrono::microseconds(20'000));
  }
  held_ = true;
}

void WriterLock::release() noexcept {
  if (!held_) return;
  ::flock(descriptor_, LOCK_UN);
  held_ = false;
}

}  // namespace quillmont
