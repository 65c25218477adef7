#include "platform/foundation/ContainerDirectories.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace quillmont::ContainerDirectories {
namespace {

const char* environmentValue(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && *value != '\0' ? value : nullptr;
}

std::filesystem::path homeDirectory() {
  if (const char* home = environmentValue("HOME")) return home;
  // No HOME (a service, a stripped environment): the password database knows.
  if (const passwd* entry = getpwuid(getuid()); entry != nullptr && entry->pw_dir != nullptr) return entry->pw_dir;
  return "/";
}

std::string programName() {
  std::error_code error;
  const auto executable = std::filesystem::read_symlink("/proc/self/exe", error);
  if (!error && executable.has_filename()) return executable.filename().string();
  return program_invocation_short_name;
}

}  // namespace

std::filesystem::path dataHome() {
  if (const char* home = environmentValue("QUILLMONT_HOME")) return home;
  // The XDG base directory rules ignore relative paths.
  const char* xdg = environmentValue("XDG_DATA_HOME");
  const std::filesystem::path dataFolder =
      xdg != nullptr && xdg[0] == '/' ? std::filesystem::path(xdg) : homeDirectory() / ".local" / "share";
  return dataFolder / "quillmont";
}

std::filesystem::path groupContainer(std::string_view groupIdentifier) { return dataHome() / groupIdentifier; }

std::filesystem::path processContainer() { return dataHome() / programName(); }

}  // namespace quillmont::ContainerDirectories
