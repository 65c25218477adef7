#include "platform/foundation/UserDefaults.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <vector>

namespace quillmont {
namespace {

std::vector<std::string> fileNames(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const auto& item : std::filesystem::directory_iterator(folder)) names.push_back(item.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

class UserDefaultsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "quillmont-defaults-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    scratch = pattern;
    prefs = UserDefaults(scratch / "Preferences");
  }
  void TearDown() override {
    unsetenv("QUILLMONT_HOME");
    unsetenv("QUILLMONT_ENTITLEMENTS");
    std::filesystem::remove_all(scratch);
  }
  std::filesystem::path scratch;
  UserDefaults prefs{""};
};

TEST_F(UserDefaultsTest, DataAndTextRoundTripKeepTheirTypesAndCanBeRemoved) {
  const std::string binary("\0\xff{\"a\":1}\n", 10);
  ASSERT_TRUE(prefs.setData(binary, "blob"));
  ASSERT_TRUE(prefs.setString("héllo", "greeting"));
  ASSERT_TRUE(prefs.setData("", "empty"));
  EXPECT_EQ(prefs.data("blob"), binary);
  EXPECT_EQ(UserDefaults(scratch / "Preferences").string("greeting"), "héllo");
  EXPECT_EQ(prefs.data("empty"), "");  // stored and empty is not missing
  EXPECT_EQ(prefs.string("blob"), std::nullopt);
  EXPECT_EQ(prefs.data("greeting"), std::nullopt);
  EXPECT_EQ(prefs.data("missing"), std::nullopt);
  EXPECT_FALSE(prefs.setData("x", ""));

  ASSERT_TRUE(prefs.setString("now text", "blob"));  // replaces the data, type and all
  EXPECT_EQ(prefs.data("blob"), std::nullopt);
  EXPECT_EQ(prefs.string("blob"), "now text");

  EXPECT_TRUE(prefs.removeObject("blob"));
  EXPECT_EQ(prefs.string("blob"), std::nullopt);
  EXPECT_EQ(prefs.string("greeting"), "héllo");
  EXPECT_TRUE(prefs.removeObject("blob"));  // already absent
  EXPECT_TRUE(UserDefaults(scratch / "never-made").removeObject("blob"));
}

TEST_F(UserDefaultsTest, EntriesThatAreNotWholeRegularFilesReadAsAbsent) {
  ASSERT_TRUE(prefs.setString("kept", "real"));
  std::filesystem::create_directories(prefs.fileFor("folder") / "inside");
  std::ofstream(prefs.fileFor("zero")).flush();
  std::ofstream(prefs.fileFor("foreign")) << "xsomething";  // no known type tag
  std::filesystem::create_symlink(prefs.fileFor("real"), prefs.fileFor("link"));
  for (const char* key : {"folder", "zero", "foreign", "link"}) {
    EXPECT_EQ(prefs.data(key), std::nullopt) << key;
    EXPECT_EQ(prefs.string(key), std::nullopt) << key;
  }
  // A folder cannot be replaced or removed; the write leaves no temporary behind.
  EXPECT_FALSE(prefs.setString("value", "folder"));
  EXPECT_FALSE(prefs.removeObject("folder"));
  EXPECT_EQ(fileNames(prefs.folder()), (std::vector<std::string>{"folder", "foreign", "link", "real", "zero"}));
}

TEST_F(UserDefaultsTest, UnsafeKeysAreEncodedAndStayInTheFolder) {
  EXPECT_EQ(prefs.fileFor("widget snapshot"), prefs.folder() / "widget%20snapshot");
  EXPECT_EQ(prefs.fileFor("a/b"), prefs.folder() / "a%2Fb");
  EXPECT_EQ(prefs.fileFor(".."), prefs.folder() / "%2E.");
  EXPECT_EQ(prefs.fileFor("plain-Key_1.v2"), prefs.folder() / "plain-Key_1.v2");
  const std::vector<std::string> keys{"a/b", "..", ".", ".hidden", "with space", "../escape", "/abs",
                                      "%41", "A",  "a%2Fb", "ü", std::string("nul\0byte", 8)};
  for (const auto& key : keys) {
    ASSERT_TRUE(prefs.setString(key, key)) << key;
    EXPECT_EQ(prefs.fileFor(key).parent_path(), prefs.folder()) << key;
    EXPECT_NE(prefs.fileFor(key).filename().string().front(), '.') << key;  // never a hidden or temporary name
  }
  for (const auto& key : keys) EXPECT_EQ(prefs.string(key), key) << key;
  EXPECT_EQ(fileNames(prefs.folder()).size(), keys.size());  // no two keys share a file
  EXPECT_EQ(fileNames(scratch), std::vector<std::string>{"Preferences"});
}

TEST_F(UserDefaultsTest, FilesArePrivateAndWritesLeaveNoTemporaries) {
  for (std::size_t round = 0; round < 20; ++round) {
    ASSERT_TRUE(prefs.setData(std::string(round * 100, 'x'), "key"));
    ASSERT_TRUE(prefs.setString(std::to_string(round), "round"));
  }
  EXPECT_EQ(fileNames(prefs.folder()), (std::vector<std::string>{"key", "round"}));
  struct stat status {};
  ASSERT_EQ(::stat(prefs.folder().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0700u);
  for (const char* key : {"key", "round"}) {
    ASSERT_EQ(::stat(prefs.fileFor(key).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600u) << key;
  }
}

TEST_F(UserDefaultsTest, SuiteOpensOnlyForAGroupTheEntitlementsList) {
  const std::string group = "group.io.quillmont.ledger";
  const auto entitlements = scratch / "entitlements.json";
  setenv("QUILLMONT_HOME", (scratch / "home").c_str(), 1);
  setenv("QUILLMONT_ENTITLEMENTS", entitlements.c_str(), 1);
  EXPECT_EQ(UserDefaults::suite(group), std::nullopt);  // no entitlements at all

  std::ofstream(entitlements) << R"({"com.apple.security.application-groups":["group.other","group.io.quillmont.ledger"]})";
  const auto suite = UserDefaults::suite(group);
  ASSERT_TRUE(suite);
  EXPECT_EQ(suite->folder(), scratch / "home" / group / "Preferences");
  EXPECT_TRUE(UserDefaults::suite("group.other"));
  for (const char* other : {"group.io.quillmont", "GROUP.io.quillmont.ledger", ""}) {
    EXPECT_EQ(UserDefaults::suite(other), std::nullopt) << other;
  }
  ASSERT_TRUE(suite->setString("shared", "key"));
  EXPECT_EQ(UserDefaults::suite(group)->string("key"), "shared");
  EXPECT_EQ(UserDefaults::standard().folder().parent_path().parent_path(), scratch / "home");
  EXPECT_EQ(UserDefaults::standard().string("key"), std::nullopt);

  // Read afresh on every call; a list holding anything but texts grants nothing.
  for (const char* json : {R"({"com.apple.security.application-groups":"group.io.quillmont.ledger"})",
                           R"({"com.apple.security.application-groups":["group.io.quillmont.ledger", 7]})",
                           R"(["group.io.quillmont.ledger"])"}) {
    std::ofstream(entitlements) << json;
    EXPECT_EQ(UserDefaults::suite(group), std::nullopt) << json;
  }
}

// Two processes replace one entry 500 times each while this one reads it:
// every read is exactly one of the values written, never a mix or a part.
TEST_F(UserDefaultsTest, ConcurrentWritersNeverShowHalfAValue) {
  constexpr int writes = 500;
  const auto value = [](int writer, int index) {  // distinct lengths up to 30 kB, closed by a mark
    const auto length = static_cast<std::size_t>(100 + index * 61 + writer * 30);
    return std::to_string(writer) + ":" + std::to_string(index) + ":" + std::string(length, 'x') + "|end";
  };
  std::set<std::string> written{"initial"};
  for (int index = 0; index < writes; ++index) written.insert({value(0, index), value(1, index)});
  ASSERT_TRUE(prefs.setData("initial", "shared"));

  for (int writer = 0; writer < 2; ++writer) {
    const pid_t pid = ::fork();
    ASSERT_NE(pid, -1);
    if (pid == 0) {
      bool ok = true;
      for (int index = 0; index < writes; ++index) ok = prefs.setData(value(writer, index), "shared") && ok;
      ::_exit(ok ? 0 : 1);
    }
  }
  std::size_t reads = 0, strangers = 0;
  for (int running = 2; running > 0;) {
    const auto read = prefs.data("shared");
    ++reads;
    if (!read || written.count(*read) == 0) ++strangers;
    int status = 0;
    if (::waitpid(-1, &status, WNOHANG) > 0) {
      --running;
      EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "a writer failed";
    }
  }
  EXPECT_EQ(strangers, 0u) << "of " << reads << " reads";
  const auto last = prefs.data("shared");
  EXPECT_TRUE(last == value(0, writes - 1) || last == value(1, writes - 1));
  EXPECT_EQ(fileNames(prefs.folder()), std::vector<std::string>{"shared"});
}

}  // namespace
}  // namespace quillmont
