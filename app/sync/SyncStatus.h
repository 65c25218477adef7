// SyncStatus: what this machine knows of its folder sync, as values a host
// shows: the folder and this machine, the other devices in the folder (when
// they wrote, when they were read, why their files were left aside, whether
// they changed since), the last exchange and its report, and the files of
// the folder that are not read.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "app/sync/SyncFolder.h"
#include "app/sync/SyncSettings.h"
#include "platform/foundation/Date.h"
#include "platform/foundation/UserDefaults.h"

namespace quillmont::SyncStatus {

struct Device {
  UUID id;
  std::string label;  ///< "laptop (1A2B3C4D)"; unnamed until its files were read
  bool hasLedger = false;
  /// Whether an exchange read its files; the fields below only then.
  bool read = false;
  std::optional<Date> writtenAt;
  Date readAt;
  std::string problem;  ///< why its files were left aside; empty when they were merged
  bool changedSince = false;
};

struct Status {
  SyncSettings::Configuration configuration;
  std::string ownLedgerFile;
  /// False when the folder is missing (a drive not mounted); nothing below then.
  bool folderPresent = true;
  std::vector<Device> devices;
  std::optional<Date> lastExchangeAt;
  std::vector<std::string> lastReport;
  std::vector<SyncFolder::Ignored> ignored;
};

/// The status; throws Refusal saying how to set sync up when it is not.
Status status(const UserDefaults& defaults);

/// What this machine remembers, without reading the folder's files.
struct Overview {
  SyncSettings::Configuration configuration;
  bool folderPresent = true;
  std::vector<std::string> machinesSeen;  ///< labels, in the order first seen
  std::size_t leftAside = 0;              ///< machines whose files were left aside
  std::optional<Date> lastExchangeAt;
};
/// Nothing when sync is not set up.
std::optional<Overview> overview(const UserDefaults& defaults);

}  // namespace quillmont::SyncStatus
