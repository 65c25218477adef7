#include "app/archive/ArchiveExport.h"

#include "app/files/FileTransfer.h"
#include "core/archive/TimeBankArchive.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/TimeBankSettings.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"

namespace quillmont::ArchiveExport {

Exported document(StoreSession& session, const Progress::Report& progress) {
  Progress::tell(progress, {Progress::Stage::reading});
  ModelContext& context = session.context();
  const auto entries = context.fetch<WorkEntry>();
  const auto adjustments = context.fetch<BalanceAdjustment>();
  const auto schedules = context.fetch<WorkSchedule>();
  const auto settings = context.fetch<TimeBankSettings>();
  Exported exported{{}, entries.size(), adjustments.size(), schedules.size(), settings.size()};
  Progress::tell(progress, {Progress::Stage::encoding, 0,
                            entries.size() + adjustments.size() + schedules.size() + settings.size()});
  exported.document = TimeBankArchive(session.now(), entries, adjustments, schedules, settings).encodedJSON();
  exported.document += '\n';
  return exported;
}

Exported toFile(StoreSession& session, const std::string& path, const Progress::Report& progress) {
  Exported exported = document(session, progress);
  Progress::tell(progress, {Progress::Stage::writing, exported.document.size()});
  FileTransfer::writeAtomically(path, exported.document);
  Progress::tell(progress, {Progress::Stage::finished, exported.document.size()});
  return exported;
}

}  // namespace quillmont::ArchiveExport
