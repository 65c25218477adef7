// SyncState: what this machine remembers between two exchanges through the
// sync folder: the store's state its own files were written from, and, for
// every other device, the files it read last (so unchanged files are not
// read again), their writer's name and what went wrong with them. Also the
// report of the last exchange, for `sync status`.
//
// Kept as compact JSON in the application group's preferences; a missing
// or unreadable state reads as a fresh one (everything is read again).
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/Date.h"
#include "platform/foundation/UUID.h"

namespace quillmont {

struct SyncState {
  struct Device {
    UUID id;
    std::string name;
    std::optional<Date> writtenAt;  ///< as its device file says
    std::string stamp;              ///< size and modification time of its files when read
    Date readAt;
    std::string problem;  ///< why its files were not merged; empty when they were
    friend bool operator==(const Device&, const Device&) = default;
  };

  /// The store's generations and deletions the own files were written from.
  std::string ownSignature;
  /// Size and modification time of the own files just after writing them.
  std::string ownStamp;
  std::vector<Device> devices;
  std::optional<Date> lastExchangeAt;
  std::vector<std::string> lastReport;

  Device& device(const UUID& id);

  std::string encodedJSON() const;
  /// Throws JsonDecodingError for anything but what encodedJSON writes.
  static SyncState decodeJSON(std::string_view json);

  friend bool operator==(const SyncState&, const SyncState&) = default;
};

}  // namespace quillmont
