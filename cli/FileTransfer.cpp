#include "cli/FileTransfer.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iostream>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "cli/CommandFailure.h"

namespace quillmont::FileTransfer {
namespace {

[[noreturn]] void fail(const std::string& what, const std::string& name, int error) {
  throw CommandFailure(what + " " + name + ": " + std::strerror(error));
}

bool writeAll(int descriptor, std::string_view contents) {
  while (!contents.empty()) {
    const ssize_t count = ::write(descriptor, contents.data(), contents.size());
    if (count < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    contents.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

mode_t fileMode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

}  // namespace

bool isStandardStream(std::string_view name) { return name.empty() || name == "-"; }

std::string read(const std::string& name) {
  const bool standardInput = isStandardStream(name);
  const int descriptor = standardInput ? STDIN_FILENO : ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) fail("cannot open", name, errno);
  std::string contents;
  struct stat status {};
  if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
    contents.reserve(static_cast<std::size_t>(status.st_size));
  }
  char buffer[65536];
  while (true) {
    const ssize_t count = ::read(descriptor, buffer, sizeof buffer);
    if (count == 0) break;
    if (count < 0) {
      if (errno == EINTR) continue;
      const int error = errno;
      if (!standardInput) ::close(descriptor);
      fail("cannot read", standardInput ? std::string("standard input") : name, error);
    }
    contents.append(buffer, static_cast<std::size_t>(count));
  }
  if (!standardInput) ::close(descriptor);
  return contents;
}

void write(const std::string& name, std::string_view contents) {
  if (isStandardStream(name)) {
    std::cout.write(contents.data(), static_cast<std::streamsize>(contents.size()));
    std::cout.flush();
    if (!std::cout) throw CommandFailure("cannot write to standard output");
    return;
  }
  writeAtomically(name, contents);
}

void writeAtomically(const std::string& path, std::string_view contents) {
  const std::filesystem::path target(path);
  const std::filesystem::path folder = target.has_parent_path() ? target.parent_path() : ".";
  std::string hiddenName(1, '.');
  hiddenName += target.filename().string();
  hiddenName += ".XXXXXX";
  std::string temporary = (folder / hiddenName).string();
  const int descriptor = mkostemp(temporary.data(), O_CLOEXEC);
  if (descriptor < 0) fail("cannot write", path, errno);
  const bool written = writeAll(descriptor, contents) && fchmod(descriptor, fileMode()) == 0 && fsync(descriptor) == 0;
  const int error = errno;
  if (::close(descriptor) != 0 || !written) {
    ::unlink(temporary.c_str());
    fail("cannot write", path, written ? errno : error);
  }
  if (std::rename(temporary.c_str(), path.c_str()) != 0) {
    const int renameError = errno;
    ::unlink(temporary.c_str());
    fail("cannot write", path, renameError);
  }
  if (const int directory = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); directory >= 0) {
    fsync(directory);
    ::close(directory);
  }
}

}  // namespace quillmont::FileTransfer
