// WriterLock: makes the writers of one store take turns across processes,
// each from the start of its write transaction until its commit has ended.
//
// SQLite orders the writers itself; the turn is kept for a store that an
// older version of this program still holds in write-ahead-log mode, where
// a checkpoint that starts just after another one has copied the whole log,
// while a third connection commits and restarts the log, can record frames
// as copied that are not (the "WAL-reset" race, mended in SQLite 3.51.3;
// Debian 12 ships 3.40). Taking turns closes it between this program's
// processes, and costs one flock per save.
//
// The lock is an advisory flock on the store's folder (no file of its own),
// independent of SQLite's byte-range locks on the store's files.
#pragma once

#include <chrono>
#include <filesystem>
#include <utility>

namespace quillmont {

class WriterLock {
 public:
  /// Locks nothing: a store in memory has one connection.
  WriterLock() = default;
  explicit WriterLock(std::filesystem::path folder) : folder_(std::move(folder)) {}
  ~WriterLock();
  WriterLock(const WriterLock&) = delete;
  WriterLock& operator=(const WriterLock&) = delete;

  /// Takes the lock, waiting up to `timeout` while another writer holds it;
  /// throws StoreError(busy) when it is still held then. A folder that
  /// cannot be opened is not locked (SQLite's own lock still orders the
  /// writes).
  void acquire(std::chrono::milliseconds timeout);
  /// Lets the next writer in; never throws.
  void release() noexcept;
  bool held() const { return held_; }

 private:
  std::filesystem::path folder_;
  int descriptor_ = -1;  // the folder, opened at the first acquire
  bool held_ = false;
};

}  // namespace quillmont
