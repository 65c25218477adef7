#include "app/sync/SyncSetup.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "app/files/FileTransfer.h"
#include "app/session/StoreSession.h"
#include "app/sync/SyncFolder.h"
#include "core/archive/TimeBankArchiveError.h"
#include "core/sync/SyncDeviceFile.h"
#include "platform/foundation/JsonReader.h"

namespace quillmont::SyncSetup {
namespace {

// Creates `folder` and the folders missing above it, each private to the
// user (0700) whatever the umask: a time bank is personal.
void createPrivateFolders(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> missing;
  std::error_code error;
  for (auto at = folder; !at.empty() && !std::filesystem::exists(at, error); at = at.parent_path()) {
    missing.push_back(at);
    if (at == at.parent_path()) break;
  }
  for (auto at = missing.rbegin(); at != missing.rend(); ++at) {
    if (::mkdir(at->c_str(), 0700) != 0 && errno != EEXIST) {
      throw Refusal("cannot create the sync folder " + folder.string() + ": " + std::strerror(errno));
    }
    ::chmod(at->c_str(), 0700);
  }
}

// The other machines' ledgers in the folder, as far as they can be read;
// what cannot be read is left aside here as in every exchange, where it is
// reported.
std::vector<SyncJoin::Ledger> folderLedgers(const std::filesystem::path& folder, const UUID& self) {
  std::vector<SyncJoin::Ledger> ledgers;
  for (const auto& [id, files] : SyncFolder::list(folder).devices) {
    if (id == self || !files.ledger) continue;
    try {
      SyncJoin::Ledger ledger{
          "", TimeBankArchive::decodeJSON(FileTransfer::read(files.ledger->string(), FileTransfer::maximumArchiveBytes))};
      if (files.device) {
        ledger.deviceName =
            SyncDeviceFile::decodeJSON(FileTransfer::read(files.device->string(), FileTransfer::maximumDeviceFileBytes))
                .name;
      }
      ledger.deviceName = SyncSettings::deviceLabel(ledger.deviceName, id);
      ledgers.push_back(std::move(ledger));
    } catch (const JsonDecodingError&) {
    } catch (const TimeBankArchiveError&) {
    } catch (const Refusal&) {
    } catch (const std::bad_alloc&) {
    }
  }
  return ledgers;
}

// Whose settings stay when this machine's and the folder's differ.
std::optional<SettingsChoice> settleSettings(const std::filesystem::path& folder, const UUID& self,
                                             SettingsChoice choice) {
  StoreSession session;
  auto conflict = SyncJoin::conflict(session.context(), session.settings(), folderLedgers(folder, self),
                                     session.calendar(), session.now());
  if (!conflict) return std::nullopt;
  if (choice == SettingsChoice::undecided) throw SettingsConflict(std::move(*conflict), folder);
  session.journal(choice == SettingsChoice::adopt ? "sync setup --adopt" : "sync setup --keep");
  if (choice == SettingsChoice::adopt) {
    SyncJoin::adoptFolder(session.settings(), conflict->folderSettings, session.now());
  } else {
    SyncJoin::keepOwn(session.settings(), session.now());
  }
  session.context().save();
  return choice;
}

}  // namespace

SettingsConflict::SettingsConflict(SyncJoin::Conflict conflict, std::filesystem::path folder)
    : Refusal("this machine and the folder keep different settings, and joining would make one of them win on every "
              "machine; nothing was changed."),
      conflict_(std::move(conflict)),
      folder_(std::move(folder)) {}

Result setup(const UserDefaults& defaults, const Request& request) {
  std::error_code error;
  std::filesystem::path folder = std::filesystem::absolute(request.folder, error);
  if (error) throw Refusal("cannot use " + request.folder + " as the sync folder: " + error.message());
  if (!std::filesystem::exists(folder, error)) {
    createPrivateFolders(folder);
  } else if (!std::filesystem::is_directory(folder, error)) {
    throw Refusal(folder.string() + " is not a folder");
  }
  folder = std::filesystem::canonical(folder, error);
  const auto known = SyncSettings::configuration(defaults);
  Result result;
  result.configuration.folder = folder;
  result.configuration.device = known ? known->device : UUID::random();
  result.configuration.name = !request.name.empty()                 ? request.name
                              : known && !known->name.empty() ? known->name
                                                              : SyncSettings::hostName();
  if (!known || known->folder != folder) {  // a first meeting with this folder's ledger
    result.settled = settleSettings(folder, result.configuration.device, request.choice);
  }
  SyncSettings::keep(defaults, result.configuration);
  if (known && known->folder != folder) SyncSettings::forgetState(defaults);  // another folder: read everything
  return result;
}

}  // namespace quillmont::SyncSetup
