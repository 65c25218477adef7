#include "cli/SyncCommands.h"

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "cli/CommandFailure.h"
#include "cli/Display.h"
#include "cli/FileTransfer.h"
#include "cli/StoreSession.h"
#include "cli/SyncFolder.h"
#include "cli/SyncState.h"
#include "cli/Terminal.h"
#include "core/archive/TimeBankArchive.h"
#include "core/archive/TimeBankArchiveError.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/TimeBankSettings.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"
#include "core/persistence/AppConstants.h"
#include "core/sync/SyncDeviceFile.h"
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
  return signature + "/" + std::to_string(deletions.size()) + "@" + std::to_string(latest);
}

std::string ownStamp(const Configuration& setup) {
  return SyncFolder::stamp(SyncFolder::DeviceFiles{setup.folder / SyncFolder::ledgerFileName(setup.device),
                                                   setup.folder / SyncFolder::deviceFileName(setup.device)});
}

std::string deviceLabel(const std::string& name, const UUID& id) {
  return (name.empty() ? std::string("a device") : name) + " (" + Display::shortIdentifier(id) + ")";
}

// Reads and merges one other device's files; returns the report line.
std::string mergeDevice(StoreSession& session, const UUID& id, const SyncFolder::DeviceFiles& files,
                        SyncState::Device& known) {
  std::vector<DeletionLog::Entry> deletions;
  if (files.device) {
    try {
      const auto device = SyncDeviceFile::decodeJSON(FileTransfer::read(files.device->string()));
      if (device.device != id) throw JsonDecodingError("it names another device");
      known.name = device.name;
      known.writtenAt = device.writtenAt;
      deletions = device.deletions;
    } catch (const JsonDecodingError& error) {
      known.problem = files.device->filename().string() + " is not a readable device file (" + error.what() + ")";
      return "Skipped " + deviceLabel(known.name, id) + ": " + known.problem + "; nothing was changed from it.";
    }
  }
  try {
    const auto result = SyncMerge::merge(
        session.context(), TimeBankArchive::decodeJSON(FileTransfer::read(files.ledger->string())), deletions,
        session.now());
    known.problem.clear();
    std::string line = "Merged " + deviceLabel(known.name, id) + ": inserted " +
                       std::to_string(result.merged.inserted) + ", updated " + std::to_string(result.merged.updated) +
                       ", unchanged " + std::to_string(result.merged.unchanged);
    if (result.recordsDeleted > 0) line += ", deleted " + std::to_string(result.recordsDeleted);
    return line + ".";
  } catch (const JsonDecodingError& error) {
    known.problem = files.ledger->filename().string() + " is not a readable ledger (" + error.what() + ")";
  } catch (const TimeBankArchiveError& error) {
    known.problem = files.ledger->filename().string() + " was refused: " + error.what();
  }
  return "Skipped " + deviceLabel(known.name, id) + ": " + known.problem + "; nothing was changed from it.";
}

void writeOwnFiles(StoreSession& session, const Configuration& setup) {
  ModelContext& context = session.context();
  const auto entries = context.fetch<WorkEntry>();
  const auto adjustments = context.fetch<BalanceAdjustment>();
  const auto schedules = context.fetch<WorkSchedule>();
  const auto settings = context.fetch<TimeBankSettings>();
  std::string ledger = TimeBankArchive(session.now(), entries, adjustments, schedules, settings).encodedJSON();
  ledger += '\n';
  const SyncDeviceFile device{setup.device, setup.name, session.now(), session.container()->deletions()};
  // The deletions first: a reader that sees the new ledger already has them.
  FileTransfer::writeAtomically((setup.folder / SyncFolder::deviceFileName(setup.device)).string(),
                                device.encodedJSON() + "\n");
  FileTransfer::writeAtomically((setup.folder / SyncFolder::ledgerFileName(setup.device)).string(), ledger);
}

/// One exchange; returns its report, also kept for `sync status`.
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
    const SyncFolder::Listing listing = SyncFolder::list(setup.folder);
    // This machine's news goes out before anything comes in: a folder that
    // refuses the write fails the exchange while the store is unchanged.
    bool wroteOwn = false;
    if (storeSignature(session) != state.ownSignature || ownStamp(setup) != state.ownStamp) {
      writeOwnFiles(session, setup);
      state.ownSignature = storeSignature(session);
      state.ownStamp = ownStamp(setup);
      wroteOwn = true;
    }
    bool mergedAny = false;
    for (const auto& [id, files] : listing.devices) {
      if (id == setup.device || !files.ledger) continue;
      const std::string stamp = SyncFolder::stamp(files);
      SyncState::Device& known = state.device(id);
      if (known.stamp == stamp) continue;
      report.push_back(mergeDevice(session, id, files, known));
      known.stamp = stamp;
      known.readAt = session.now();
      mergedAny = true;
    }
    if (!mergedAny) report.emplace_back("Nothing new from other devices.");

    // What was merged in is also written out, but it is in the others'
    // files already: when the folder refuses it now, the merge stands (it
    // is saved) and the files are written at the next exchange.
    const std::string signature = storeSignature(session);
    if (signature != state.ownSignature || ownStamp(setup) != state.ownStamp) {
      try {
        writeOwnFiles(session, setup);
        state.ownSignature = signature;
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
  }  // the session refreshes the widget once, when anything was merged
  state.lastReport = report;
  defaults.setData(state.encodedJSON(), stateKey);
  return report;
}

void printReport(const std::vector<std::string>& report) {
  for (const auto& line : report) Terminal::print(line);
}

void setup(const std::string& folderText, const std::string& name) {
  std::error_code error;
  std::filesystem::path folder = std::filesystem::absolute(folderText, error);
  if (error) throw CommandFailure("cannot use " + folderText + " as the sync folder: " + error.message());
  if (!std::filesystem::exists(folder, error)) {
    std::filesystem::create_directories(folder, error);
    if (error) throw CommandFailure("cannot create the sync folder " + folder.string() + ": " + error.message());
  } else if (!std::filesystem::is_directory(folder, error)) {
    throw CommandFailure(folder.string() + " is not a folder");
  }
  folder = std::filesystem::canonical(folder, error);
  const UserDefaults defaults = preferences();
  const auto known = configuration(defaults);
  const UUID device = known ? known->device : UUID::random();
  const std::string deviceName = !name.empty() ? name : known && !known->name.empty() ? known->name : hostName();
  if (!defaults.setString(folder.string(), folderKey) || !defaults.setString(device.uuidString(), deviceKey) ||
      !defaults.setString(deviceName, nameKey)) {
    throw CommandFailure("cannot keep the sync settings in " + defaults.folder().string());
  }
  if (known && known->folder != folder) defaults.removeObject(stateKey);  // another folder: read everything
  Terminal::print("This machine is " + deviceLabel(deviceName, device) + "; it syncs through " + folder.string() +
                  ".");
  printReport(exchange(defaults, Configuration{folder, device, deviceName}));
}

void status() {
  const UserDefaults defaults = preferences();
  const Configuration setup = requiredConfiguration(defaults);
  const SyncState state = loadState(defaults);
  const Display display(Calendar::autoupdatingCurrent());
  Terminal::print("Sync folder   " + setup.folder.string());
  Terminal::print("This machine  " + deviceLabel(setup.name, setup.device) + ", writes " +
                  SyncFolder::ledgerFileName(setup.device));
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
    Terminal::print(line);
  }
  if (!others) Terminal::print("Devices:      none other yet; set up sync on another machine with the same folder");
  if (state.lastExchangeAt) {
    Terminal::print("Last exchange " + display.dateTime(*state.lastExchangeAt) + ":");
    for (const auto& line : state.lastReport) Terminal::print("  " + line);
  } else {
    Terminal::print("Last exchange never");
  }
  for (const auto& ignored : listing.ignored) Terminal::print("Ignored       " + ignored.name + ": " + ignored.reason);
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
      for (const auto& line : report) Terminal::print(display.dateTime(Date::now()) + "  " + line);
      std::cout.flush();  // a log read as it grows (journalctl, a terminal, a pipe)
    } catch (const std::exception& error) {
      Terminal::warning(std::string("the exchange failed and is tried again at the next change: ") + error.what());
    }
    changes.waitForChange();
  }
}

}  // namespace

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
  CLI::App* setupCommand = commands.add(*sync, "setup", "Choose the shared folder and name this machine",
                                        [folder, name] { setup(*folder, *name); });
  setupCommand->add_option("DIR", *folder, "The folder the sync service shares (created when missing)")->required();
  setupCommand->add_option("--name", *name, "How other machines call this one (default: its host name)");
  commands.add(*sync, "status", "Show the folder, the devices seen and the last exchange", [] { status(); });
}

}  // namespace quillmont::SyncCommands
