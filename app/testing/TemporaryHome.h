// TemporaryHome: a data home of its own for a test of the application layer
// (a temporary folder, removed afterwards), with entitlements that grant the
// shared application group. `use()` points this process at it; several
// homes in one test stand for several machines.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace quillmont::testing {

class TemporaryHome {
 public:
  TemporaryHome() {
    std::string pattern = (std::filesystem::temp_directory_path() / "quillmont-app-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) std::abort();
    folder_ = pattern;
    std::ofstream(folder_ / "entitlements.json")
        << R"({"com.apple.developer.team-identifier": "TESTS", )"
        << R"("com.apple.security.application-groups": ["group.io.quillmont.ledger"]})";
    use();
  }
  ~TemporaryHome() {
    unsetenv("QUILLMONT_HOME");
    unsetenv("QUILLMONT_ENTITLEMENTS");
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  TemporaryHome(const TemporaryHome&) = delete;
  TemporaryHome& operator=(const TemporaryHome&) = delete;

  void use() const {
    setenv("QUILLMONT_HOME", (folder_ / "data").c_str(), 1);
    setenv("QUILLMONT_ENTITLEMENTS", (folder_ / "entitlements.json").c_str(), 1);
  }
  const std::filesystem::path& folder() const { return folder_; }

 private:
  std::filesystem::path folder_;
};

}  // namespace quillmont::testing
