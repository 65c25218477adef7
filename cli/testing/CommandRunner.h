// CommandRunner: runs the real `quillmont` program for black-box tests, each
// runner on a data home of its own (a temporary folder, removed afterwards)
// with an entitlements file that grants the shared application group, in a
// fixed time zone and locale unless a test sets others.
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmont::testing {

struct CommandResult {
  int exitCode = -1;
  std::string out;
  std::string err;
};

/// A program left running (`quillmont widget show --follow`): its standard
/// output is read a line at a time; it is killed when this goes away.
class RunningCommand {
 public:
  RunningCommand(int processIdentifier, int outputDescriptor)
      : process_(processIdentifier), output_(outputDescriptor) {}
  ~RunningCommand();
  RunningCommand(const RunningCommand&) = delete;
  RunningCommand& operator=(const RunningCommand&) = delete;

  /// The next line of standard output without its line feed; nothing when
  /// none came within `timeoutMilliseconds` or the program ended.
  std::optional<std::string> readLine(int timeoutMilliseconds = 10'000);
  /// Sends `signal` and waits for the program to end; its exit status, or
  /// 128 + the signal that ended it.
  int stop(int signal);

 private:
  bool ended_ = false;
  int process_;
  int output_;
  std::string buffered_;
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
  /// Runs another program (found on PATH) in the same environment: a shell
  /// that completes a quillmont command line, say.
  CommandResult runProgram(const std::string& program, const std::vector<std::string>& arguments) const;
  /// Starts `quillmont arguments...` and leaves it running; standard error is discarded.
  std::unique_ptr<RunningCommand> start(const std::vector<std::string>& arguments) const;

  /// Points this test process at the program's store: its data home and entitlements.
  void shareStoreWithThisProcess() const;

 private:
  /// The program's environment and arguments as execve wants them.
  struct Invocation {
    std::vector<std::string> environment;
    std::vector<std::string> arguments;
    std::vector<char*> envp;
    std::vector<char*> argv;
  };
  std::unique_ptr<Invocation> invocation(const std::string& program, const std::vector<std::string>& arguments) const;
  CommandResult wait(const Invocation& call, std::string_view input) const;

  std::filesystem::path home_;
  std::map<std::string, std::string> environment_;
};

/// A zone of fixed offset (Etc/GMT±N) in which the wall clock now shows the
/// hour `hour` (0 to 23), with its today and yesterday as YYYY-MM-DD: for
/// tests of times typed relative to now, which the program reads from the
/// real clock.
struct ZoneAtHour {
  std::string zone;
  std::string today;
  std::string yesterday;
};
ZoneAtHour zoneWhereItIsNow(int hour);

/// Writes `contents` to folder/name and returns the path.
std::filesystem::path writeTemporaryFile(const std::filesystem::path& folder, std::string_view name,
                                         std::string_view contents);
std::string readFile(const std::filesystem::path& path);
/// The program's path when it is on PATH.
std::optional<std::filesystem::path> findProgram(std::string_view name);

}  // namespace quillmont::testing
