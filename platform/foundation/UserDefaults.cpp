#include "platform/foundation/UserDefaults.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <string>

#include "platform/foundation/ContainerDirectories.h"
#include "platform/foundation/PrivateFiles.h"
#include "platform/foundation/ProcessEntitlements.h"

namespace quillmont {
namespace {

constexpr std::string_view applicationGroupsKey = "com.apple.security.application-groups";
constexpr std::string_view folderName = "Preferences";

// Letters, digits, '-', '_' and (not first) '.' stand for themselves; every
// other byte is written %XX, so no key can name a temporary file or escape
// the folder.
std::string encodedName(std::string_view key) {
  static constexpr char hex[] = "0123456789ABCDEF";
  std::string name;
  name.reserve(key.size());
  for (std::size_t i = 0; i < key.size(); ++i) {
    const auto byte = static_cast<unsigned char>(key[i]);
    const bool plain = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
                       byte == '-' || byte == '_' || (byte == '.' && i > 0);
    if (plain) {
      name += static_cast<char>(byte);
    } else {
      name += '%';
      name += hex[byte >> 4];
      name += hex[byte & 0xF];
    }
  }
  return name;
}

class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  ~FileDescriptor() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  int get() const { return descriptor_; }
  bool close() {
    const int result = ::close(descriptor_);
    descriptor_ = -1;
    return result == 0;
  }

 private:
  int descriptor_;
};

}  // namespace

UserDefaults UserDefaults::standard() { return UserDefaults(ContainerDirectories::processContainer() / folderName); }

std::optional<UserDefaults> UserDefaults::suite(std::string_view suiteName) {
  if (suiteName.empty()) return std::nullopt;
  const auto entitlements = ProcessEntitlements::current();
  if (!entitlements) return std::nullopt;
  const auto groups = entitlements->stringList(applicationGroupsKey);
  if (std::find(groups.begin(), groups.end(), suiteName) == groups.end()) return std::nullopt;
  return UserDefaults(ContainerDirectories::groupContainer(suiteName) / folderName);
}

std::filesystem::path UserDefaults::fileFor(std::string_view key) const { return folder_ / encodedName(key); }

std::optional<std::string> UserDefaults::data(std::string_view key) const { return read(key, Kind::data); }

std::optional<std::string> UserDefaults::string(std::string_view key) const { return read(key, Kind::string); }

bool UserDefaults::setData(std::string_view bytes, std::string_view key) const { return write(key, Kind::data, bytes); }

bool UserDefaults::setString(std::string_view text, std::string_view key) const {
  return write(key, Kind::string, text);
}

bool UserDefaults::removeObject(std::string_view key) const {
  if (key.empty()) return true;
  return ::unlink(fileFor(key).c_str()) == 0 || errno == ENOENT;
}

std::optional<std::string> UserDefaults::read(std::string_view key, Kind kind) const {
  if (key.empty()) return std::nullopt;
  // Non-blocking, so a pipe put in a key's place cannot hang a reader; a
  // folder fails at read().
  FileDescriptor file(::open(fileFor(key).c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  if (file.get() < 0) return std::nullopt;
  // An entry is small (a snapshot, a setting, sync state): anything larger
  // than maximumEntryBytes is not one of ours and reads as absent, unread.
  struct stat status {};
  if (::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode) &&
      static_cast<std::uintmax_t>(status.st_size) > maximumEntryBytes) {
    return std::nullopt;
  }
  std::string contents;
  std::array<char, 4096> buffer;
  for (;;) {
    const ssize_t count = ::read(file.get(), buffer.data(), buffer.size());
    if (count < 0) {
      if (errno == EINTR) continue;
      return std::nullopt;
    }
    contents.append(buffer.data(), static_cast<std::size_t>(count));
    if (contents.size() > maximumEntryBytes) return std::nullopt;  // a device or a file that grew
    // A regular file returns less than asked only at its end: one call
    // reads a small entry whole.
    if (static_cast<std::size_t>(count) < buffer.size()) break;
  }
  if (contents.empty() || contents.front() != static_cast<char>(kind)) return std::nullopt;
  contents.erase(0, 1);
  return contents;
}

bool UserDefaults::write(std::string_view key, Kind kind, std::string_view bytes) const {
  if (key.empty()) return false;
  if (!PrivateFiles::createFolder(folder_)) return false;
  ::chmod(folder_.c_str(), 0700);
  std::string contents(1, static_cast<char>(kind));
  contents.append(bytes);
  return PrivateFiles::writeAtomically(fileFor(key), contents);
}

}  // namespace quillmont
