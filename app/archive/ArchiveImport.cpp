#include "app/archive/ArchiveImport.h"

#include <unordered_set>
#include <utility>

#include "app/Refusal.h"
#include "core/archive/LegacyPrototypeImport.h"
#include "platform/foundation/JsonReader.h"

namespace quillmont::ArchiveImport {
namespace {

// Decoding failures name the file; the archive's own refusals speak for themselves.
template <class Decode>
auto decoded(const std::string& name, Decode decode) {
  try {
    return decode();
  } catch (const JsonDecodingError& error) {
    throw Refusal("cannot import " + name + ": it is not a readable archive (" + error.what() + ")");
  }
}

}  // namespace

TimeBankArchive decode(std::string document, const std::string& name, const Progress::Report& progress) {
  Progress::tell(progress, {Progress::Stage::decoding, document.size()});
  return decoded(name, [&] { return TimeBankArchive::decodeJSON(std::move(document)); });
}

LegacyFile decodeLegacy(const std::string& document, const std::string& name, const Progress::Report& progress) {
  Progress::tell(progress, {Progress::Stage::decoding, document.size()});
  const auto entries = decoded(name, [&] { return LegacyPrototypeImport::decode(document); });
  LegacyFile legacy;
  std::unordered_set<UUID> seen;
  for (const auto& entry : entries) {
    if (!seen.insert(entry.id).second) {
      ++legacy.repeated;
      continue;
    }
    legacy.archive.balanceAdjustments.push_back(
        {entry.id, entry.date, entry.minutes, entry.note, "manual", entry.date, entry.date});
  }
  return legacy;
}

TimeBankArchiveMergeResult merge(StoreSession& session, const TimeBankArchive& archive, bool dryRun,
                                 const Progress::Report& progress) {
  Progress::tell(progress, {Progress::Stage::merging});
  auto result = dryRun ? archive.mergePreview(session.context(), session.now())
                       : archive.merge(session.context(), session.now());
  Progress::tell(progress, {Progress::Stage::finished});
  return result;
}

TimeBankArchiveMergeResult merge(StoreSession& session, LegacyFile legacy, bool dryRun,
                                 const Progress::Report& progress) {
  legacy.archive.exportedAt = session.now();
  legacy.archive.validate();
  return merge(session, legacy.archive, dryRun, progress);
}

}  // namespace quillmont::ArchiveImport
