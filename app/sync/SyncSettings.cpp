#include "app/sync/SyncSettings.h"

#include <unistd.h>

#include <array>

#include "app/Refusal.h"
#include "app/text/Display.h"
#include "core/persistence/AppConstants.h"
#include "platform/foundation/JsonReader.h"

namespace quillmont::SyncSettings {
namespace {

constexpr std::string_view folderKey = "syncFolder";
constexpr std::string_view deviceKey = "syncDevice";
constexpr std::string_view nameKey = "syncDeviceName";
constexpr std::string_view stateKey = "syncState";

}  // namespace

UserDefaults preferences() {
  if (auto suite = UserDefaults::suite(AppConstants::appGroupIdentifier)) return *suite;
  return UserDefaults::standard();
}

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
    throw Refusal("sync is not set up on this machine", Remedy{Remedy::Kind::setUpSync});
  }
  return *found;
}

void keep(const UserDefaults& defaults, const Configuration& configuration) {
  if (!defaults.setString(configuration.folder.string(), folderKey) ||
      !defaults.setString(configuration.device.uuidString(), deviceKey) ||
      !defaults.setString(configuration.name, nameKey)) {
    throw Refusal("cannot keep the sync settings in " + defaults.folder().string());
  }
}

SyncState state(const UserDefaults& defaults) {
  const auto text = defaults.data(stateKey);
  if (!text) return {};
  try {
    return SyncState::decodeJSON(*text);
  } catch (const JsonDecodingError&) {
    return {};  // everything is read again
  }
}

void keepState(const UserDefaults& defaults, const SyncState& state) { defaults.setData(state.encodedJSON(), stateKey); }

void forgetState(const UserDefaults& defaults) { defaults.removeObject(stateKey); }

std::string deviceLabel(const std::string& name, const UUID& id) {
  return (name.empty() ? std::string("a device") : name) + " (" + Display::shortIdentifier(id) + ")";
}

std::string hostName() {
  std::array<char, 256> name{};
  if (::gethostname(name.data(), name.size() - 1) != 0 || name[0] == '\0') return "this machine";
  return name.data();
}

}  // namespace quillmont::SyncSettings
