#include "desktop/DesktopAutostart.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <system_error>

#include "platform/foundation/PrivateFiles.h"

namespace quillmont::DesktopAutostart {
namespace {

std::filesystem::path configHome() {
  if (const char* config = std::getenv("XDG_CONFIG_HOME"); config != nullptr && *config == '/') return config;
  const char* home = std::getenv("HOME");
  if (home == nullptr || *home == '\0') throw std::runtime_error("neither XDG_CONFIG_HOME nor HOME is set");
  return std::filesystem::path(home) / ".config";
}

std::filesystem::path thisProgram() {
  std::error_code error;
  const auto path = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? std::filesystem::path("quillmont-widget") : path;
}

// Desktop entries quote arguments with double quotes and backslashes.
std::string quoted(const std::string& text) {
  std::string result = "\"";
  for (const char c : text) {
    if (c == '"' || c == '`' || c == '$' || c == '\\') result += '\\';
    result += c;
  }
  return result + '"';
}

}  // namespace

std::filesystem::path entryFile(const std::string& instance) {
  return configHome() / "autostart" / (instance.empty() ? "quillmont-widget.desktop"
                                                          : "quillmont-widget-" + instance + ".desktop");
}

std::string set(bool enable, const std::string& size, const std::string& instance) {
  const std::filesystem::path file = entryFile(instance);
  std::error_code error;
  if (!enable) {
    if (!std::filesystem::remove(file, error) && error) {
      throw std::runtime_error("cannot remove " + file.string() + ": " + error.message());
    }
    return "The widget no longer starts at login (" + file.string() + " removed).";
  }
  std::string command = quoted(thisProgram().string());
  if (!size.empty()) command += " --size " + size;
  if (!instance.empty()) command += " --instance " + instance;
  const std::string entry =
      "[Desktop Entry]\n"
      "Type=Application\n"
      "Name=Quillmont widget\n"
      "Comment=Your time bank on the desktop\n"
      "Exec=" + command + "\n"
      "Icon=quillmont\n"
      "Terminal=false\n"
      "X-GNOME-Autostart-enabled=true\n";
  if (!PrivateFiles::writeAtomically(file, entry)) {
    throw std::runtime_error("cannot write " + file.string() + ": " + std::strerror(errno));
  }
  return "The widget starts at login (" + file.string() + ").";
}

}  // namespace quillmont::DesktopAutostart
