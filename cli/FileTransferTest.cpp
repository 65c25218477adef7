#include "cli/FileTransfer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <iterator>

#include "cli/CommandFailure.h"

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
  EXPECT_EQ(FileTransfer::read(path), "second");
  EXPECT_EQ(fileCount(), 1u);

  // A folder that does not exist: nothing written, the error names the file.
  const std::string missing = (folder_ / "no-such-folder" / "ledger.json").string();
  try {
    FileTransfer::writeAtomically(missing, "text");
    ADD_FAILURE() << "expected a failure";
  } catch (const CommandFailure& failure) {
    EXPECT_NE(std::string(failure.what()).find(missing), std::string::npos);
  }
  EXPECT_THROW(FileTransfer::read(missing), CommandFailure);
  EXPECT_THROW(FileTransfer::read(folder_.string()), CommandFailure);  // a folder is not a document
  EXPECT_EQ(fileCount(), 1u);
}

}  // namespace
}  // namespace quillmont
