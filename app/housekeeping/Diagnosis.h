// Diagnosis: where the data lives, what the entitlements allow and whether
// the store is sound, as values a host shows. Examining changes nothing:
// where there is no store yet it creates none (nor its folders).
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

#include "platform/foundation/ProcessEntitlements.h"

namespace quillmont {

struct Diagnosis {
  struct Store {
    std::string location;  ///< its file, or "in memory"
    bool readOnly = false;
    std::string integrity;  ///< "ok", or what the integrity check found
    std::size_t workEntries = 0;
    std::size_t bookings = 0;
    std::size_t schedules = 0;
    std::size_t settingsRecords = 0;
    bool setUpComplete = false;
    bool migrated = false;  ///< the manual ledger's carry-over is booked
    std::string timeZone;
    std::string calendar;
  };

  std::filesystem::path dataHome;
  bool dataHomeFromEnvironment = false;  ///< QUILLMONT_HOME chose it
  ProcessEntitlements::Source entitlements = ProcessEntitlements::Source::none;
  std::optional<std::filesystem::path> entitlementsFile;  ///< when overridden
  bool appGroupUsable = false;
  bool cloudEntitled = false;
  std::filesystem::path widgetSnapshotFile;
  bool widgetSnapshotExists = false;
  bool widgetShowsSetUpMessage = false;
  std::filesystem::path storePath;
  bool storeExists = false;
  /// What the store holds, when it exists and could be opened.
  std::optional<Store> store;
  /// Why an existing store could not be opened; empty when it could.
  std::string storeError;

  /// Whether nothing needs attention: no store yet, or one that opens and
  /// passes its integrity check.
  bool healthy() const;

  static Diagnosis examine();
};

}  // namespace quillmont
