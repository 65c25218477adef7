#include "cli/SyncCommands.h"

#include <poll.h>
#include <sys/stat.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "cli/CommandFailure.h"
#include "app/text/Display.h"
#include "app/files/FileTransfer.h"
#include "app/session/StoreSession.h"
#include "cli/SyncFolder.h"
#include "cli/SyncState.h"
#include "cli/Terminal.h"
#include "cli/TextTable.h"
#include "core/archive/TimeBankArchive.h"
#include "core/archive/TimeBankArchiveError.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/TimeBankSettings.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"
#include "core/persistence/AppConstants.h"
#include "core/sync/SyncDeviceFile.h"
#include "core/sync/SyncJoin.h"
#include "core/sync/SyncMerge.h"
#include "platform/foundation/JsonReader.h"
#include "platform/foundation/UserDefaults.h"
#include "platform/widgets/WidgetReloadWatcher.h"

namespace quillmont::SyncCommands {
namespace {

constexpr std::string_view folderKey = "syncFolder";
constexpr std::string_view deviceKey = "syncDevice";
constexpr std::string_view nameKey = "syncDeviceName";
constexpr std::string_view stateKey = "syncState";

// Where this machine keeps its sync settings: the application group's
// preferences, shared by every program of the group.
UserDefaults preferences() {
  if (auto suite = UserDefaults::suite(AppConstants::appGroupIdentifier)) return *suite;
  return UserDefaults::standard();
}

struct Configuration {
  std::filesystem::path folder;
  UUID device;
  std::string name;
};

std::optional<Configuration> configuration(const UserDefaults& defaults) {
  const auto folder = defaults.string(folderKey);
  const auto device = defaults.string(deviceKey);
  const auto parsed = device ? UUID::parse(*device) : std::nullopt;
  if (!folder || !parsed) return std::nullopt;
  return Configuration{*folder, *parsed, defaults.string(nameKey).value_or("")};
}

Configuration requiredConfiguration(const UserDefaults& defaults) {
  auto found = configuration(defaults);
  if (!found) {
    throw CommandFailure(
        "sync is not set up on this machine; run `quillmont sync setup DIR` with the folder your sync service "
        "shares between your machines");
  }
  return *found;
}

SyncState loadState(const UserDefaults& defaults) {
  const auto text = defaults.data(stateKey);
  if (!text) return {};
  try {
    return SyncState::decodeJSON(*text);
  } catch (const JsonDecodingError&) {
    return {};  // everything is read again
  }
}

std::string hostName() {
  std::array<char, 256> name{};
  if (::gethostname(name.data(), name.size() - 1) != 0 || name[0] == '\0') return "this machine";
  return name.data();
}

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

std::string deviceLabel(const std::string& name, const UUID& id) {
  return (name.empty() ? std::string("a device") : name) + " (" + Display::shortIdentifier(id) + ")";
}

// A file of another machine as it is read: its text, or why it could not be
// read (no permission, larger than such a file ever is, gone).
std::string readForeign(const std::filesystem::path& file, std::size_t limit) {
  try {
    return FileTransfer::read(file.string(), limit);
  } catch (const std::bad_alloc&) {
    throw CommandFailure("cannot read " + file.string() + ": not enough memory");
  }
}

// What one exchange has merged so far, saved together at its end.
struct Exchange {
  StoreSession& session;
  std::vector<std::string> report;
  /// The public holidays the other machines keep, added once the records are saved.
  std::vector<HolidayList::Entry> holidays;
};

std::string timerText(const Display& display, Date startedAt, bool ranHere, const std::string& device) {
  return "the timer started " + display.dateTime(startedAt) + " on " + (ranHere ? std::string("this machine") : device);
}

// Says which timer runs on and which the merge ended (one timer at a time).
void reportEndedTimers(Exchange& exchange, const SyncMerge::Result& result, const std::string& device) {
  if (result.endedTimers.empty() || !result.keptTimer) return;
  const Display display(exchange.session.calendar());
  for (const auto& ended : result.endedTimers) {
    std::string line = "Ended " + timerText(display, ended.startedAt, ended.ranHere, device) + ": " +
                       timerText(display, result.keptTimer->startedAt, result.keptTimer->ranHere, device) +
                       " runs on, and one timer runs at a time";
    if (!ended.note.empty()) {
      line += result.noteMoved ? "; its note \"" + ended.note + "\" went to the running one"
                               : "; its note was \"" + ended.note + "\"";
    }
    exchange.report.push_back(line + ".");
  }
}

// Reads and merges one other device's files (unsaved); returns the report line.
std::string mergeDevice(Exchange& exchange, const UUID& id, const SyncFolder::DeviceFiles& files,
                        SyncState::Device& known) {
  StoreSession& session = exchange.session;
  const auto skipped = [&] {
    return "Skipped " + deviceLabel(known.name, id) + ": " + known.problem + "; nothing was changed from it.";
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
    } catch (const CommandFailure& error) {
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
  } catch (const CommandFailure& error) {
    known.problem = error.what();
  } catch (const std::bad_alloc&) {
    known.problem = files.ledger->filename().string() + " is too large to read";
  }
  if (!archive) return skipped();
  const auto result = SyncMerge::merge(session.context(), std::move(*archive), deletions, session.now(), false);
  known.problem.clear();
  std::string line = "Merged " + deviceLabel(known.name, id) + ": inserted " + std::to_string(result.merged.inserted) +
                     ", updated " + std::to_string(result.merged.updated) + ", unchanged " +
                     std::to_string(result.merged.unchanged);
  if (result.recordsDeleted > 0) line += ", deleted " + std::to_string(result.recordsDeleted);
  exchange.report.push_back(line + ".");
  exchange.holidays.insert(exchange.holidays.end(), holidays.begin(), holidays.end());
  reportEndedTimers(exchange, result, known.name.empty() ? std::string("a device") : known.name);
  return {};
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

/// One exchange; returns its report, also kept for `sync status`. What it
/// merges from every machine is saved at once, in one transaction, or not
/// at all; the widget is refreshed only from what was saved.
std::vector<std::string> exchange(const UserDefaults& defaults, const Configuration& setup) {
  std::error_code error;
  if (!std::filesystem::is_directory(setup.folder, error)) {
    throw CommandFailure("the sync folder " + setup.folder.string() +
                         " is missing (is the drive mounted?); run `quillmont sync setup DIR` to choose another");
  }
  SyncState state = loadState(defaults);
  std::vector<std::string> report;
  {
    StoreSession session;
    Exchange merging{session, {}, {}};
    const SyncFolder::Listing listing = SyncFolder::list(setup.folder);
    // This machine's news goes out before anything comes in: a folder that
    // refuses the write fails the exchange while the store is unchanged.
    // The name counts too: a machine renamed by `sync setup --name` says so.
    const auto signature = [&] { return storeSignature(session) + "|" + setup.name; };
    bool wroteOwn = false;
    if (signature() != state.ownSignature || ownStamp(setup) != state.ownStamp) {
      writeOwnFiles(session, setup);
      state.ownSignature = signature();
      state.ownStamp = ownStamp(setup);
      wroteOwn = true;
    }
    bool readAny = false;
    try {
      for (const auto& [id, files] : listing.devices) {
        if (id == setup.device || !files.ledger) continue;
        const std::string stamp = SyncFolder::stamp(files);
        SyncState::Device& known = state.device(id);
        if (known.stamp == stamp) continue;
        if (std::string skipped = mergeDevice(merging, id, files, known); !skipped.empty()) {
          merging.report.push_back(std::move(skipped));
        }
        known.stamp = stamp;
        known.readAt = session.now();
        readAny = true;
      }
      session.context().save();
      // Holidays are a set: adding them again after a failure here (the
      // state below is then not kept, so the files are read again) is harmless.
      if (const auto added = session.container()->addHolidays(merging.holidays); added > 0) {
        merging.report.push_back("Added " + std::to_string(added) + (added == 1 ? " public holiday." : " public holidays."));
      }
    } catch (...) {
      session.context().rollback();  // nothing of this exchange stays, in the store or the widget
      throw;
    }
    report = std::move(merging.report);
    if (!readAny) report.emplace_back("Nothing new from other devices.");

    // What was merged in is also written out, but it is in the others'
    // files already: when the folder refuses it now, the merge stands (it
    // is saved) and the files are written at the next exchange.
    if (signature() != state.ownSignature || ownStamp(setup) != state.ownStamp) {
      try {
        writeOwnFiles(session, setup);
        state.ownSignature = signature();
        state.ownStamp = ownStamp(setup);
        wroteOwn = true;
      } catch (const CommandFailure& failure) {
        Terminal::warning(std::string(failure.what()) + "; the merged ledger is written at the next exchange");
      }
    }
    if (wroteOwn) {
      report.push_back("Wrote this machine's ledger to " + SyncFolder::ledgerFileName(setup.device) + ".");
    } else {
      report.emplace_back("Nothing new to write.");
    }
    state.lastExchangeAt = session.now();
  }  // the session refreshes the widget once, when anything was saved
  state.lastReport = report;
  defaults.setData(state.encodedJSON(), stateKey);
  return report;
}

// Report lines carry other machines' names and texts: shown escaped.
void printReport(const std::vector<std::string>& report) {
  for (const auto& line : report) Terminal::print(Terminal::escaped(line));
}

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
      throw CommandFailure("cannot create the sync folder " + folder.string() + ": " + std::strerror(errno));
    }
    ::chmod(at->c_str(), 0700);
  }
}

enum class SettingsChoice { undecided, adopt, keep };

std::string weekText(const WeekdayMinutes& week) {
  std::string text;
  for (const std::int64_t minutes : week) {
    text += (text.empty() ? "" : ",") + Display::duration(60.0 * static_cast<double>(minutes));
  }
  return text;
}

// The other machines' ledgers in the folder, as far as they can be read.
std::vector<SyncJoin::Ledger> folderLedgers(const std::filesystem::path& folder, const UUID& self) {
  std::vector<SyncJoin::Ledger> ledgers;
  for (const auto& [id, files] : SyncFolder::list(folder).devices) {
    if (id == self || !files.ledger) continue;
    try {
      SyncJoin::Ledger ledger{"", TimeBankArchive::decodeJSON(readForeign(*files.ledger, FileTransfer::maximumArchiveBytes))};
      if (files.device) {
        ledger.deviceName =
            SyncDeviceFile::decodeJSON(readForeign(*files.device, FileTransfer::maximumDeviceFileBytes)).name;
      }
      ledger.deviceName = deviceLabel(ledger.deviceName, id);
      ledgers.push_back(std::move(ledger));
    } catch (const JsonDecodingError&) {
    } catch (const TimeBankArchiveError&) {
    } catch (const CommandFailure&) {
    }  // left aside here as in every exchange, where it is reported
  }
  return ledgers;
}

// When this machine's set-up ledger first meets a set-up ledger with other
// settings in the folder, nothing is merged until the person chooses whose
// settings stay; the choice is saved as a change of this machine's settings
// (which then wins everywhere) and can be undone.
void settleSettings(const std::filesystem::path& folder, const UUID& self, SettingsChoice choice,
                    const std::string& command) {
  StoreSession session;
  const auto conflict = SyncJoin::conflict(session.context(), session.settings(), folderLedgers(folder, self),
                                           session.calendar(), session.now());
  if (!conflict) return;
  if (choice == SettingsChoice::undecided) {
    const Display display(session.calendar());
    TextTable table({{""}, {"This machine"}, {"The folder (" + Terminal::escaped(conflict->folderDeviceName) + ")"}});
    const auto row = [&](const std::string& label, const auto& text) {
      table.addRow({label, text(conflict->here), text(conflict->folder)});
    };
    row("Start", [&](const SyncJoin::Side& side) { return display.day(side.calculationStartDate); });
    row("Starting balance", [](const SyncJoin::Side& side) { return Display::amountOfMinutes(side.startingBalanceMinutes); });
    row("Week", [](const SyncJoin::Side& side) { return weekText(side.weekdayMinutes); });
    row("Balance now", [](const SyncJoin::Side& side) { return Display::amount(side.balanceSeconds); });
    Terminal::write(table.render());
    throw CommandFailure(
        "this machine and the folder keep different settings, and joining would make one of them win on every machine; "
        "nothing was changed. Choose whose settings stay (the bookings of both are kept):\n  " +
        command + " --adopt   # the folder's settings, here too\n  " + command +
        " --keep    # this machine's settings, on every machine");
  }
  session.journal(choice == SettingsChoice::adopt ? "sync setup --adopt" : "sync setup --keep");
  if (choice == SettingsChoice::adopt) {
    SyncJoin::adoptFolder(session.settings(), conflict->folderSettings, session.now());
  } else {
    SyncJoin::keepOwn(session.settings(), session.now());
  }
  session.context().save();
  Terminal::print(choice == SettingsChoice::adopt ? "This machine takes the folder's settings."
                                                  : "This machine's settings stay, on every machine.");
}

std::string quotedArgument(const std::string& text) {
  if (!text.empty() && text.find_first_of(" \t\n'\"\\$`!*?[]{}()<>|&;#~") == std::string::npos) return text;
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

void setup(const std::string& folderText, const std::string& name, SettingsChoice choice) {
  std::error_code error;
  std::filesystem::path folder = std::filesystem::absolute(folderText, error);
  if (error) throw CommandFailure("cannot use " + folderText + " as the sync folder: " + error.message());
  if (!std::filesystem::exists(folder, error)) {
    createPrivateFolders(folder);
  } else if (!std::filesystem::is_directory(folder, error)) {
    throw CommandFailure(folder.string() + " is not a folder");
  }
  folder = std::filesystem::canonical(folder, error);
  const UserDefaults defaults = preferences();
  const auto known = configuration(defaults);
  const UUID device = known ? known->device : UUID::random();
  const std::string deviceName = !name.empty() ? name : known && !known->name.empty() ? known->name : hostName();
  if (!known || known->folder != folder) {  // a first meeting with this folder's ledger
    std::string command = "quillmont sync setup " + quotedArgument(folder.string());
    if (!name.empty()) command += " --name " + quotedArgument(name);
    settleSettings(folder, device, choice, command);
  }
  if (!defaults.setString(folder.string(), folderKey) || !defaults.setString(device.uuidString(), deviceKey) ||
      !defaults.setString(deviceName, nameKey)) {
    throw CommandFailure("cannot keep the sync settings in " + defaults.folder().string());
  }
  if (known && known->folder != folder) defaults.removeObject(stateKey);  // another folder: read everything
  Terminal::print(Terminal::escaped("This machine is " + deviceLabel(deviceName, device) + "; it syncs through " +
                                    folder.string() + "."));
  printReport(exchange(defaults, Configuration{folder, device, deviceName}));
}

void status() {
  const UserDefaults defaults = preferences();
  const Configuration setup = requiredConfiguration(defaults);
  const SyncState state = loadState(defaults);
  const Display display(Calendar::autoupdatingCurrent());
  Terminal::print(Terminal::escaped("Sync folder   " + setup.folder.string()));
  Terminal::print(Terminal::escaped("This machine  " + deviceLabel(setup.name, setup.device) + ", writes " +
                                    SyncFolder::ledgerFileName(setup.device)));
  std::error_code error;
  if (!std::filesystem::is_directory(setup.folder, error)) {
    Terminal::warning("the sync folder is missing (is the drive mounted?)");
    return;
  }
  const SyncFolder::Listing listing = SyncFolder::list(setup.folder);
  bool others = false;
  for (const auto& [id, files] : listing.devices) {
    if (id == setup.device) continue;
    if (!others) Terminal::print("Devices:");
    others = true;
    const UUID device = id;  // clang before 16 cannot capture a structured binding
    const auto known = std::find_if(state.devices.begin(), state.devices.end(),
                                    [&](const SyncState::Device& seen) { return seen.id == device; });
    std::string line = "  " + deviceLabel(known != state.devices.end() ? known->name : "", id);
    if (known == state.devices.end()) {
      line += files.ledger ? ": not read yet" : ": its ledger has not arrived yet";
    } else {
      if (known->writtenAt) line += ", wrote " + display.dateTime(*known->writtenAt);
      line += ", read " + display.dateTime(known->readAt);
      if (!known->problem.empty()) line += "; " + known->problem;
      if (SyncFolder::stamp(files) != known->stamp) line += "; changed since";
    }
    Terminal::print(Terminal::escaped(line));
  }
  if (!others) Terminal::print("Devices:      none other yet; set up sync on another machine with the same folder");
  if (state.lastExchangeAt) {
    Terminal::print("Last exchange " + display.dateTime(*state.lastExchangeAt) + ":");
    for (const auto& line : state.lastReport) Terminal::print("  " + Terminal::escaped(line));
  } else {
    Terminal::print("Last exchange never");
  }
  for (const auto& ignored : listing.ignored) {
    Terminal::print(Terminal::escaped("Ignored       " + ignored.name + ": " + ignored.reason));
  }
}

// Waits for the next reason to exchange: a save to this machine's store
// (every command that saves asks the widgets to reload) or another
// device's file arriving or changing in the folder, then for a quiet
// second, since a sync service writes a file in steps.
class ChangeWatch {
 public:
  explicit ChangeWatch(const Configuration& setup) : setup_(setup) {
    folderWatch_ = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (folderWatch_ < 0 ||
        ::inotify_add_watch(folderWatch_, setup.folder.c_str(),
                            IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_CREATE | IN_DELETE_SELF |
                                IN_MOVE_SELF | IN_UNMOUNT) < 0) {
      throw CommandFailure("cannot watch the sync folder " + setup.folder.string() + ": " + std::strerror(errno));
    }
  }
  ~ChangeWatch() { ::close(folderWatch_); }
  ChangeWatch(const ChangeWatch&) = delete;
  ChangeWatch& operator=(const ChangeWatch&) = delete;

  void waitForChange() {
    while (!poll(-1)) {
    }
    while (poll(1000)) {
    }
  }

 private:
  // Whether a change that matters arrived within `timeout` milliseconds.
  bool poll(int timeout) {
    std::array<pollfd, 2> watched{{{store_.fileDescriptor(), POLLIN, 0}, {folderWatch_, POLLIN, 0}}};
    const int ready = ::poll(watched.data(), watched.size(), timeout);
    if (ready < 0 && errno != EINTR) throw CommandFailure(std::string("cannot wait for changes: ") + std::strerror(errno));
    bool matters = false;
    if (ready > 0 && (watched[0].revents & POLLIN) != 0) matters = store_.takeRequests() || matters;
    if (ready > 0 && (watched[1].revents & POLLIN) != 0) matters = folderEvents() || matters;
    return matters;
  }

  // Another device's files matter, and the own ones going away; the own
  // files being written do not (that is this exchange's own doing).
  bool folderEvents() {
    bool matters = false;
    alignas(inotify_event) std::array<char, 4096> buffer{};
    while (true) {
      const ssize_t length = ::read(folderWatch_, buffer.data(), buffer.size());
      if (length <= 0) break;
      for (std::size_t at = 0; at < static_cast<std::size_t>(length);) {
        const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
        if ((event->mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED)) != 0) {
          // Watching again would watch nothing: end, and let the service
          // manager start again once the folder is back.
          throw CommandFailure("the sync folder " + setup_.folder.string() + " went away");
        }
        const std::string name = event->len > 0 ? event->name : "";
        if (const auto owner = SyncFolder::deviceOfFileName(name)) {
          const bool gone = (event->mask & (IN_DELETE | IN_MOVED_FROM)) != 0;
          if (*owner != setup_.device || gone) matters = true;
        }
        at += sizeof(inotify_event) + event->len;
      }
    }
    return matters;
  }

  Configuration setup_;
  WidgetReloadWatcher store_;
  int folderWatch_ = -1;
};

void run(bool watch) {
  const UserDefaults defaults = preferences();
  const Configuration setup = requiredConfiguration(defaults);
  if (!watch) {
    printReport(exchange(defaults, setup));
    return;
  }
  ChangeWatch changes(setup);  // watching before the first exchange: nothing is missed
  Terminal::print("Watching " + setup.folder.string() + " and this machine's store; Ctrl-C stops.");
  std::cout.flush();
  while (true) {
    try {
      const auto report = exchange(defaults, setup);
      const Display display(Calendar::autoupdatingCurrent());
      for (const auto& line : report) Terminal::print(display.dateTime(Date::now()) + "  " + Terminal::escaped(line));
      std::cout.flush();  // a log read as it grows (journalctl, a terminal, a pipe)
    } catch (const std::exception& error) {
      Terminal::warning(std::string("the exchange failed and is tried again at the next change: ") + error.what());
    }
    changes.waitForChange();
  }
}

}  // namespace

std::string summary() {
  const UserDefaults defaults = preferences();
  const auto setup = configuration(defaults);
  if (!setup) return "not set up (quillmont sync setup DIR shares the ledger through a folder)";
  const SyncState state = loadState(defaults);
  std::error_code error;
  std::string text = setup->folder.string() +
                     (std::filesystem::is_directory(setup->folder, error) ? "" : " (missing: is the drive mounted?)") +
                     ", as " + deviceLabel(setup->name, setup->device);
  std::string seen;
  std::size_t leftAside = 0;
  for (const auto& device : state.devices) {
    seen += (seen.empty() ? "" : ", ") + deviceLabel(device.name, device.id);
    if (!device.problem.empty()) ++leftAside;
  }
  text += seen.empty() ? "; no other machine seen yet" : "; machines seen: " + seen;
  if (leftAside > 0) text += "; files of " + std::to_string(leftAside) + " left aside (see quillmont sync status)";
  const Display display(Calendar::autoupdatingCurrent());
  text += state.lastExchangeAt ? "; last exchange " + display.dateTime(*state.lastExchangeAt) : "; never exchanged";
  return text;
}

void install(CommandSet& commands) {
  auto watch = std::make_shared<bool>(false);
  CLI::App* sync = commands.add(commands.root(), "sync", "Keep this ledger equal on every machine through a shared folder",
                                [watch] { run(*watch); });
  sync->add_flag("--watch", *watch, "Keep running and exchange at every change, here or in the folder");
  sync->footer(
      "Every machine writes its ledger into the folder that Syncthing, Nextcloud or a network share keeps equal, and "
      "merges the others': the later change wins, deletions travel, a timer runs on every machine.");

  auto folder = std::make_shared<std::string>();
  auto name = std::make_shared<std::string>();
  auto adopt = std::make_shared<bool>(false);
  auto keep = std::make_shared<bool>(false);
  CLI::App* setupCommand = commands.add(*sync, "setup", "Choose the shared folder and name this machine",
                                        [folder, name, adopt, keep] {
                                          setup(*folder, *name,
                                                *adopt  ? SettingsChoice::adopt
                                                : *keep ? SettingsChoice::keep
                                                        : SettingsChoice::undecided);
                                        });
  setupCommand->add_option("DIR", *folder, "The folder the sync service shares (created when missing)")->required();
  setupCommand->add_option("--name", *name, "How other machines call this one (default: its host name)");
  CLI::Option* adoptOption = setupCommand->add_flag(
      "--adopt", *adopt, "When the folder's ledger has other settings than this machine's: take the folder's");
  setupCommand->add_flag("--keep", *keep, "When the folder's ledger has other settings: keep this machine's everywhere")
      ->excludes(adoptOption);
  commands.add(*sync, "status", "Show the folder, the devices seen and the last exchange", [] { status(); });
}

}  // namespace quillmont::SyncCommands
