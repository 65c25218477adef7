#include "cli/testing/CommandRunner.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace quillmont::testing {
namespace {

void check(bool ok, const char* what) {
  if (!ok) throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
}

// Writes `input` to `writeEnd` while draining both output pipes, so that no
// side blocks on a full pipe.
void exchange(int writeEnd, std::string_view input, int outEnd, int errEnd, CommandResult& result) {
  std::size_t written = 0;
  if (input.empty()) {
    close(writeEnd);
    writeEnd = -1;
  }
  std::array<char, 65536> buffer{};
  int open = 2;
  while (open > 0 || writeEnd >= 0) {
    std::array<pollfd, 3> fds{{{outEnd, POLLIN, 0}, {errEnd, POLLIN, 0}, {writeEnd, POLLOUT, 0}}};
    check(poll(fds.data(), fds.size(), -1) >= 0 || errno == EINTR, "poll");
    for (int i = 0; i < 2; ++i) {
      if (fds[i].fd < 0 || (fds[i].revents & (POLLIN | POLLHUP | POLLERR)) == 0) continue;
      const ssize_t count = read(fds[i].fd, buffer.data(), buffer.size());
      if (count > 0) {
        (i == 0 ? result.out : result.err).append(buffer.data(), static_cast<std::size_t>(count));
      } else if (count == 0 || errno != EINTR) {
        close(fds[i].fd);
        (i == 0 ? outEnd : errEnd) = -1;
        --open;
      }
    }
    if (writeEnd >= 0 && (fds[2].revents & (POLLOUT | POLLERR | POLLHUP)) != 0) {
      const ssize_t count = write(writeEnd, input.data() + written, input.size() - written);
      if (count > 0) written += static_cast<std::size_t>(count);
      if (count < 0 && errno != EINTR && errno != EAGAIN) written = input.size();
      if (written == input.size()) {
        close(writeEnd);
        writeEnd = -1;
      }
    }
  }
}

}  // namespace

CommandRunner::CommandRunner() {
  std::string pattern = (std::filesystem::temp_directory_path() / "quillmont-cli-XXXXXX").string();
  check(mkdtemp(pattern.data()) != nullptr, "mkdtemp");
  home_ = pattern;
  std::ofstream(home_ / "entitlements.json")
      << R"({"com.apple.developer.team-identifier": "TESTS", )"
      << R"("com.apple.security.application-groups": ["group.io.quillmont.ledger"]})";
  environment_["QUILLMONT_HOME"] = (home_ / "data").string();
  environment_["QUILLMONT_ENTITLEMENTS"] = (home_ / "entitlements.json").string();
  environment_["TZ"] = defaultTimeZone;
  environment_["LC_ALL"] = defaultLocale;
  environment_["NO_COLOR"] = "";
}

CommandRunner::~CommandRunner() {
  std::error_code ignored;
  std::filesystem::remove_all(home_, ignored);
}

void CommandRunner::setEnvironment(const std::string& name, const std::string& value) { environment_[name] = value; }

std::unique_ptr<CommandRunner::Invocation> CommandRunner::invocation(const std::string& program,
                                                                     const std::vector<std::string>& arguments) const {
  auto call = std::make_unique<Invocation>();
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string_view entry(*variable);
    const std::string name(entry.substr(0, entry.find('=')));
    if (!environment_.contains(name) && name != "LANG" && name != "LC_TIME") call->environment.emplace_back(entry);
  }
  for (const auto& [name, value] : environment_) {
    if (!value.empty()) call->environment.push_back(name + "=" + value);
  }
  for (auto& entry : call->environment) call->envp.push_back(entry.data());
  call->envp.push_back(nullptr);
  call->arguments.push_back(program);
  call->arguments.insert(call->arguments.end(), arguments.begin(), arguments.end());
  for (auto& argument : call->arguments) call->argv.push_back(argument.data());
  call->argv.push_back(nullptr);
  return call;
}

std::unique_ptr<RunningCommand> CommandRunner::start(const std::vector<std::string>& arguments) const {
  const auto call = invocation(QUILLMONT_BINARY, arguments);
  int out[2];
  check(pipe2(out, O_CLOEXEC) == 0, "pipe");
  const pid_t child = fork();
  check(child >= 0, "fork");
  if (child == 0) {
    dup2(out[1], STDOUT_FILENO);
    const int null = open("/dev/null", O_RDWR);
    dup2(null, STDIN_FILENO);
    dup2(null, STDERR_FILENO);
    signal(SIGPIPE, SIG_DFL);
    execve(call->argv[0], call->argv.data(), call->envp.data());
    _exit(127);
  }
  close(out[1]);
  return std::make_unique<RunningCommand>(child, out[0]);
}

RunningCommand::~RunningCommand() {
  if (!ended_) stop(SIGTERM);
  close(output_);
}

int RunningCommand::stop(int signal) {
  kill(process_, signal);
  int status = 0;
  while (waitpid(process_, &status, 0) < 0 && errno == EINTR) {
  }
  ended_ = true;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::optional<std::string> RunningCommand::readLine(int timeoutMilliseconds) {
  for (;;) {
    if (const auto end = buffered_.find('\n'); end != std::string::npos) {
      std::string line = buffered_.substr(0, end);
      buffered_.erase(0, end + 1);
      return line;
    }
    pollfd watched{output_, POLLIN, 0};
    const int ready = poll(&watched, 1, timeoutMilliseconds);
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) return std::nullopt;
    std::array<char, 4096> buffer{};
    const ssize_t count = read(output_, buffer.data(), buffer.size());
    if (count <= 0) return std::nullopt;
    buffered_.append(buffer.data(), static_cast<std::size_t>(count));
  }
}

CommandResult CommandRunner::run(const std::vector<std::string>& arguments, std::string_view input) const {
  return wait(*invocation(QUILLMONT_BINARY, arguments), input);
}

CommandResult CommandRunner::runProgram(const std::string& program, const std::vector<std::string>& arguments) const {
  const auto path = findProgram(program);
  if (!path) throw std::runtime_error(program + " is not on PATH");
  return wait(*invocation(path->string(), arguments), {});
}

CommandResult CommandRunner::wait(const Invocation& call, std::string_view input) const {
  auto argv = call.argv;
  auto envp = call.envp;
  int in[2], out[2], err[2];
  check(pipe2(in, O_CLOEXEC) == 0 && pipe2(out, O_CLOEXEC) == 0 && pipe2(err, O_CLOEXEC) == 0, "pipe");
  const pid_t child = fork();
  check(child >= 0, "fork");
  if (child == 0) {
    dup2(in[0], STDIN_FILENO);
    dup2(out[1], STDOUT_FILENO);
    dup2(err[1], STDERR_FILENO);
    signal(SIGPIPE, SIG_DFL);
    execve(argv[0], argv.data(), envp.data());
    _exit(127);
  }
  close(in[0]);
  close(out[1]);
  close(err[1]);
  signal(SIGPIPE, SIG_IGN);

  CommandResult result;
  exchange(in[1], input, out[0], err[0], result);
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return result;
}

void CommandRunner::shareStoreWithThisProcess() const {
  setenv("QUILLMONT_HOME", environment_.at("QUILLMONT_HOME").c_str(), 1);
  setenv("QUILLMONT_ENTITLEMENTS", environment_.at("QUILLMONT_ENTITLEMENTS").c_str(), 1);
}

std::filesystem::path writeTemporaryFile(const std::filesystem::path& folder, std::string_view name,
                                         std::string_view contents) {
  const auto path = folder / name;
  std::ofstream(path, std::ios::binary) << contents;
  return path;
}

std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream contents;
  contents << file.rdbuf();
  return contents.str();
}

std::optional<std::filesystem::path> findProgram(std::string_view name) {
  const char* path = std::getenv("PATH");
  std::string_view folders = path != nullptr ? path : "/usr/bin:/bin";
  while (!folders.empty()) {
    const auto end = folders.find(':');
    const auto candidate = std::filesystem::path(folders.substr(0, end)) / name;
    if (access(candidate.c_str(), X_OK) == 0 && std::filesystem::is_regular_file(candidate)) return candidate;
    folders = end == std::string_view::npos ? std::string_view() : folders.substr(end + 1);
  }
  return std::nullopt;
}

ZoneAtHour zoneWhereItIsNow(int hour) {
  const std::time_t now = std::time(nullptr);
  std::tm utc{};
  gmtime_r(&now, &utc);
  // Hours east of UTC, within the -12 ... +14 that Etc/GMT zones offer; their
  // names count the other way round.
  int east = ((hour - utc.tm_hour) % 24 + 24) % 24;
  if (east > 14) east -= 24;
  ZoneAtHour result;
  result.zone = east == 0 ? "Etc/GMT" : (east > 0 ? "Etc/GMT-" : "Etc/GMT+") + std::to_string(std::abs(east));
  const auto day = [&](int daysBack) {
    const std::time_t local = now + east * 3600 - daysBack * 86400;
    std::tm civil{};
    gmtime_r(&local, &civil);
    char text[16];
    std::strftime(text, sizeof text, "%Y-%m-%d", &civil);
    return std::string(text);
  };
  result.today = day(0);
  result.yesterday = day(1);
  return result;
}

}  // namespace quillmont::testing
