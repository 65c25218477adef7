#include "core/archive/TimeBankArchive.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <set>

#include "core/archive/TimeBankArchiveError.h"
#include "core/engine/DataStoreMaintenance.h"
#include "core/engine/Settlement.h"
#include "core/persistence/QuillmontPersistence.h"

namespace quillmont {
namespace {

using Archive = TimeBankArchive;

UUID id(int number) {
  UUID result;
  result.bytes[0] = 0xC0;
  result.bytes[15] = static_cast<std::uint8_t>(number);
  return result;
}

class TimeBankArchiveMergeTest : public ::testing::Test {
 protected:
  std::shared_ptr<ModelContainer> container = QuillmontPersistence::makeContainer(true, false, false);
  ModelContext context{container};
  Date now = Date(800000000);  // 2026-05-09 04:53:20 UTC
  Date::ScopedClock clock{now};

  std::shared_ptr<WorkEntry> storeEntry(int number, Date modifiedAt, std::string_view note = "stored") {
    auto entry = std::make_shared<WorkEntry>(id(number), now - 7200, now - 3600, 10, note, now - 86400, modifiedAt);
    context.insert(entry);
    return entry;
  }

  static Archive::WorkEntryRecord entryRecord(int number, Date modifiedAt, std::string note = "archived") {
    return {id(number), Date(799990000), Date(799991000), 15, std::move(note), Date(799990000), modifiedAt};
  }

  template <class Model>
  std::shared_ptr<Model> fetchOne(int number) {
    const auto records = context.fetch<Model>({[&](const Model& record) { return record.id() == id(number); }, {}});
    return records.size() == 1 ? records[0] : nullptr;
  }
};

TEST_F(TimeBankArchiveMergeTest, LastWriterWinsOnNormalisedModificationTimes) {
  const auto same = storeEntry(1, now - 100);
  const auto older = storeEntry(2, now - 100);
  const auto future = storeEntry(3, now + 600);  // pulled back to now first
  const auto current = storeEntry(4, now);
  context.save();

  Archive archive;
  archive.exportedAt = now;
  archive.workEntries = {entryRecord(1, now - 100), entryRecord(2, now - 99), entryRecord(3, now - 1),
                         entryRecord(4, now + 600),  // treated as modified now: not later than the stored one
                         entryRecord(5, now - 5000, "  new  ")};
  archive.workEntries[4].createdAt = now;
  EXPECT_EQ(archive.merge(context, now), (TimeBankArchiveMergeResult{1, 1, 3}));
  EXPECT_FALSE(context.hasChanges());

  for (const auto& kept : {same, future, current}) EXPECT_EQ(kept->note(), "stored");
  EXPECT_EQ(future->modifiedAt(), now);
  EXPECT_EQ(older->note(), "archived");
  EXPECT_EQ(older->startedAt(), Date(799990000));
  EXPECT_EQ(older->breakMinutes(), 15);
  EXPECT_EQ(older->createdAt(), Date(799990000));
  EXPECT_EQ(older->modifiedAt(), now - 99);
  const auto inserted = fetchOne<WorkEntry>(5);
  ASSERT_TRUE(inserted);
  EXPECT_EQ(inserted->note(), "new");
  EXPECT_EQ(inserted->endedAt(), Date(799991000));
  EXPECT_EQ(inserted->createdAt(), now - 5000);  // never after the modification
  EXPECT_EQ(context.fetch<TimeBankSettings>().size(), 1u);  // made by the configuration reconciliation
}

TEST_F(TimeBankArchiveMergeTest, NormalisesEveryIncomingValue) {
  const auto backwards = storeEntry(9, now - 100);
  context.save();
  Archive archive;
  archive.exportedAt = now - 1000;
  archive.workEntries = {entryRecord(1, now), entryRecord(2, now), entryRecord(3, now), entryRecord(9, now)};
  archive.workEntries[0].endedAt.reset();  // running, started before the export
  archive.workEntries[0].breakMinutes = -5;
  archive.workEntries[1].endedAt.reset();  // running, started after the export
  archive.workEntries[1].startedAt = now - 500;
  archive.workEntries[1].breakMinutes = 500;
  archive.workEntries[3].endedAt = archive.workEntries[3].startedAt - 60;  // updates: ends at its start
  archive.balanceAdjustments.resize(3);
  const std::pair<std::string, std::int64_t> kinds[] = {{"holiday", 2000}, {"Vacation", 70000}, {"appointment", 30}};
  for (int i = 0; i < 3; ++i) {
    archive.balanceAdjustments[i] = {id(20 + i), now, kinds[i].second, "", kinds[i].first, now, now};
  }
  archive.settings.resize(1);
  archive.settings[0] = {id(30), now - 86400, 70000, {480, 480, 480, 480, 480, 0, 0}, std::nullopt, std::nullopt,
                         std::nullopt, false, now};
  EXPECT_EQ(archive.merge(context, now).total(), 8);

  EXPECT_EQ(fetchOne<WorkEntry>(1)->endedAt(), now - 1000);
  EXPECT_EQ(fetchOne<WorkEntry>(1)->breakMinutes(), 0);
  EXPECT_EQ(fetchOne<WorkEntry>(2)->endedAt(), now - 500);
  EXPECT_EQ(fetchOne<WorkEntry>(2)->breakMinutes(), 240);
  EXPECT_EQ(backwards->endedAt(), backwards->startedAt());
  EXPECT_EQ(fetchOne<BalanceAdjustment>(20)->kindRawValue(), "holiday");
  EXPECT_EQ(fetchOne<BalanceAdjustment>(20)->minutes(), 1440);
  EXPECT_EQ(fetchOne<BalanceAdjustment>(21)->kindRawValue(), "manual");
  EXPECT_EQ(fetchOne<BalanceAdjustment>(21)->minutes(), 60000);
  EXPECT_EQ(fetchOne<BalanceAdjustment>(22)->minutes(), 0);  // a debit kind takes no credit
  const auto settings = fetchOne<TimeBankSettings>(30);
  ASSERT_TRUE(settings);
  EXPECT_EQ(settings->startingBalanceMinutes(), 60000);
  EXPECT_EQ(settings->customAdjustmentCategoriesRawValue(), "[]");
  EXPECT_EQ(settings->visibleAdjustmentKindsRawValue(), "appointment,personalErrands,longLunch,other");
  EXPECT_EQ(settings->quickActionMinutes(), (TimeBankSettings::QuickActionMinutes{15, 30, 60, 120}));

  // A later copy of the settings updates them; an export from the future
  // closes running entries now.
  archive = Archive();
  archive.exportedAt = now + 3600;
  archive.workEntries = {entryRecord(6, now)};
  archive.workEntries[0].endedAt.reset();
  archive.settings = {{id(30), now, -70000, {0, 0, 0, 0, 0, 0, 0}, std::vector<std::int64_t>{5, 5, 5, 5}, "holiday",
                       R"(["Kita"])", false, now + 1}};
  EXPECT_EQ(archive.merge(context, now), (TimeBankArchiveMergeResult{1, 1, 0}));
  EXPECT_EQ(fetchOne<WorkEntry>(6)->endedAt(), now);
  EXPECT_EQ(settings->startingBalanceMinutes(), -60000);
  EXPECT_EQ(settings->quickActionMinutes(), (TimeBankSettings::QuickActionMinutes{5, 5, 5, 5}));
  EXPECT_EQ(settings->customAdjustmentCategoriesRawValue(), R"(["Kita"])");
}

TEST_F(TimeBankArchiveMergeTest, RemovesStoredDuplicatesUncounted) {
  storeEntry(1, now - 50, "first");
  const auto later = storeEntry(1, now - 10, "later");
  storeEntry(1, now - 10, "tied later");
  const auto first = std::make_shared<BalanceAdjustment>(id(2), now, -30, "first", BalanceAdjustmentKind::other, now, now);
  const auto second = std::make_shared<BalanceAdjustment>(id(2), now, -60, "second", BalanceAdjustmentKind::other, now, now);
  context.insert(first);
  context.insert(second);
  context.save();

  Archive archive;
  archive.exportedAt = now;
  archive.workEntries = {entryRecord(1, now - 20)};
  EXPECT_EQ(archive.merge(context, now), (TimeBankArchiveMergeResult{0, 0, 1}));
  EXPECT_THAT(context.fetch<WorkEntry>(), testing::ElementsAre(later));
  EXPECT_THAT(context.fetch<BalanceAdjustment>(), testing::ElementsAre(first));
}

TEST_F(TimeBankArchiveMergeTest, AnArchiveThatFailsValidationLeavesTheStoreAlone) {
  const auto future = storeEntry(1, now + 600);
  storeEntry(1, now - 10);
  context.save();
  Archive archive;
  archive.workEntries = {entryRecord(2, now), entryRecord(2, now)};
  EXPECT_THROW(archive.merge(context, now), TimeBankArchiveError);
  EXPECT_FALSE(context.hasChanges());
  EXPECT_EQ(future->modifiedAt(), now + 600);
  EXPECT_EQ(context.fetch<WorkEntry>().size(), 2u);
}

TEST_F(TimeBankArchiveMergeTest, ReimportingTheStoresOwnExportChangesNothing) {
  for (int i = 0; i < 5; ++i) storeEntry(i, now - 100 * i, "entry " + std::to_string(i));
  context.insert(std::make_shared<WorkEntry>(id(9), now - 60, std::nullopt, 0, "running", now - 60, now - 60));
  context.insert(std::make_shared<BalanceAdjustment>(id(10), now - 86400, 30, "/", BalanceAdjustmentKind::holiday,
                                                     now - 86400, now - 86400));
  const auto custom = std::make_shared<BalanceAdjustment>(id(11), now, -20, "", BalanceAdjustmentKind::manual, now, now);
  custom->setKindRawValue("custom:S2l0YQ==");
  context.insert(custom);
  context.insert(std::make_shared<WorkSchedule>(id(12), Date(799977600), defaultWeekdayMinutes, now, now));
  context.insert(std::make_shared<TimeBankSettings>(id(13), Date(799000000), 90, defaultWeekdayMinutes,
                                                    std::vector<std::int64_t>{10, 20, 45, 90}, "holiday",
                                                    R"(["Kita"])", true, now - 5));
  const Calendar calendar = Calendar::autoupdatingCurrent();
  DataStoreMaintenance::reconcile(context, calendar, now, true);  // includes the ledger migration's marker

  const auto exported = [&] {
    return Archive(now, context.fetch<WorkEntry>(), context.fetch<BalanceAdjustment>(), context.fetch<WorkSchedule>(),
                   context.fetch<TimeBankSettings>());
  };
  const Archive before = exported();
  const std::int64_t count = static_cast<std::int64_t>(before.workEntries.size() + before.balanceAdjustments.size() +
                                                       before.schedules.size() + before.settings.size());
  ASSERT_EQ(count, 11);
  const Archive decoded = Archive::decodeJSON(before.encodedJSON());
  EXPECT_EQ(decoded.merge(context, now), (TimeBankArchiveMergeResult{0, 0, count}));
  EXPECT_EQ(exported(), before);
}

// The dry run's counts are the merge's: on stores with repeated
// identifiers, modification times from the future and changes not yet
// saved, against archives that overlap them every way; and the dry run
// changes nothing.
RC_GTEST_PROP(TimeBankArchiveMergePreview, CountsWhatTheMergeDoes, ()) {
  const Date now(800000000);
  const Date::ScopedClock clock(now);
  ModelContext context(QuillmontPersistence::makeContainer(true, false, false));
  // Identifiers from a small pool, so stored records repeat them and the
  // archive meets them; times around `now`, some beyond its tolerance.
  const auto someID = [] { return id(*rc::gen::inRange(0, 4)); };
  const auto someTime = [&] {
    return now + *rc::gen::element(-3600.0, -301.0, -1.0, 0.0, 1.0, 299.0, 301.0, 600.0, 7200.0);
  };
  const auto weekdays = std::vector<std::int64_t>{480, 480, 480, 480, 480, 0, 0};
  const auto storeSome = [&] {
    for (int i = *rc::gen::inRange(0, 10); i > 0; --i) {
      switch (*rc::gen::inRange(0, 4)) {
        case 0: context.insert(std::make_shared<WorkEntry>(someID(), now - 7200, now, 0, "", someTime(), someTime())); break;
        case 1:
          context.insert(std::make_shared<BalanceAdjustment>(someID(), now, 30, "", BalanceAdjustmentKind::manual,
                                                             someTime(), someTime()));
          break;
        case 2: context.insert(std::make_shared<WorkSchedule>(someID(), now, weekdays, someTime(), someTime())); break;
        default:
          context.insert(std::make_shared<TimeBankSettings>(someID(), now, 0, weekdays, std::vector<std::int64_t>{15, 30, 60, 120},
                                                            "holiday", "[]", true, someTime()));
      }
    }
  };
  storeSome();
  context.save();
  if (*rc::gen::arbitrary<bool>()) storeSome();  // left unsaved

  Archive archive;
  archive.exportedAt = someTime();
  const auto someIDs = [&] {
    std::set<int> numbers;
    for (int i = *rc::gen::inRange(0, 6); i > 0; --i) numbers.insert(*rc::gen::inRange(0, 6));
    return numbers;
  };
  for (const int number : someIDs()) archive.workEntries.push_back({id(number), now - 60, now, 0, "", someTime(), someTime()});
  for (const int number : someIDs()) {
    archive.balanceAdjustments.push_back({id(number), now, 10, "", "holiday", someTime(), someTime()});
  }
  for (const int number : someIDs()) archive.schedules.push_back({id(number), now, weekdays, someTime(), someTime()});
  for (const int number : someIDs()) {
    archive.settings.push_back({id(number), now, 0, weekdays, std::nullopt, std::nullopt, std::nullopt, true, someTime()});
  }

  const bool hadChanges = context.hasChanges();
  const TimeBankArchiveMergeResult preview = archive.mergePreview(context, now);
  RC_ASSERT(context.hasChanges() == hadChanges);
  RC_ASSERT(preview == archive.merge(context, now));
}

TEST_F(TimeBankArchiveMergeTest, AMergedSettlementCountsTheUnsettledTimeAgain) {
  const Calendar utc = *Calendar::make("UTC");
  const Date monday = *utc.date(2026, 5, 4);  // now is the Saturday after
  const auto settings = DataStoreMaintenance::reconcile(context, utc, now, true);
  settings->setCalculationStartDate(monday);
  settings->setWeekdayMinutes(std::array<std::int64_t, 7>{480, 480, 480, 480, 480, 0, 0});
  context.insert(std::make_shared<WorkEntry>(id(1), monday + 8 * 3600, monday + 16 * 3600, 0, "", now, now));
  context.save();
  const auto unsettled = [&] { return Settlement::unsettled(context, *settings, now, {}, utc); };
  ASSERT_EQ(unsettled().minutes, -4 * 480);  // recorded in the store

  // Another machine settled Tuesday.
  Archive archive;
  archive.exportedAt = now;
  archive.balanceAdjustments = {{Settlement::identifier("2026-05-05"), monday + 36 * 3600, -480,
                                 Settlement::note("2026-05-05"), "manual", now - 60, now - 60}};
  archive.merge(context, now);
  EXPECT_EQ(unsettled().minutes, -3 * 480);
  EXPECT_EQ(unsettled().since, monday + 2 * 86400);
}

}  // namespace
}  // namespace quillmont
