#include "core/engine/TimerSessionController.h"

#include <gtest/gtest.h>

#include "core/persistence/QuillmontPersistence.h"

namespace quillmont {
namespace {

class TimerSessionControllerTest : public ::testing::Test {
 protected:
  std::shared_ptr<ModelContainer> container = QuillmontPersistence::makeContainer(true, false, false);
  ModelContext context{container};
  const Date nine{9 * 3600.0};

  std::shared_ptr<WorkEntry> addRunning(Date start, const char* id = nullptr) {
    auto entry = std::make_shared<WorkEntry>(id ? *UUID::parse(id) : UUID::random(), start, std::nullopt, 0, "", start, start);
    context.insert(entry);
    return entry;
  }
  std::size_t runningCount() {
    std::size_t count = 0;
    for (const auto& entry : context.fetch<WorkEntry>()) count += entry->isRunning() ? 1 : 0;
    return count;
  }
};

TEST_F(TimerSessionControllerTest, StartStopAndToggle) {
  EXPECT_TRUE(TimerSessionController::start(context, nine));
  EXPECT_FALSE(TimerSessionController::start(context, nine + 60));
  ASSERT_EQ(runningCount(), 1u);
  EXPECT_EQ(TimerSessionController::runningEntry(context, nine)->startedAt(), nine);
  EXPECT_FALSE(context.hasChanges());

  const Date five = nine + 8 * 3600.0;
  EXPECT_TRUE(TimerSessionController::stop(context, five));
  const auto entries = context.fetch<WorkEntry>();
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0]->endedAt(), five);
  EXPECT_EQ(entries[0]->modifiedAt(), five);
  EXPECT_FALSE(TimerSessionController::stop(context, five));

  EXPECT_TRUE(TimerSessionController::toggle(context, five + 60));
  EXPECT_EQ(runningCount(), 1u);
  EXPECT_FALSE(TimerSessionController::toggle(context, five + 120));
  EXPECT_EQ(runningCount(), 0u);
  EXPECT_EQ(ModelContext(container).fetch<WorkEntry>().size(), 2u);
}

TEST_F(TimerSessionControllerTest, KeepsTheEarliestRunningEntryThenTheLowestId) {
  const auto early = addRunning(nine - 3600);
  addRunning(nine - 1800);
  const auto low = addRunning(nine, "00000000-0000-4000-8000-000000000001");
  addRunning(nine, "F0000000-0000-4000-8000-000000000001");
  EXPECT_EQ(TimerSessionController::reconcileRunningEntries(context, nine, true), early);
  EXPECT_EQ(runningCount(), 1u);
  context.deleteRecord(early);
  addRunning(nine, "F0000000-0000-4000-8000-000000000002");
  context.insert(low);
  context.save();
  EXPECT_EQ(TimerSessionController::reconcileRunningEntries(context, nine, true), low);
}

TEST_F(TimerSessionControllerTest, PullsAFutureStartBackAndSavesOnlyWhenAsked) {
  const auto future = addRunning(nine + 15 * 60);
  addRunning(nine + 30 * 60);
  context.save();
  EXPECT_EQ(TimerSessionController::reconcileRunningEntries(context, nine, false), future);
  EXPECT_EQ(future->startedAt(), nine);
  EXPECT_EQ(future->modifiedAt(), nine);
  EXPECT_EQ(runningCount(), 1u);
  EXPECT_TRUE(context.hasChanges());
  EXPECT_EQ(ModelContext(container).fetch<WorkEntry>().size(), 2u);  // nothing saved
  context.save();

  EXPECT_EQ(TimerSessionController::reconcileRunningEntries(context, nine, true), future);
  EXPECT_FALSE(context.hasChanges());
}

}  // namespace
}  // namespace quillmont
