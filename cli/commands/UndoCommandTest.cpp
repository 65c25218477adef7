// Black-box tests of `quillmont undo`: what each command changed comes back
// exactly, the newest first, across runs; a change that was changed again
// elsewhere is refused and nothing moves.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/testing/CommandRunner.h"
#include "cli/testing/StoreProbe.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/TimeBankSettings.h"
#include "core/ledger/WorkEntry.h"

namespace quillmont {
namespace {

using ::testing::HasSubstr;
using testing::CommandRunner;
using testing::StoreProbe;

TEST(UndoCommand, TakesBackEachCommandNewestFirst) {
  CommandRunner quillmont;
  ASSERT_EQ(quillmont.run({"setup", "--start", "2026-01-05", "--balance", "2:00"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"work", "add", "--start", "2026-03-02 08:30", "--end", "17:00"}).exitCode, 0);
  StoreProbe store(quillmont);
  const auto entry = store.context().fetch<WorkEntry>().front();
  const Date originalEnd = *entry->endedAt();
  const std::string id = entry->id().uuidString().substr(0, 8);
  ASSERT_EQ(quillmont.run({"work", "edit", id, "--end", "18:15", "--note", "late"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"book", "-45", "-c", "appointment"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"settings", "--balance", "5:00"}).exitCode, 0);

  EXPECT_EQ(quillmont.run({"undo", "--dry-run"}).out.substr(0, 26), "The last change: settings ");
  EXPECT_THAT(quillmont.run({"undo"}).err, HasSubstr("Undid settings"));
  EXPECT_EQ(store.context().fetch<TimeBankSettings>().front()->startingBalanceMinutes(), 120);
  EXPECT_THAT(quillmont.run({"undo"}).err, HasSubstr("Undid book -45"));
  EXPECT_THAT(quillmont.run({}).out, HasSubstr("Balance   +2:00"));

  // The edit comes back to the very entry as it was, note and end.
  EXPECT_THAT(quillmont.run({"undo"}).err, HasSubstr("Undid work edit " + id));
  auto entries = store.context().fetch<WorkEntry>();
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0]->id(), entry->id());
  EXPECT_EQ(entries[0]->endedAt(), originalEnd);
  EXPECT_EQ(entries[0]->note(), "");

  // Erase, too, can be taken back whole.
  ASSERT_EQ(quillmont.run({"erase", "--yes"}).exitCode, 0);
  EXPECT_TRUE(store.context().fetch<WorkEntry>().empty());
  ASSERT_EQ(quillmont.run({"undo"}).exitCode, 0);
  EXPECT_EQ(store.context().fetch<WorkEntry>().size(), 1u);
  EXPECT_THAT(quillmont.run({}).out, HasSubstr("Balance   +2:00"));
}

TEST(UndoCommand, RefusesWhenTheRecordsChangedSince) {
  CommandRunner quillmont;
  ASSERT_EQ(quillmont.run({"book", "30", "--note", "first"}).exitCode, 0);
  {
    // Another program edits the booking without journaling it.
    StoreProbe store(quillmont);
    auto booking = store.context().fetch<BalanceAdjustment>().back();
    booking->setNote("changed elsewhere");
    store.context().save();
  }
  const auto refused = quillmont.run({"undo"});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_THAT(refused.err, HasSubstr("changed since"));
  StoreProbe store(quillmont);
  const auto bookings = store.context().fetch<BalanceAdjustment>();
  ASSERT_FALSE(bookings.empty());
  EXPECT_EQ(bookings.back()->note(), "changed elsewhere");
  EXPECT_EQ(quillmont.run({"undo", "--dry-run"}).exitCode, 0);  // still there, still refused

  CommandRunner fresh;
  const auto nothing = fresh.run({"undo"});
  EXPECT_EQ(nothing.exitCode, 1);
  EXPECT_THAT(nothing.err, HasSubstr("Nothing to undo."));
}

}  // namespace
}  // namespace quillmont
