#include "app/sync/SyncFolder.h"

#include <sys/stat.h>

#include <cstring>

#include "app/Refusal.h"

namespace quillmont::SyncFolder {
namespace {

constexpr std::string_view ledgerSuffix = ".ledger.json";
constexpr std::string_view deviceSuffix = ".device.json";
constexpr std::size_t identifierLength = 36;

std::optional<UUID> deviceOf(std::string_view name, std::string_view suffix) {
  if (name.size() != identifierLength + suffix.size() || !name.ends_with(suffix)) return std::nullopt;
  // Exactly as written: a twin in other case (on a file system that keeps
  // both) must not stand in for the real file.
  auto device = UUID::parse(name.substr(0, identifierLength));
  if (!device || device->uuidString() != name.substr(0, identifierLength)) return std::nullopt;
  return device;
}

}  // namespace

std::optional<UUID> deviceOfFileName(std::string_view name) {
  if (auto device = deviceOf(name, ledgerSuffix)) return device;
  return deviceOf(name, deviceSuffix);
}

std::string ledgerFileName(const UUID& device) { return device.uuidString() + std::string(ledgerSuffix); }
std::string deviceFileName(const UUID& device) { return device.uuidString() + std::string(deviceSuffix); }

std::optional<std::string> ignoredBecause(std::string_view name) {
  if (name == ".stfolder" || name == ".stignore" || name == ".stversions") return std::nullopt;
  if (name.find(".sync-conflict-") != std::string_view::npos || name.find("conflicted copy") != std::string_view::npos ||
      name.find("(conflict") != std::string_view::npos) {
    return "a conflict copy left by the sync service";
  }
  if (name.starts_with(".syncthing.") || name.ends_with(".tmp") || name.ends_with(".part") ||
      name.starts_with(".~") || name.starts_with("~") || name.ends_with(".partial")) {
    return "being copied by the sync service";
  }
  if (name.starts_with(".") && (name.find(ledgerSuffix) != std::string_view::npos ||
                                name.find(deviceSuffix) != std::string_view::npos)) {
    return "being written";
  }
  if (name.size() == identifierLength + ledgerSuffix.size() || name.size() == identifierLength + deviceSuffix.size()) {
    if (UUID::parse(name.substr(0, identifierLength))) return "not named exactly as Quillmont names its files";
  }
  return "not a Quillmont file";
}

Listing list(const std::filesystem::path& folder) {
  Listing listing;
  std::error_code error;
  std::filesystem::directory_iterator entries(folder, error);
  if (error) throw Refusal("cannot read the sync folder " + folder.string() + ": " + error.message());
  for (const auto& entry : entries) {
    const std::string name = entry.path().filename().string();
    if (!entry.is_regular_file(error)) continue;
    if (const auto device = deviceOf(name, ledgerSuffix)) {
      listing.devices[*device].ledger = entry.path();
    } else if (const auto described = deviceOf(name, deviceSuffix)) {
      listing.devices[*described].device = entry.path();
    } else if (auto reason = ignoredBecause(name)) {
      listing.ignored.push_back({name, std::move(*reason)});
    }
  }
  return listing;
}

std::string stamp(const std::filesystem::path& file) {
  struct stat status {};
  if (::stat(file.c_str(), &status) != 0) return {};
  // The mode too: a file made readable again is read again.
  return std::to_string(status.st_size) + "@" + std::to_string(status.st_mtim.tv_sec) + "." +
         std::to_string(status.st_mtim.tv_nsec) + ":" + std::to_string(status.st_mode & 07777);
}

std::string stamp(const DeviceFiles& files) {
  return (files.ledger ? stamp(*files.ledger) : std::string()) + "|" +
         (files.device ? stamp(*files.device) : std::string());
}

}  // namespace quillmont::SyncFolder
