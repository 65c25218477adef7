// SyncDeviceFile: what one machine says of itself in a shared sync folder,
// beside its ledger: who it is, when it wrote, the deletions its store
// knows (so another machine removes what was deleted here instead of
// keeping its own copy) and the public holidays it keeps (which the ledger
// archive has no place for).
//
// Compact JSON with keys in ascending order:
//   {"deletions":[{"deletedAt":…,"id":"…","type":"WorkEntry"},…],
//    "device":"8-4-4-4-12 identifier",
//    "holidays":[{"day":"2026-12-25","name":"Christmas","uid":"…"},…],
//    "name":"laptop","writtenAt":…}
// "holidays" may be missing (files of earlier versions): none.
// Instants are seconds since 1970-01-01 UTC, as in the archive. Reading
// ignores unknown keys and refuses anything else with JsonDecodingError.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/Date.h"
#include "platform/foundation/UUID.h"
#include "platform/store/DeletionLog.h"
#include "platform/store/HolidayList.h"

namespace quillmont {

struct SyncDeviceFile {
  UUID device;
  std::string name;
  Date writtenAt;
  std::vector<DeletionLog::Entry> deletions;
  std::vector<HolidayList::Entry> holidays{};  // none in files of earlier versions

  std::string encodedJSON() const;
  static SyncDeviceFile decodeJSON(std::string_view json);

  friend bool operator==(const SyncDeviceFile&, const SyncDeviceFile&) = default;
};

}  // namespace quillmont
