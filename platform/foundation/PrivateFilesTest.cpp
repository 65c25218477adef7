#include "platform/foundation/PrivateFiles.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace quillmont {
namespace {

class PrivateFilesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "quillmont-private-XXXXXX").string();
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
    umask_ = ::umask(0);  // the most generous umask: nothing may depend on it
  }
  void TearDown() override {
    ::umask(umask_);
    std::filesystem::remove_all(folder_);
  }
  static unsigned mode(const std::filesystem::path& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 01000;
  }
  static std::string contents(const std::filesystem::path& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
  }
  std::size_t entries() const {
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_)) count += entry.exists() ? 1 : 0;
    return count;
  }

  std::filesystem::path folder_;
  mode_t umask_ = 0;
};

TEST_F(PrivateFilesTest, FoldersAndNewFilesAreTheUsersAloneWhateverTheUmask) {
  const auto file = folder_ / "a" / "b" / "c" / "note";
  ASSERT_TRUE(PrivateFiles::writeAtomically(file, "first"));
  EXPECT_EQ(contents(file), "first");
  EXPECT_EQ(mode(file), 0600u);
  for (const auto& made : {folder_ / "a", folder_ / "a" / "b", folder_ / "a" / "b" / "c"}) EXPECT_EQ(mode(made), 0700u);
  EXPECT_EQ(entries(), 4u);  // no temporary left beside it

  // A replaced file keeps the permissions its owner gave it.
  ASSERT_EQ(::chmod(file.c_str(), 0640), 0);
  ASSERT_TRUE(PrivateFiles::writeAtomically(file, std::string(100'000, 'x')));
  EXPECT_EQ(contents(file).size(), 100'000u);
  EXPECT_EQ(mode(file), 0640u);
  EXPECT_EQ(entries(), 4u);

  // An existing folder is left as it is.
  ASSERT_EQ(::chmod((folder_ / "a").c_str(), 0755), 0);
  EXPECT_TRUE(PrivateFiles::createFolder(folder_ / "a" / "d"));
  EXPECT_EQ(mode(folder_ / "a"), 0755u);
  EXPECT_EQ(mode(folder_ / "a" / "d"), 0700u);
}

TEST_F(PrivateFilesTest, AWriteThatCannotBeMadeLeavesEverythingAsItWas) {
  std::ofstream(folder_ / "plain") << "a file, not a folder";
  errno = 0;
  EXPECT_FALSE(PrivateFiles::createFolder(folder_ / "plain" / "below"));
  EXPECT_EQ(errno, ENOTDIR);
  EXPECT_FALSE(PrivateFiles::writeAtomically(folder_ / "plain" / "below" / "note", "text"));

  // A folder in the file's place cannot be replaced: it stays, with what it holds.
  std::filesystem::create_directory(folder_ / "taken");
  std::ofstream(folder_ / "taken" / "inside") << "kept";
  EXPECT_FALSE(PrivateFiles::writeAtomically(folder_ / "taken", "text"));
  EXPECT_EQ(contents(folder_ / "taken" / "inside"), "kept");
  EXPECT_EQ(entries(), 3u);  // no temporary left behind
}

}  // namespace
}  // namespace quillmont
