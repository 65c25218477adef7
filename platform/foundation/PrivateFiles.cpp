#include "platform/foundation/PrivateFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>

namespace quillmont::PrivateFiles {
namespace {


bool syncFolder(const std::filesystem::path& folder) {
  const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return false;
  const bool synced = ::fsync(descriptor) == 0;
  const int error = errno;
  ::close(descriptor);
  errno = error;
  return synced;
}

}  // namespace

bool writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

bool createFolder(const std::filesystem::path& folder) {
  if (folder.empty()) return true;
  struct stat status {};
  if (::stat(folder.c_str(), &status) == 0) {
    if (S_ISDIR(status.st_mode)) return true;
    errno = ENOTDIR;
    return false;
  }
  const auto parent = folder.parent_path();
  if (parent != folder && !createFolder(parent)) return false;
  // mkdir's mode loses the umask's bits: 0700 loses none of an umask that
  // leaves the owner anything.
  if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) return false;
  return true;
}

bool writeAtomically(const std::filesystem::path& file, std::string_view bytes) {
  const std::filesystem::path folder = file.has_parent_path() ? file.parent_path() : std::filesystem::path(".");
  if (!createFolder(folder)) return false;
  struct stat existing {};
  const mode_t mode = ::stat(file.c_str(), &existing) == 0 && S_ISREG(existing.st_mode) ? existing.st_mode & 07777 : 0600;
  std::string temporary = (folder / ("." + file.filename().string() + ".XXXXXX")).string();
  const int descriptor = ::mkostemp(temporary.data(), O_CLOEXEC);  // created 0600
  if (descriptor < 0) return false;
  bool done = writeAll(descriptor, bytes) && (mode == 0600 || ::fchmod(descriptor, mode) == 0) &&
              ::fsync(descriptor) == 0;
  int error = errno;
  if (::close(descriptor) != 0 && done) {
    done = false;
    error = errno;
  }
  if (done && ::rename(temporary.c_str(), file.c_str()) != 0) {
    done = false;
    error = errno;
  }
  if (!done) {
    ::unlink(temporary.c_str());
    errno = error;
    return false;
  }
  return syncFolder(folder);
}

}  // namespace quillmont::PrivateFiles
