#include "app/sync/SyncStatus.h"

#include <algorithm>
#include <filesystem>

#include "app/sync/SyncState.h"

namespace quillmont::SyncStatus {

Status status(const UserDefaults& defaults) {
  Status result;
  result.configuration = SyncSettings::requiredConfiguration(defaults);
  result.ownLedgerFile = SyncFolder::ledgerFileName(result.configuration.device);
  const SyncState state = SyncSettings::state(defaults);
  result.lastExchangeAt = state.lastExchangeAt;
  result.lastReport = state.lastReport;
  std::error_code error;
  if (!std::filesystem::is_directory(result.configuration.folder, error)) {
    result.folderPresent = false;
    return result;
  }
  const SyncFolder::Listing listing = SyncFolder::list(result.configuration.folder);
  for (const auto& [id, files] : listing.devices) {
    if (id == result.configuration.device) continue;
    const UUID device = id;  // clang before 16 cannot capture a structured binding
    const auto known = std::find_if(state.devices.begin(), state.devices.end(),
                                    [&](const SyncState::Device& seen) { return seen.id == device; });
    Device shown;
    shown.id = id;
    shown.hasLedger = files.ledger.has_value();
    shown.read = known != state.devices.end();
    shown.label = SyncSettings::deviceLabel(shown.read ? known->name : "", id);
    if (shown.read) {
      shown.writtenAt = known->writtenAt;
      shown.readAt = known->readAt;
      shown.problem = known->problem;
      shown.changedSince = SyncFolder::stamp(files) != known->stamp;
    }
    result.devices.push_back(std::move(shown));
  }
  result.ignored = listing.ignored;
  return result;
}

std::optional<Overview> overview(const UserDefaults& defaults) {
  const auto setup = SyncSettings::configuration(defaults);
  if (!setup) return std::nullopt;
  Overview result;
  result.configuration = *setup;
  std::error_code error;
  result.folderPresent = std::filesystem::is_directory(setup->folder, error);
  const SyncState state = SyncSettings::state(defaults);
  for (const auto& device : state.devices) {
    result.machinesSeen.push_back(SyncSettings::deviceLabel(device.name, device.id));
    if (!device.problem.empty()) ++result.leftAside;
  }
  result.lastExchangeAt = state.lastExchangeAt;
  return result;
}

}  // namespace quillmont::SyncStatus
