#include "core/sync/SyncMerge.h"

#include <gtest/gtest.h>

#include "core/archive/TimeBankArchiveError.h"
#include "core/engine/DataStoreMaintenance.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/TimeBankSettings.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"
#include "core/persistence/QuillmontPersistence.h"
#include "core/sync/SyncDeviceFile.h"
#include "platform/foundation/JsonReader.h"

namespace quillmont {
namespace {

UUID id(int number) {
  UUID result;
  result.bytes[0] = 0x5C;
  result.bytes[15] = static_cast<std::uint8_t>(number);
  return result;
}

// One machine's store, in memory.
struct Machine {
  std::shared_ptr<ModelContainer> container = QuillmontPersistence::makeContainer(true, false, false);
  ModelContext context{container};

  TimeBankArchive archive(Date at) {
    return TimeBankArchive(at, context.fetch<WorkEntry>(), context.fetch<BalanceAdjustment>(),
                           context.fetch<WorkSchedule>(), context.fetch<TimeBankSettings>());
  }

  // What another machine takes from this one: its ledger and its deletions,
  // through the device file's text as the folder carries them.
  SyncMerge::Result mergeFrom(Machine& other, Date at) {
    const auto device = SyncDeviceFile::decodeJSON(
        SyncDeviceFile{id(99), "other", at, other.container->deletions()}.encodedJSON());
    return SyncMerge::merge(context, other.archive(at), device.deletions, at);
  }

  // A person's own deletion: journaled, as the command line does it.
  template <class Model>
  void deleteByHand(int number) {
    ModelContext own(container);
    own.setUndoAction("delete");
    for (const auto& record : own.fetch<Model>()) {
      if (record->id() == id(number)) own.deleteRecord(record);
    }
    own.save();
  }

  template <class Model>
  std::shared_ptr<Model> find(int number) {
    for (const auto& record : context.fetch<Model>()) {
      if (record->id() == id(number)) return record;
    }
    return nullptr;
  }
};

class SyncMergeTest : public ::testing::Test {
 protected:
  Date now = Date(800000000);
  Date::ScopedClock clock{now};
  Machine office, laptop;

  void bookOnBoth(int number, Date modifiedAt) {
    for (Machine* machine : {&office, &laptop}) {
      machine->context.insert(std::make_shared<BalanceAdjustment>(id(number), now - 3600, 60, "lunch",
                                                                    BalanceAdjustmentKind::manual, now - 7200,
                                                                    modifiedAt));
      machine->context.save();
    }
  }
};

TEST_F(SyncMergeTest, ADeletionTravelsAndComesBackNeitherWayNorAfterARepeat) {
  bookOnBoth(1, now - 600);
  office.deleteByHand<BalanceAdjustment>(1);
  ASSERT_EQ(office.container->deletions().size(), 1u);

  const auto result = laptop.mergeFrom(office, now);
  EXPECT_EQ(result.deletionsLearnt, 1);
  EXPECT_EQ(result.recordsDeleted, 1);
  EXPECT_EQ(laptop.find<BalanceAdjustment>(1), nullptr);

  // The laptop's older copies never bring it back, and nothing repeats.
  const auto back = office.mergeFrom(laptop, now + 60);
  EXPECT_EQ(office.find<BalanceAdjustment>(1), nullptr);
  EXPECT_EQ(back.deletionsLearnt, 0);
  EXPECT_EQ(laptop.mergeFrom(office, now + 120).deletionsLearnt, 0);
}

TEST_F(SyncMergeTest, AChangeAfterTheDeletionWinsOverIt) {
  bookOnBoth(1, now - 600);
  office.deleteByHand<BalanceAdjustment>(1);  // deleted at `now`
  const auto edited = laptop.find<BalanceAdjustment>(1);
  edited->setMinutes(90);
  edited->setModifiedAt(now + 30);
  laptop.context.save();

  laptop.mergeFrom(office, now + 60);
  ASSERT_NE(laptop.find<BalanceAdjustment>(1), nullptr);
  office.mergeFrom(laptop, now + 60);
  const auto revived = office.find<BalanceAdjustment>(1);
  ASSERT_NE(revived, nullptr);
  EXPECT_EQ(revived->minutes(), 90);
}

TEST_F(SyncMergeTest, ADeletionDatedAheadCountsAsMadeNowAndALaterChangeWins) {
  bookOnBoth(1, now - 600);
  const std::vector<DeletionLog::Entry> hostile{
      {std::string(BalanceAdjustment::entityName), id(1), now + 10 * 365 * 86400.0}};
  SyncMerge::merge(laptop.context, office.archive(now), hostile, now);
  ASSERT_EQ(laptop.find<BalanceAdjustment>(1), nullptr);
  ASSERT_EQ(laptop.container->deletions().size(), 1u);
  EXPECT_EQ(laptop.container->deletions()[0].deletedAt, now);

  const auto edited = office.find<BalanceAdjustment>(1);  // changed after the deletion
  edited->setMinutes(90);
  edited->setModifiedAt(now + 30);
  office.context.save();
  laptop.mergeFrom(office, now + 60);
  const auto revived = laptop.find<BalanceAdjustment>(1);
  ASSERT_NE(revived, nullptr);
  EXPECT_EQ(revived->minutes(), 90);
}

TEST_F(SyncMergeTest, AnUndoneActionTravelsLikeAnyChange) {
  bookOnBoth(1, now - 600);
  {
    ModelContext own(office.container);
    own.setUndoAction("edit");
    own.fetch<BalanceAdjustment>()[0]->setNote("changed");
    own.fetch<BalanceAdjustment>()[0]->setModifiedAt(now - 60);
    own.save();
  }
  laptop.mergeFrom(office, now);
  ASSERT_EQ(laptop.find<BalanceAdjustment>(1)->note(), "changed");
  Date::ScopedClock later{now + 10};
  ASSERT_TRUE(office.container->undoLastAction());
  laptop.mergeFrom(office, now + 20);
  EXPECT_EQ(laptop.find<BalanceAdjustment>(1)->note(), "lunch") << "the restored record is the newer one";

  // Undoing an insertion logs it as a deletion, which then travels.
  {
    ModelContext own(office.container);
    own.setUndoAction("book");
    own.insert(std::make_shared<BalanceAdjustment>(id(2), now, 30, "", BalanceAdjustmentKind::manual, now, now));
    own.save();
  }
  laptop.mergeFrom(office, now + 20);
  ASSERT_NE(laptop.find<BalanceAdjustment>(2), nullptr);
  ASSERT_TRUE(office.container->undoLastAction());
  laptop.mergeFrom(office, now + 30);
  EXPECT_EQ(laptop.find<BalanceAdjustment>(2), nullptr);
}

TEST_F(SyncMergeTest, UndoingADeletionForgetsIt) {
  bookOnBoth(1, now - 600);
  office.deleteByHand<BalanceAdjustment>(1);
  ASSERT_TRUE(office.container->undoLastAction());
  EXPECT_TRUE(office.container->deletions().empty());
  laptop.mergeFrom(office, now + 60);
  EXPECT_NE(laptop.find<BalanceAdjustment>(1), nullptr);
}

TEST_F(SyncMergeTest, RepairsAndMergesLogNoDeletions) {
  bookOnBoth(1, now - 600);
  DataStoreMaintenance::eraseAll(laptop.context);  // not journaled: no person's action
  EXPECT_TRUE(laptop.container->deletions().empty());
  office.mergeFrom(laptop, now);
  EXPECT_NE(office.find<BalanceAdjustment>(1), nullptr);
}

TEST_F(SyncMergeTest, TwoRunningTimersEndAsTheEarlierOnEveryMachine) {
  office.context.insert(std::make_shared<WorkEntry>(id(1), now - 3600, std::nullopt, 0, "", now - 3600, now - 3600));
  office.context.save();
  laptop.context.insert(std::make_shared<WorkEntry>(id(2), now - 600, std::nullopt, 0, "", now - 600, now - 600));
  laptop.context.save();

  laptop.mergeFrom(office, now);
  office.mergeFrom(laptop, now + 10);
  for (Machine* machine : {&office, &laptop}) {
    const auto entries = machine->context.fetch<WorkEntry>();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0]->id(), id(1));
    EXPECT_FALSE(entries[0]->endedAt().has_value()) << "a timer that travels keeps running";
  }
}

TEST_F(SyncMergeTest, ADeletedRunningEntryDoesNotOutrankTheLiveOne) {
  // Both know the timer started at 8:00; the office deletes it and starts
  // another at 9:00, while the laptop still holds the first.
  for (Machine* machine : {&office, &laptop}) {
    machine->context.insert(std::make_shared<WorkEntry>(id(1), now - 7200, std::nullopt, 0, "", now - 7200, now - 7200));
    machine->context.save();
  }
  office.deleteByHand<WorkEntry>(1);
  office.context.insert(std::make_shared<WorkEntry>(id(2), now - 3600, std::nullopt, 0, "", now - 3600, now - 3600));
  office.context.save();

  const auto result = office.mergeFrom(laptop, now + 10);
  EXPECT_EQ(result.recordsSkipped, 1);
  const auto entries = office.context.fetch<WorkEntry>();
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0]->id(), id(2));
  EXPECT_FALSE(entries[0]->endedAt().has_value());
}

TEST_F(SyncMergeTest, AnInvalidArchiveChangesNothing) {
  bookOnBoth(1, now - 600);
  TimeBankArchive broken = office.archive(now);
  broken.schedules.push_back({id(5), now, {480, 480}, now, now});  // two weekdays instead of seven
  const std::vector<DeletionLog::Entry> deletions{{"BalanceAdjustment", id(1), now}};
  EXPECT_THROW(SyncMerge::merge(laptop.context, broken, deletions, now), TimeBankArchiveError);
  EXPECT_TRUE(laptop.container->deletions().empty());
  EXPECT_NE(laptop.find<BalanceAdjustment>(1), nullptr);
}

TEST_F(SyncMergeTest, OldDeletionsAreForgotten) {
  const Date old = now - 86400.0 * (SyncMerge::deletionRetentionDays + 1);
  const std::vector<DeletionLog::Entry> deletions{{"BalanceAdjustment", id(1), old}, {"WorkEntry", id(2), now}};
  SyncMerge::merge(laptop.context, laptop.archive(now), deletions, now);
  const auto kept = laptop.container->deletions();
  ASSERT_EQ(kept.size(), 1u);
  EXPECT_EQ(kept[0].id, id(2));
}

TEST_F(SyncMergeTest, AJoiningMachinesUntouchedSettingsGiveWayInEitherOrder) {
  // Every store makes default settings when it first opens; the office
  // changed its own (without completing the set-up), the laptop's are newer.
  DataStoreMaintenance::reconcile(office.context, Calendar::autoupdatingCurrent(), now - 86400, false);
  const auto chosen = office.context.fetch<TimeBankSettings>().at(0);
  chosen->setStartingBalanceMinutes(300);
  chosen->setModifiedAt(now - 3600);
  office.context.save();
  DataStoreMaintenance::reconcile(laptop.context, Calendar::autoupdatingCurrent(), now, false);
  ASSERT_GT(laptop.context.fetch<TimeBankSettings>().at(0)->modifiedAt(), chosen->modifiedAt());

  office.mergeFrom(laptop, now + 10);  // the laptop wrote first
  laptop.mergeFrom(office, now + 20);
  office.mergeFrom(laptop, now + 30);
  for (Machine* machine : {&office, &laptop}) {
    const auto settings = machine->context.fetch<TimeBankSettings>();
    ASSERT_EQ(settings.size(), 1u);
    EXPECT_EQ(settings[0]->startingBalanceMinutes(), 300);
  }
}

TEST(SyncDeviceFile, ReadsWhatItWritesAndRefusesOtherShapes) {
  const SyncDeviceFile file{id(7), "laptop \"home\"", Date(800000000.5),
                            {{"WorkEntry", id(1), Date(799000000)}, {"BalanceAdjustment", id(2), Date(799000001.25)}}};
  EXPECT_EQ(SyncDeviceFile::decodeJSON(file.encodedJSON()), file);
  EXPECT_THROW(SyncDeviceFile::decodeJSON(R"({"deletions":[],"device":"not an id","name":"x","writtenAt":1})"),
               JsonDecodingError);
  EXPECT_THROW(SyncDeviceFile::decodeJSON(R"({"deletions":[],"name":"x","writtenAt":1})"), JsonDecodingError);
  const std::string whole = file.encodedJSON();
  EXPECT_THROW(SyncDeviceFile::decodeJSON(whole.substr(0, whole.size() / 2)), JsonDecodingError)
      << "a half-copied file";
}

}  // namespace
}  // namespace quillmont
