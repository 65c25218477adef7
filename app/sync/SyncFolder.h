// SyncFolder: the shared folder that a file-sync service (Syncthing,
// Nextcloud, a network share) keeps equal on every machine. Each machine
// writes two files of its own, named by its device identifier, and only
// reads the others':
//   <ID>.ledger.json  the whole ledger as an archive (what `export` writes)
//   <ID>.device.json  its name, when it wrote, and the deletions it knows
// Anything else in the folder is left alone. Files a sync service is still
// copying (its temporaries) or left beside a file both sides changed (its
// conflict copies) are listed as ignored, with the reason.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/UUID.h"

namespace quillmont::SyncFolder {

std::string ledgerFileName(const UUID& device);
std::string deviceFileName(const UUID& device);

/// The device whose ledger or device file `name` is; nothing for other names.
std::optional<UUID> deviceOfFileName(std::string_view name);

struct DeviceFiles {
  std::optional<std::filesystem::path> ledger;
  std::optional<std::filesystem::path> device;
};

struct Ignored {
  std::string name;
  std::string reason;
};

struct Listing {
  std::map<UUID, DeviceFiles> devices;
  std::vector<Ignored> ignored;
};

/// What the folder holds; throws Refusal when it cannot be read.
Listing list(const std::filesystem::path& folder);

/// Why a file of the folder is not read, for a name that is not a device
/// file: a sync service's temporary or conflict copy, a half-written file of
/// ours, or something else; nothing for the sync services' own bookkeeping
/// (".stfolder", ".stignore", ".stversions").
std::optional<std::string> ignoredBecause(std::string_view name);

/// The size and modification time of a file, as text that changes when the
/// file is replaced; empty when there is no such file.
std::string stamp(const std::filesystem::path& file);
/// The stamps of a device's two files together.
std::string stamp(const DeviceFiles& files);

}  // namespace quillmont::SyncFolder
