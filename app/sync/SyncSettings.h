// SyncSettings: what this machine keeps about its folder sync in the
// application group's preferences (shared by every program of the group):
// the folder, its device identifier and name, and the state between two
// exchanges (SyncState).
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "app/sync/SyncState.h"
#include "platform/foundation/UUID.h"
#include "platform/foundation/UserDefaults.h"

namespace quillmont::SyncSettings {

struct Configuration {
  std::filesystem::path folder;
  UUID device;
  std::string name;
};

/// The preferences the sync settings live in.
UserDefaults preferences();

/// This machine's sync set-up; nothing when sync is not set up.
std::optional<Configuration> configuration(const UserDefaults& defaults);
/// The same; throws Refusal (with the setUpSync Remedy) when it is not.
Configuration requiredConfiguration(const UserDefaults& defaults);
/// Keeps `configuration`; throws Refusal when the preferences refuse it.
void keep(const UserDefaults& defaults, const Configuration& configuration);

/// The state of the last exchange; a fresh one when there is none or it
/// cannot be read (then everything is read again).
SyncState state(const UserDefaults& defaults);
void keepState(const UserDefaults& defaults, const SyncState& state);
/// Forgets the state: the next exchange reads every file again.
void forgetState(const UserDefaults& defaults);

/// How reports name a device: "laptop (1A2B3C4D)", "a device (…)" unnamed.
std::string deviceLabel(const std::string& name, const UUID& id);
/// This machine's host name, the default name of its device.
std::string hostName();

}  // namespace quillmont::SyncSettings
