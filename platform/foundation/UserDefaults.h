// UserDefaults: small preferences that outlive the process. The standard
// preferences of a program live in its own container; an application
// group's suite lives in the group's container, so every program of the
// group shares it, and opens only for a process whose entitlements list the
// group.
//
// A suite is a folder of small files, one per key, private to the user. A
// write goes to a temporary file that is renamed over the key's file, so a
// reader sees either the old value or the new one, never half of one, and of
// two writers the later rename wins. An entry that is missing, unreadable or
// of another type reads as absent. Nothing here throws: a write that cannot
// be made answers false and leaves the old value.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace quillmont {

class UserDefaults {
 public:
  /// The largest entry read (1 MiB); a larger file reads as no value.
  static constexpr std::size_t maximumEntryBytes = std::size_t{1} << 20;

  /// The running program's standard preferences.
  static UserDefaults standard();
  /// The suite of an application group; nothing when the process's
  /// entitlements do not grant the group.
  static std::optional<UserDefaults> suite(std::string_view suiteName);
  /// Preferences kept in `folder` (tests and special set-ups).
  explicit UserDefaults(std::filesystem::path folder) : folder_(std::move(folder)) {}

  const std::filesystem::path& folder() const { return folder_; }

  /// The bytes stored with setData under `key`.
  std::optional<std::string> data(std::string_view key) const;
  /// The text stored with setString under `key`.
  std::optional<std::string> string(std::string_view key) const;

  bool setData(std::string_view bytes, std::string_view key) const;
  bool setString(std::string_view text, std::string_view key) const;
  /// Forgets `key`; true when it is absent afterwards.
  bool removeObject(std::string_view key) const;

  /// The file that holds `key` ("widget snapshot" and other unsafe names
  /// are percent-encoded).
  std::filesystem::path fileFor(std::string_view key) const;

 private:
  enum class Kind : char { data = 'd', string = 's' };
  std::optional<std::string> read(std::string_view key, Kind kind) const;
  bool write(std::string_view key, Kind kind, std::string_view bytes) const;

  std::filesystem::path folder_;
};

}  // namespace quillmont
