#include "platform/store/WriterLock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/store/StoreError.h"

namespace quillmont {
namespace {

using std::chrono::milliseconds;

class WriterLockTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "quillmont-writer-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  static bool isBusy(WriterLock& lock) {
    try {
      lock.acquire(milliseconds(20));
      return false;
    } catch (const StoreError& error) {
      EXPECT_EQ(error.code(), StoreError::Code::busy);
      return true;
    }
  }

  std::filesystem::path folder_;
};

// Each lock opens the folder for itself, so two in one process exclude each
// other exactly as two processes do.
TEST_F(WriterLockTest, WritersTakeTurns) {
  WriterLock first(folder_);
  first.acquire(milliseconds(0));
  first.acquire(milliseconds(0));  // held already: nothing to wait for
  EXPECT_TRUE(first.held());
  {
    WriterLock second(folder_);
    EXPECT_TRUE(isBusy(second));
    EXPECT_FALSE(second.held());
    first.release();
    EXPECT_FALSE(first.held());
    second.acquire(milliseconds(0));
    EXPECT_TRUE(isBusy(first));
  }  // going away lets the next writer in
  first.acquire(milliseconds(0));
  EXPECT_TRUE(first.held());
}

TEST_F(WriterLockTest, WithoutAFolderNothingIsLocked) {
  WriterLock inMemory;
  inMemory.acquire(milliseconds(0));
  EXPECT_FALSE(inMemory.held());
  WriterLock missing(folder_ / "gone");
  missing.acquire(milliseconds(0));
  EXPECT_FALSE(missing.held());
  inMemory.release();
  missing.release();
}

}  // namespace
}  // namespace quillmont
