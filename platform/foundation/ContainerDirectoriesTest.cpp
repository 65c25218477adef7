#include "platform/foundation/ContainerDirectories.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

namespace quillmont {
namespace {

// Sets environment variables for one test and puts the old values back.
class Environment {
 public:
  ~Environment() {
    for (auto it = saved_.rbegin(); it != saved_.rend(); ++it) {
      if (it->second) {
        setenv(it->first.c_str(), it->second->c_str(), 1);
      } else {
        unsetenv(it->first.c_str());
      }
    }
  }
  void set(const std::string& name, const char* value) {
    const char* old = std::getenv(name.c_str());
    saved_.emplace_back(name, old != nullptr ? std::optional<std::string>(old) : std::nullopt);
    if (value != nullptr) {
      setenv(name.c_str(), value, 1);
    } else {
      unsetenv(name.c_str());
    }
  }

 private:
  std::vector<std::pair<std::string, std::optional<std::string>>> saved_;
};

TEST(ContainerDirectories, DataHomePrecedence) {
  Environment environment;
  environment.set("HOME", "/home/ada");
  environment.set("XDG_DATA_HOME", nullptr);
  environment.set("QUILLMONT_HOME", nullptr);
  EXPECT_EQ(ContainerDirectories::dataHome(), "/home/ada/.local/share/quillmont");

  environment.set("XDG_DATA_HOME", "relative/data");  // not absolute: ignored
  EXPECT_EQ(ContainerDirectories::dataHome(), "/home/ada/.local/share/quillmont");
  environment.set("XDG_DATA_HOME", "/srv/data");
  EXPECT_EQ(ContainerDirectories::dataHome(), "/srv/data/quillmont");

  environment.set("QUILLMONT_HOME", "");  // empty: ignored
  EXPECT_EQ(ContainerDirectories::dataHome(), "/srv/data/quillmont");
  environment.set("QUILLMONT_HOME", "/tmp/qm");
  EXPECT_EQ(ContainerDirectories::dataHome(), "/tmp/qm");
  EXPECT_EQ(ContainerDirectories::groupContainer("group.org.example.bank"), "/tmp/qm/group.org.example.bank");
  EXPECT_EQ(ContainerDirectories::processContainer(), "/tmp/qm/platform_tests");
}

}  // namespace
}  // namespace quillmont
