#include "app/files/FileTransfer.h"

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <thread>

#include "app/Refusal.h"

namespace quillmont {
namespace {

class FileTransferTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "quillmont-files-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  std::size_t fileCount() const {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder_), {}));
  }

  std::filesystem::path folder_;
};

TEST_F(FileTransferTest, ReplacesFilesWholeAndLeavesNoTemporaryBehind) {
  const std::string path = (folder_ / "ledger.json").string();
  FileTransfer::writeAtomically(path, "first version, longer than the second");
  FileTransfer::writeAtomically(path, "second");
  EXPECT_EQ(FileTransfer::read(path, FileTransfer::maximumArchiveBytes), "second");
  EXPECT_EQ(fileCount(), 1u);

  // A folder that does not exist: nothing written, the error names the file.
  const std::string missing = (folder_ / "no-such-folder" / "ledger.json").string();
  try {
    FileTransfer::writeAtomically(missing, "text");
    ADD_FAILURE() << "expected a failure";
  } catch (const Refusal& failure) {
    EXPECT_NE(std::string(failure.what()).find(missing), std::string::npos);
  }
  EXPECT_THROW(FileTransfer::read(missing, FileTransfer::maximumArchiveBytes), Refusal);
  // A folder is not a document.
  EXPECT_THROW(FileTransfer::read(folder_.string(), FileTransfer::maximumArchiveBytes), Refusal);
  EXPECT_EQ(fileCount(), 1u);
}

// Files are read whole, past any chunk size; a pipe, whose size is not
// known beforehand, is read whole too.
TEST_F(FileTransferTest, ReadsFilesAndPipesWhole) {
  std::string text;
  for (int line = 0; text.size() < 300000; ++line) text += "line " + std::to_string(line) + '\n';
  const std::string path = (folder_ / "large.json").string();
  FileTransfer::writeAtomically(path, text);
  const std::string read = FileTransfer::read(path, FileTransfer::maximumArchiveBytes);
  EXPECT_EQ(read, text);
  FileTransfer::writeAtomically(path, "");
  EXPECT_EQ(FileTransfer::read(path, FileTransfer::maximumArchiveBytes), "");

  const std::string pipe = (folder_ / "pipe").string();
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::thread writer([&] {
    FILE* stream = std::fopen(pipe.c_str(), "w");
    if (!stream) return;
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fclose(stream);
  });
  const std::string piped = FileTransfer::read(pipe, FileTransfer::maximumArchiveBytes);
  writer.join();
  EXPECT_EQ(piped, text);
}

TEST_F(FileTransferTest, NewFilesArePrivateAndReplacedFilesKeepTheirPermissions) {
  const mode_t previous = ::umask(0);  // the most permissive umask there is
  const std::string fresh = (folder_ / "fresh.json").string();
  FileTransfer::writeAtomically(fresh, "{}");
  EXPECT_EQ(std::filesystem::status(fresh).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  const std::string shared = (folder_ / "shared.csv").string();
  FileTransfer::writeAtomically(shared, "a");
  std::filesystem::permissions(shared, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write |
                                           std::filesystem::perms::group_read);
  FileTransfer::writeAtomically(shared, "b");
  EXPECT_EQ(std::filesystem::status(shared).permissions(), std::filesystem::perms::owner_read |
                                                               std::filesystem::perms::owner_write |
                                                               std::filesystem::perms::group_read);
  ::umask(previous);
}

// A writer killed at any moment leaves the old target or the new one, and no
// temporary beside it.
TEST_F(FileTransferTest, AWriterKilledAnywhereLeavesNoTemporaryBehind) {
  const std::string path = (folder_ / "backup.json").string();
  FileTransfer::writeAtomically(path, "old");
  const std::string large(48 << 20, 'x');
  for (const int delayMicroseconds : {0, 2000, 10000, 30000, 60000}) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      FileTransfer::writeAtomically(path, large);
      ::_exit(0);
    }
    ::usleep(static_cast<useconds_t>(delayMicroseconds));
    ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(fileCount(), 1u) << "after " << delayMicroseconds << " µs";
    const auto size = std::filesystem::file_size(path);
    EXPECT_TRUE(size == 3 || size == large.size());
  }
}

}  // namespace
}  // namespace quillmont
