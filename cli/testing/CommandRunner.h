// CommandRunner: runs the real `quillmont` program for black-box tests, each
// runner on a data home of its own (a temporary folder, removed afterwards)
// with an entitlements file that grants the shared application group, in a
// fixed time zone and locale unless a test sets others.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace quillmont::testing {

struct CommandResult {
  int exitCode = -1;
  std::string out;
  std::string err;
};

class CommandRunner {
 public:
  static constexpr std::string_view defaultTimeZone = "Europe/Berlin";
  static constexpr std::string_view defaultLocale = "de_DE";

  CommandRunner();
  ~CommandRunner();
  CommandRunner(const CommandRunner&) = delete;
  CommandRunner& operator=(const CommandRunner&) = delete;

  const std::filesystem::path& home() const { return home_; }
  /// Sets (or, with an empty value, removes) a variable of the program's environment.
  void setEnvironment(const std::string& name, const std::string& value);

  /// Runs `quillmont arguments...` with `input` on its standard input and waits for it.
  CommandResult run(const std::vector<std::string>& arguments, std::string_view input = {}) const;

  /// Points this test process at the program's store: its data home and entitlements.
  void shareStoreWithThisProcess() const;

 private:
  std::filesystem::path home_;
  std::map<std::string, std::string> environment_;
};

/// Writes `contents` to folder/name and returns the path.
std::filesystem::path writeTemporaryFile(const std::filesystem::path& folder, std::string_view name,
                                         std::string_view contents);
std::string readFile(const std::filesystem::path& path);

}  // namespace quillmont::testing
