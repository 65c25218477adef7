// SyncSetup: choosing the shared folder (created, private to the user, when
// missing) and giving this machine a stable identity and a name (its host
// name unless given one). When this machine's set-up ledger first meets a
// set-up ledger with other settings in the folder, nothing changes until the
// person chooses whose settings stay: adopting the folder's, or keeping this
// machine's everywhere. The choice is saved as a change of this machine's
// settings (which then wins everywhere) and can be undone. Set-up does not
// exchange; the host runs the first exchange (SyncExchange) after it.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "app/Refusal.h"
#include "app/sync/SyncSettings.h"
#include "core/sync/SyncJoin.h"
#include "platform/foundation/UserDefaults.h"

namespace quillmont::SyncSetup {

enum class SettingsChoice { undecided, adopt, keep };

struct Request {
  std::string folder;  ///< as typed: relative to the working folder, or absolute
  std::string name;    ///< empty: the name kept before, or the host name
  SettingsChoice choice = SettingsChoice::undecided;
};

/// The folder's ledger and this machine's keep different settings and no
/// choice was made: nothing was changed.
class SettingsConflict : public Refusal {
 public:
  SettingsConflict(SyncJoin::Conflict conflict, std::filesystem::path folder);
  const SyncJoin::Conflict& conflict() const { return conflict_; }
  /// The folder set-up was asked for, made absolute.
  const std::filesystem::path& folder() const { return folder_; }

 private:
  SyncJoin::Conflict conflict_;
  std::filesystem::path folder_;
};

struct Result {
  SyncSettings::Configuration configuration;
  /// The choice that settled a conflict of settings; nothing when there was none.
  std::optional<SettingsChoice> settled;
};

/// Sets sync up as `request` asks and keeps it in `defaults`; another
/// folder than before is read whole at the next exchange. Throws
/// SettingsConflict, or Refusal when the folder cannot be used.
Result setup(const UserDefaults& defaults, const Request& request);

}  // namespace quillmont::SyncSetup
