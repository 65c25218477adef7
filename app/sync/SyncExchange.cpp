#include "app/sync/SyncExchange.h"

#include <algorithm>
#include <filesystem>
#include <new>
#include <utility>

#include "app/Refusal.h"
#include "app/files/FileTransfer.h"
#include "app/session/StoreSession.h"
#include "app/sync/SyncFolder.h"
#include "app/sync/SyncState.h"
#include "app/text/Display.h"
#include "core/archive/TimeBankArchiveError.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/TimeBankSettings.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"
#include "core/sync/SyncDeviceFile.h"
#include "platform/foundation/JsonReader.h"

namespace quillmont::SyncExchange {
namespace {

using SyncSettings::Configuration;
using SyncSettings::deviceLabel;

// What the own files are written from: every write to a record type raises
// its generation, and absorbed or new deletions change the log.
std::string storeSignature(StoreSession& session) {
  ModelContext& context = session.context();
  std::string signature = std::to_string(context.generation<WorkEntry>()) + "." +
                          std::to_string(context.generation<BalanceAdjustment>()) + "." +
                          std::to_string(context.generation<WorkSchedule>()) + "." +
                          std::to_string(context.generation<TimeBankSettings>());
  const auto deletions = session.container()->deletions();
  double latest = 0;
  for (const auto& deletion : deletions) latest = std::max(latest, deletion.deletedAt.timeIntervalSince1970());
  // Holidays are only ever added, so their count tells whether any came.
  return signature + "/" + std::to_string(deletions.size()) + "@" + std::to_string(latest) + "/" +
         std::to_string(session.container()->holidays().size());
}

std::string ownStamp(const Configuration& setup) {
  return SyncFolder::stamp(SyncFolder::DeviceFiles{setup.folder / SyncFolder::ledgerFileName(setup.device),
                                                   setup.folder / SyncFolder::deviceFileName(setup.device)});
}

// A file of another machine as it is read: its text, or why it could not be
// read (no permission, larger than such a file ever is, gone).
std::string readForeign(const std::filesystem::path& file, std::size_t limit) {
  try {
    return FileTransfer::read(file.string(), limit);
  } catch (const std::bad_alloc&) {
    throw Refusal("cannot read " + file.string() + ": not enough memory");
  }
}

std::string timerText(const Display& display, Date startedAt, bool ranHere, const std::string& device) {
  return "the timer started " + display.dateTime(startedAt) + " on " + (ranHere ? std::string("this machine") : device);
}

// What one exchange has merged so far, saved together at its end.
struct Merging {
  StoreSession& session;
  Result result;
  /// The public holidays the other machines keep, added once the records are saved.
  std::vector<HolidayList::Entry> holidays;
};

// Says which timer runs on and which the merge ended (one timer at a time).
void reportEndedTimers(Merging& merging, const SyncMerge::Result& merged, const std::string& device) {
  if (merged.endedTimers.empty() || !merged.keptTimer) return;
  const Display display(merging.session.calendar());
  for (const auto& ended : merged.endedTimers) {
    merging.result.endedTimers.push_back({ended, *merged.keptTimer, device, merged.noteMoved});
    std::string line = "Ended " + timerText(display, ended.startedAt, ended.ranHere, device) + ": " +
                       timerText(display, merged.keptTimer->startedAt, merged.keptTimer->ranHere, device) +
                       " runs on, and one timer runs at a time";
    if (!ended.note.empty()) {
      line += merged.noteMoved ? "; its note \"" + ended.note + "\" went to the running one"
                               : "; its note was \"" + ended.note + "\"";
    }
    merging.result.report.push_back(line + ".");
  }
}

// Reads and merges one other device's files (unsaved); on failure `known`
// says why and nothing was merged.
void mergeDevice(Merging& merging, const UUID& id, const SyncFolder::DeviceFiles& files, SyncState::Device& known) {
  StoreSession& session = merging.session;
  const auto skipped = [&] {
    merging.result.skipped.push_back({id, deviceLabel(known.name, id), known.problem});
    merging.result.report.push_back("Skipped " + deviceLabel(known.name, id) + ": " + known.problem +
                                    "; nothing was changed from it.");
  };
  std::vector<DeletionLog::Entry> deletions;
  std::vector<HolidayList::Entry> holidays;
  if (files.device) {
    try {
      const auto device = SyncDeviceFile::decodeJSON(readForeign(*files.device, FileTransfer::maximumDeviceFileBytes));
      if (device.device != id) throw JsonDecodingError("it names another device");
      known.name = device.name;
      known.writtenAt = device.writtenAt;
      deletions = device.deletions;
      holidays = device.holidays;
    } catch (const JsonDecodingError& error) {
      known.problem = files.device->filename().string() + " is not a readable device file (" + error.what() + ")";
      return skipped();
    } catch (const Refusal& error) {
      known.problem = error.what();
      return skipped();
    }
  }
  std::optional<TimeBankArchive> archive;
  try {
    archive = TimeBankArchive::decodeJSON(readForeign(*files.ledger, FileTransfer::maximumArchiveBytes));
  } catch (const JsonDecodingError& error) {
    known.problem = files.ledger->filename().string() + " is not a readable ledger (" + error.what() + ")";
  } catch (const TimeBankArchiveError& error) {
    known.problem = files.ledger->filename().string() + " was refused: " + error.what();
  } catch (const Refusal& error) {
    known.problem = error.what();
  } catch (const std::bad_alloc&) {
    known.problem = files.ledger->filename().string() + " is too large to read";
  }
  if (!archive) return skipped();
  const auto merged = SyncMerge::merge(session.context(), std::move(*archive), deletions, session.now(), false);
  known.problem.clear();
  merging.result.merged.push_back({id, deviceLabel(known.name, id), merged.merged, merged.recordsDeleted});
  std::string line = "Merged " + deviceLabel(known.name, id) + ": inserted " + std::to_string(merged.merged.inserted) +
                     ", updated " + std::to_string(merged.merged.updated) + ", unchanged " +
                     std::to_string(merged.merged.unchanged);
  if (merged.recordsDeleted > 0) line += ", deleted " + std::to_string(merged.recordsDeleted);
  merging.result.report.push_back(line + ".");
  merging.holidays.insert(merging.holidays.end(), holidays.begin(), holidays.end());
  reportEndedTimers(merging, merged, known.name.empty() ? std::string("a device") : known.name);
}

void writeOwnFiles(StoreSession& session, const Configuration& setup) {
  ModelContext& context = session.context();
  const auto entries = context.fetch<WorkEntry>();
  const auto adjustments = context.fetch<BalanceAdjustment>();
  const auto schedules = context.fetch<WorkSchedule>();
  const auto settings = context.fetch<TimeBankSettings>();
  std::string ledger = TimeBankArchive(session.now(), entries, adjustments, schedules, settings).encodedJSON();
  ledger += '\n';
  const SyncDeviceFile device{setup.device, setup.name, session.now(), session.container()->deletions(),
                              session.container()->holidays()};
  // The deletions first: a reader that sees the new ledger already has them.
  FileTransfer::writeAtomically((setup.folder / SyncFolder::deviceFileName(setup.device)).string(),
                                device.encodedJSON() + "\n");
  FileTransfer::writeAtomically((setup.folder / SyncFolder::ledgerFileName(setup.device)).string(), ledger);
}

}  // namespace

Result exchange(const UserDefaults& defaults, const Configuration& setup) {
  std::error_code error;
  if (!std::filesystem::is_directory(setup.folder, error)) {
    throw Refusal("the sync folder " + setup.folder.string() + " is missing (is the drive mounted?)",
                  Remedy{Remedy::Kind::chooseSyncFolder});
  }
  SyncState state = SyncSettings::state(defaults);
  Result result;
  {
    StoreSession session;
    Merging merging{session, {}, {}};
    const SyncFolder::Listing listing = SyncFolder::list(setup.folder);
    // This machine's news goes out before anything comes in: a folder that
    // refuses the write fails the exchange while the store is unchanged.
    // The name counts too: a machine renamed by set-up says so.
    const auto signature = [&] { return storeSignature(session) + "|" + setup.name; };
    bool wroteOwn = false;
    if (signature() != state.ownSignature || ownStamp(setup) != state.ownStamp) {
      writeOwnFiles(session, setup);
      state.ownSignature = signature();
      state.ownStamp = ownStamp(setup);
      wroteOwn = true;
    }
    try {
      for (const auto& [id, files] : listing.devices) {
        if (id == setup.device || !files.ledger) continue;
        const std::string stamp = SyncFolder::stamp(files);
        SyncState::Device& known = state.device(id);
        if (known.stamp == stamp) continue;
        mergeDevice(merging, id, files, known);
        known.stamp = stamp;
        known.readAt = session.now();
        merging.result.readAny = true;
      }
      session.context().save();
      // Holidays are a set: adding them again after a failure here (the
      // state below is then not kept, so the files are read again) is harmless.
      if (const auto added = session.container()->addHolidays(merging.holidays); added > 0) {
        merging.result.holidaysAdded = added;
        merging.result.report.push_back("Added " + std::to_string(added) +
                                        (added == 1 ? " public holiday." : " public holidays."));
      }
    } catch (...) {
      session.context().rollback();  // nothing of this exchange stays, in the store or the widget
      throw;
    }
    result = std::move(merging.result);
    if (!result.readAny) result.report.emplace_back("Nothing new from other devices.");

    // What was merged in is also written out, but it is in the others'
    // files already: when the folder refuses it now, the merge stands (it
    // is saved) and the files are written at the next exchange.
    if (signature() != state.ownSignature || ownStamp(setup) != state.ownStamp) {
      try {
        writeOwnFiles(session, setup);
        state.ownSignature = signature();
        state.ownStamp = ownStamp(setup);
        wroteOwn = true;
      } catch (const Refusal& failure) {
        result.deferredWrite = failure.what();
      }
    }
    result.wroteOwn = wroteOwn;
    result.ownLedgerFile = SyncFolder::ledgerFileName(setup.device);
    if (wroteOwn) {
      result.report.push_back("Wrote this machine's ledger to " + result.ownLedgerFile + ".");
    } else {
      result.report.emplace_back("Nothing new to write.");
    }
    state.lastExchangeAt = session.now();
  }  // the session refreshes the widget once, when anything was saved
  state.lastReport = result.report;
  SyncSettings::keepState(defaults, state);
  return result;
}

}  // namespace quillmont::SyncExchange
