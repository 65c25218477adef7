// The archive use cases on real stores in temporary data homes: a ledger
// exported from one home and imported into another, dry runs, the legacy
// file, and what each reports as it goes.
#include "app/archive/ArchiveImport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "app/Refusal.h"
#include "app/archive/ArchiveExport.h"
#include "app/testing/TemporaryHome.h"
#include "core/archive/LegacyPrototypeImport.h"
#include "core/ledger/BalanceAdjustment.h"

namespace quillmont {
namespace {

using ::testing::HasSubstr;
using testing::TemporaryHome;

const Date now = Date::fromTimeIntervalSince1970(1'780'000'000);

void book(std::int64_t minutes) {
  StoreSession session;
  session.context().insert(std::make_shared<BalanceAdjustment>(UUID::random(), session.now(), minutes, "",
                                                               BalanceAdjustmentKind::manual, session.now(),
                                                               session.now()));
  session.context().save();
}

std::size_t bookings() {
  StoreSession session;
  return session.context().fetch<BalanceAdjustment>().size();
}

std::vector<Progress::Stage> stages(const std::vector<Progress::Step>& steps) {
  std::vector<Progress::Stage> result;
  for (const auto& step : steps) result.push_back(step.stage);
  return result;
}

TEST(ArchiveTransfer, ALedgerMovedToAnotherHomeArrivesOnceAndADryRunChangesNothing) {
  Date::ScopedClock clock(now);
  TemporaryHome office;
  book(30);
  book(-45);
  std::vector<Progress::Step> steps;
  const auto exported = [&] {
    StoreSession session;
    return ArchiveExport::toFile(session, (office.folder() / "ledger.json").string(),
                                 [&](const Progress::Step& step) { steps.push_back(step); });
  }();
  EXPECT_EQ(exported.bookings, 2u);
  EXPECT_EQ(exported.document.back(), '\n');
  using Progress::Stage;
  EXPECT_EQ(stages(steps), (std::vector{Stage::reading, Stage::encoding, Stage::writing, Stage::finished}));
  EXPECT_EQ(steps[1].records, exported.workEntries + exported.bookings + exported.schedules + exported.settingsRecords);
  EXPECT_EQ(steps[2].bytes, exported.document.size());

  TemporaryHome laptop;
  const TimeBankArchive archive = ArchiveImport::decode(exported.document, "ledger.json");
  const auto preview = [&] {
    StoreSession session;
    return ArchiveImport::merge(session, archive, true);
  }();
  EXPECT_GE(preview.inserted, 2);
  EXPECT_EQ(bookings(), 0u);

  const auto merged = [&] {
    StoreSession session;
    return ArchiveImport::merge(session, archive, false);
  }();
  EXPECT_EQ(merged.inserted, preview.inserted);
  EXPECT_EQ(merged.updated, preview.updated);
  EXPECT_EQ(bookings(), 2u);
  // Every booking is known now: a second import adds none. (The archive's
  // settings record may arrive again: this home keeps its own settings, and
  // the configuration's repair removes the imported one after each import.)
  {
    StoreSession session;
    const auto again = ArchiveImport::merge(session, archive, false);
    EXPECT_LE(again.inserted, 1);
    EXPECT_EQ(again.total(), merged.total());
  }
  EXPECT_EQ(bookings(), 2u);
}

TEST(ArchiveTransfer, UnreadableDocumentsAreRefusedNamingTheFile) {
  for (const char* document : {"", "{", "[1, 2]", "{\"exportedAt\": \"yesterday\"}"}) {
    try {
      ArchiveImport::decode(document, "backup.json");
      ADD_FAILURE() << "accepted " << document;
    } catch (const Refusal& refusal) {
      EXPECT_THAT(refusal.what(), HasSubstr("cannot import backup.json: it is not a readable archive (")) << document;
    }
    EXPECT_THROW(ArchiveImport::decodeLegacy(document, "old.json"), Refusal) << document;
  }
}

TEST(ArchiveTransfer, LegacyEntriesKeepTheirIdentifiersSoASecondImportAddsNothing) {
  Date::ScopedClock clock(now);
  TemporaryHome home;
  const UUID first = UUID::random();
  const std::vector<LegacyBalanceEntry> entries{{first, 90, now, "first"},
                                                {UUID::random(), -30, now, "second"},
                                                {first, 15, now, "repeats the first's identifier"}};
  const std::string file = LegacyPrototypeImport::encode(entries);
  auto legacy = ArchiveImport::decodeLegacy(file, "old.json");
  EXPECT_EQ(legacy.repeated, 1u);
  ASSERT_EQ(legacy.archive.balanceAdjustments.size(), 2u);
  EXPECT_EQ(legacy.archive.balanceAdjustments[0].minutes, 90);  // the first one wins

  {
    StoreSession session;
    EXPECT_EQ(ArchiveImport::merge(session, legacy, false).inserted, 2);
  }
  StoreSession session;
  const auto again = ArchiveImport::merge(session, ArchiveImport::decodeLegacy(file, "old.json"), false);
  EXPECT_EQ(again.inserted, 0);
  EXPECT_EQ(again.unchanged, 2);
  EXPECT_EQ(session.context().fetch<BalanceAdjustment>().size(), 2u);
}

}  // namespace
}  // namespace quillmont
