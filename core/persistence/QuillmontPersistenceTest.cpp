#include "core/persistence/QuillmontPersistence.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "core/engine/DataStoreMaintenance.h"
#include "core/ledger/TimeBankTransactionController.h"
#include "core/persistence/AppConstants.h"
#include "platform/store/ModelContext.h"
#include "platform/store/StoreError.h"

namespace quillmont {
namespace {

class QuillmontPersistenceTest : public ::testing::Test {
 protected:
  std::filesystem::path home = std::filesystem::temp_directory_path() / ("quillmont-persistence-" + std::to_string(::getpid()));
  void SetUp() override {
    std::filesystem::remove_all(home);
    ::setenv("QUILLMONT_HOME", home.c_str(), 1);
  }
  void TearDown() override {
    ::unsetenv("QUILLMONT_HOME");
    std::filesystem::remove_all(home);
  }
};

TEST_F(QuillmontPersistenceTest, ConfigurationUsesGroupAndCloudOnlyOnDisk) {
  const auto memory = QuillmontPersistence::makeConfiguration(true, true, true);
  EXPECT_TRUE(memory.isStoredInMemoryOnly);
  EXPECT_FALSE(memory.groupContainer);
  EXPECT_FALSE(memory.cloudKitDatabase);
  const auto disk = QuillmontPersistence::makeConfiguration(false, true, true);
  EXPECT_EQ(disk.name, "Quillmont");
  EXPECT_EQ(disk.groupContainer, std::string(AppConstants::appGroupIdentifier));
  EXPECT_EQ(disk.cloudKitDatabase, std::string(AppConstants::cloudKitContainerIdentifier));
  EXPECT_FALSE(QuillmontPersistence::makeConfiguration(false, false, false).groupContainer);
  ASSERT_EQ(QuillmontPersistence::schema().entities.size(), 4u);
  EXPECT_EQ(QuillmontPersistence::schema().entities[0].name, "WorkEntry");
  EXPECT_EQ(&QuillmontPersistence::schema(), &QuillmontPersistence::schema());
}

TEST_F(QuillmontPersistenceTest, SharedStoreLivesInTheGroupFolder) {
  const auto container = QuillmontPersistence::makeContainer(false, true, true);
  ASSERT_TRUE(container->url());
  EXPECT_EQ(*container->url(), home / "group.io.quillmont.ledger" / "Quillmont.store");
  EXPECT_TRUE(std::filesystem::exists(*container->url()));
}

TEST_F(QuillmontPersistenceTest, AFailedBookingSaveKeepsTheAdjustmentPending) {
  const auto container = QuillmontPersistence::makeContainer(false, false, true);
  sqlite3* database = nullptr;
  ASSERT_EQ(sqlite3_open(container->url()->c_str(), &database), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(database,
                         "CREATE TRIGGER refuse BEFORE INSERT ON BalanceAdjustment BEGIN SELECT RAISE(ABORT, 'refused'); END;",
                         nullptr, nullptr, nullptr),
            SQLITE_OK);
  ModelContext context(container);
  EXPECT_THROW(TimeBankTransactionController::record(30, Date(0), "", "manual", context), StoreError);
  EXPECT_EQ(context.fetch<BalanceAdjustment>().size(), 1u);
  EXPECT_TRUE(context.hasChanges());
  ASSERT_EQ(sqlite3_exec(database, "DROP TRIGGER refuse;", nullptr, nullptr, nullptr), SQLITE_OK);
  sqlite3_close(database);
  context.save();
  EXPECT_EQ(ModelContext(container).fetch<BalanceAdjustment>().size(), 1u);
}

TEST_F(QuillmontPersistenceTest, TwoProcessesBookingAtOnceLoseNothing) {
  QuillmontPersistence::makeContainer(false, false, true);  // create the file before the writers race
  const auto calendar = *Calendar::make("UTC");
  std::vector<pid_t> writers;
  for (int writer = 0; writer < 2; ++writer) {
    const pid_t pid = ::fork();
    ASSERT_NE(pid, -1);
    if (pid == 0) {
      int status = 0;
      try {
        // Each booking as a separate program run does it: open, repair, book.
        for (int booking = 0; booking < 200; ++booking) {
          ModelContext context(QuillmontPersistence::makeContainer(false, false, true));
          DataStoreMaintenance::reconcile(context, calendar, Date::now(), true);
          TimeBankTransactionController::record(writer == 0 ? 1 : -1, Date::now(), "", "manual", context);
        }
      } catch (...) {
        status = 1;
      }
      ::_exit(status);
    }
    writers.push_back(pid);
  }
  for (const pid_t pid : writers) {
    int status = 0;
    ASSERT_EQ(::waitpid(pid, &status, 0), pid);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "a writer failed";
  }
  const auto container = QuillmontPersistence::makeContainer(false, false, true);
  ModelContext context(container);
  std::size_t credits = 0;
  std::size_t debits = 0;
  for (const auto& adjustment : context.fetch<BalanceAdjustment>()) {
    credits += adjustment->minutes() == 1 ? 1 : 0;
    debits += adjustment->minutes() == -1 ? 1 : 0;
  }
  EXPECT_EQ(credits, 200u);
  EXPECT_EQ(debits, 200u);
  EXPECT_EQ(context.fetch<TimeBankSettings>().size(), 1u);
  EXPECT_EQ(container->integrityCheck(), "ok");
}

}  // namespace
}  // namespace quillmont
