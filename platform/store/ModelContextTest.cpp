#include "platform/store/ModelContext.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <span>
#include <string>
#include <thread>

#include "platform/store/ModelContainer.h"
#include "platform/store/SQLiteDatabase.h"
#include "platform/store/WriterLock.h"

namespace quillmont {
namespace {

// A record with one attribute of every persisted type.
class Task final : public PersistentModel {
 public:
  static constexpr std::string_view entityName = "Task";
  static std::span<const Attribute<Task>> attributes() {
    static const std::array<Attribute<Task>, 6> list{{
        {"id", &Task::id_},
        {"title", &Task::title_},
        {"createdAt", &Task::createdAt_},
        {"dueAt", &Task::dueAt_},
        {"priority", &Task::priority_},
        {"done", &Task::done_},
    }};
    return list;
  }

  explicit Task(ForLoading) {}
  explicit Task(std::string title, std::int64_t priority = 0, std::optional<Date> dueAt = std::nullopt)
      : id_(UUID::random()), title_(std::move(title)), createdAt_(Date(1000.25)), dueAt_(dueAt), priority_(priority) {}

  const UUID& id() const { return id_; }
  const std::string& title() const { return title_; }
  Date createdAt() const { return createdAt_; }
  std::optional<Date> dueAt() const { return dueAt_; }
  std::int64_t priority() const { return priority_; }
  bool done() const { return done_; }

  void setId(UUID value) { id_ = value, didChange(); }
  void setTitle(std::string value) { title_ = std::move(value), didChange(); }
  void setPriority(std::int64_t value) { priority_ = value, didChange(); }
  void setDone(bool value) { done_ = value, didChange(); }

 private:
  UUID id_;
  std::string title_;
  Date createdAt_;
  std::optional<Date> dueAt_;
  std::int64_t priority_ = 0;
  bool done_ = false;
};

using Tasks = std::vector<std::shared_ptr<Task>>;

std::vector<std::string> titles(const Tasks& tasks) {
  std::vector<std::string> result;
  for (const auto& task : tasks) result.push_back(task->title());
  return result;
}

class ModelContextTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "quillmont-store-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    home_ = pattern;
    const char* previous = std::getenv("QUILLMONT_HOME");
    if (previous != nullptr) previousHome_ = previous;
    setenv("QUILLMONT_HOME", home_.c_str(), 1);
  }
  void TearDown() override {
    if (previousHome_) {
      setenv("QUILLMONT_HOME", previousHome_->c_str(), 1);
    } else {
      unsetenv("QUILLMONT_HOME");
    }
    std::filesystem::remove_all(home_);
  }

  static ModelConfiguration configuration() {
    ModelConfiguration configuration{"tasks", Schema::of<Task>("1.0"), false, true, "group.test", std::nullopt};
    return configuration;
  }
  static std::shared_ptr<ModelContainer> open() { return ModelContainer::open(configuration()); }
  std::filesystem::path storePath() const { return home_ / "group.test" / "tasks.store"; }

  /// Runs `sql` on the store through a connection of its own, as another program would.
  void executeElsewhere(const std::string& sql) const {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(storePath().c_str(), &database), SQLITE_OK);
    sqlite3_busy_timeout(database, 10'000);
    char* error = nullptr;
    const int result = sqlite3_exec(database, sql.c_str(), nullptr, nullptr, &error);
    EXPECT_EQ(result, SQLITE_OK) << (error != nullptr ? error : "");
    sqlite3_free(error);
    sqlite3_close(database);
  }

  static Tasks saveTasks(ModelContext& context, std::initializer_list<const char*> names) {
    Tasks tasks;
    for (const char* name : names) {
      tasks.push_back(std::make_shared<Task>(name));
      context.insert(tasks.back());
    }
    context.save();
    return tasks;
  }

  std::filesystem::path home_;
  std::optional<std::string> previousHome_;
};

TEST_F(ModelContextTest, PendingWorkIsVisibleBeforeSaving) {
  ModelContext context(open());
  EXPECT_FALSE(context.hasChanges());
  context.save();  // nothing to do
  const Tasks saved = saveTasks(context, {"a", "b"});
  EXPECT_NE(saved[0]->persistentIdentifier(), 0);
  EXPECT_LT(saved[0]->persistentIdentifier(), saved[1]->persistentIdentifier());
  EXPECT_FALSE(context.hasChanges());

  auto c = std::make_shared<Task>("c");
  auto d = std::make_shared<Task>("d");
  context.insert(c);
  context.insert(d);
  context.insert(c);         // twice: no-op
  context.insert(saved[1]);  // already saved: no-op
  context.deleteRecord(saved[0]);
  EXPECT_TRUE(context.hasChanges());
  EXPECT_EQ(titles(context.fetch<Task>()), (std::vector<std::string>{"b", "c", "d"}));

  context.deleteRecord(d);  // only pending: dropped
  EXPECT_EQ(titles(context.fetch<Task>()), (std::vector<std::string>{"b", "c"}));
  context.save();
  EXPECT_FALSE(context.hasChanges());
  EXPECT_EQ(saved[0]->persistentIdentifier(), 0);
  EXPECT_EQ(d->persistentIdentifier(), 0);

  ModelContext fresh(open());
  EXPECT_EQ(titles(fresh.fetch<Task>()), (std::vector<std::string>{"b", "c"}));

  // deleteAll takes pending inserts too; inserting a record that waits for
  // deletion keeps it after all.
  const Tasks rows = fresh.fetch<Task>();
  fresh.insert(std::make_shared<Task>("e"));
  fresh.deleteAll<Task>();
  EXPECT_TRUE(fresh.fetch<Task>().empty());
  fresh.insert(rows[0]);
  EXPECT_EQ(titles(fresh.fetch<Task>()), (std::vector<std::string>{"b"}));
  EXPECT_EQ(ModelContext(open()).fetch<Task>().size(), 2u);  // nothing saved yet
  fresh.save();
  EXPECT_EQ(titles(ModelContext(open()).fetch<Task>()), (std::vector<std::string>{"b"}));
}

TEST_F(ModelContextTest, ValuesRoundTripAndOnlySavedDataSurvivesReopening) {
  const UUID id = *UUID::parse("00112233-4455-6677-8899-AABBCCDDEEFF");
  {
    ModelContext context(open());
    auto task = std::make_shared<Task>("naïve ☕ 'quoted'", std::numeric_limits<std::int64_t>::min(), Date(-0.125));
    task->setId(id);
    task->setDone(true);
    context.insert(task);
    context.insert(std::make_shared<Task>("max", std::numeric_limits<std::int64_t>::max()));
    context.save();
    task->setTitle("changed but not saved");
    context.insert(std::make_shared<Task>("pending"));
  }
  ModelContext context(open());
  const Tasks tasks = context.fetch<Task>();
  ASSERT_EQ(tasks.size(), 2u);
  EXPECT_EQ(tasks[0]->id(), id);
  EXPECT_EQ(tasks[0]->title(), "naïve ☕ 'quoted'");
  EXPECT_EQ(tasks[0]->createdAt(), Date(1000.25));
  EXPECT_EQ(tasks[0]->dueAt(), Date(-0.125));
  EXPECT_EQ(tasks[0]->priority(), std::numeric_limits<std::int64_t>::min());
  EXPECT_TRUE(tasks[0]->done());
  EXPECT_FALSE(tasks[0]->hasChanges());
  EXPECT_EQ(tasks[1]->dueAt(), std::nullopt);
  EXPECT_EQ(tasks[1]->priority(), std::numeric_limits<std::int64_t>::max());
  EXPECT_FALSE(tasks[1]->done());
}

TEST_F(ModelContextTest, IdentityHoldsAcrossFetchesAndReloads) {
  ModelContext context(open());
  saveTasks(context, {"a", "b", "c"});
  ModelContext reader(open());
  const Tasks first = reader.fetch<Task>();
  const Tasks second = reader.fetch<Task>();
  ASSERT_EQ(first.size(), 3u);
  EXPECT_EQ(first, second);  // the same objects

  // Another program renames two rows, deletes one, adds one. The record
  // with unsaved changes keeps them; the others are refreshed in place.
  first[1]->setTitle("mine");
  executeElsewhere(
      "UPDATE Task SET title = 'theirs-' || title WHERE title IN ('a', 'b');"
      "DELETE FROM Task WHERE title = 'c';"
      "INSERT INTO Task (id, title, createdAt, priority, done) VALUES (randomblob(16), 'd', 0, 0, 0);");
  const Tasks third = reader.fetch<Task>();
  EXPECT_EQ(titles(third), (std::vector<std::string>{"theirs-a", "mine", "d"}));
  EXPECT_EQ(third[0], first[0]);
  EXPECT_EQ(third[1], first[1]);
  EXPECT_TRUE(third[1]->hasChanges());

  // Saving writes every column of a changed record, so ours wins.
  reader.save();
  EXPECT_EQ(titles(ModelContext(open()).fetch<Task>()), (std::vector<std::string>{"theirs-a", "mine", "d"}));
}

TEST_F(ModelContextTest, SeesSavesOfOtherContextsOnTheSameContainer) {
  const auto container = open();
  ModelContext first(container);
  ModelContext second(container);
  saveTasks(first, {"a"});
  const Tasks seen = second.fetch<Task>();
  ASSERT_EQ(seen.size(), 1u);

  seen[0]->setTitle("renamed");
  second.insert(std::make_shared<Task>("b"));
  second.save();
  const Tasks mine = first.fetch<Task>();
  EXPECT_EQ(titles(mine), (std::vector<std::string>{"renamed", "b"}));

  // Our own save needs no reload, but a later one by the other context does.
  mine[1]->setDone(true);
  first.save();
  second.fetch<Task>()[0]->setTitle("again");
  second.save();
  EXPECT_EQ(first.fetch<Task>()[0]->title(), "again");
  EXPECT_TRUE(second.fetch<Task>()[1]->done());
}

TEST_F(ModelContextTest, FailedSaveKeepsEveryPendingChange) {
  ModelContext context(open());
  const Tasks saved = saveTasks(context, {"a", "b"});
  auto added = std::make_shared<Task>("new");
  context.insert(added);
  saved[0]->setTitle("a2");
  context.deleteRecord(saved[1]);
  // Inserts and updates run before deletions, so this fails late in the transaction.
  executeElsewhere("CREATE TRIGGER refuse BEFORE DELETE ON Task BEGIN SELECT RAISE(ABORT, 'deletion refused'); END;");

  try {
    context.save();
    FAIL() << "save succeeded";
  } catch (const StoreError& error) {
    EXPECT_EQ(error.code(), StoreError::Code::saveFailed);
    EXPECT_NE(std::string(error.what()).find("deletion refused"), std::string::npos) << error.what();
  }
  EXPECT_TRUE(context.hasChanges());
  EXPECT_EQ(added->persistentIdentifier(), 0);
  EXPECT_TRUE(saved[0]->hasChanges());
  EXPECT_EQ(titles(context.fetch<Task>()), (std::vector<std::string>{"a2", "new"}));
  EXPECT_EQ(titles(ModelContext(open()).fetch<Task>()), (std::vector<std::string>{"a", "b"}));

  executeElsewhere("DROP TRIGGER refuse;");
  context.save();
  EXPECT_FALSE(context.hasChanges());
  EXPECT_NE(added->persistentIdentifier(), 0);
  EXPECT_EQ(titles(ModelContext(open()).fetch<Task>()), (std::vector<std::string>{"a2", "new"}));
}

TEST_F(ModelContextTest, RollbackDropsPendingWorkAndRestoresValues) {
  ModelContext context(open());
  saveTasks(context, {"a", "b"});
  const Tasks saved = context.fetch<Task>();
  saved[0]->setTitle("changed");
  context.deleteRecord(saved[1]);
  auto added = std::make_shared<Task>("added");
  context.insert(added);
  context.rollback();
  EXPECT_FALSE(context.hasChanges());
  const Tasks tasks = context.fetch<Task>();
  EXPECT_EQ(titles(tasks), (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(tasks[0], saved[0]);
  context.insert(added);  // no longer pending: can be inserted again
  context.save();
  EXPECT_EQ(titles(context.fetch<Task>()), (std::vector<std::string>{"a", "b", "added"}));
}

TEST_F(ModelContextTest, FiltersAndSorts) {
  ModelContext context(open());
  const auto uuid = [](std::uint8_t first, std::uint8_t last) {
    UUID id;
    id.bytes[0] = first;
    id.bytes[15] = last;
    return id;
  };
  // title, priority, due, id
  const std::array<std::tuple<const char*, std::int64_t, std::optional<Date>, UUID>, 5> rows{{
      {"p", 2, Date(50), uuid(0xA0, 0)},
      {"q", 1, std::nullopt, uuid(0x0B, 0)},
      {"r", 2, std::nullopt, uuid(0x0B, 1)},
      {"s", 1, Date(10), uuid(0xFF, 0)},
      {"t", 2, Date(30), uuid(0x00, 9)},
  }};
  for (const auto& [title, priority, due, id] : rows) {
    auto task = std::make_shared<Task>(title, priority, due);
    task->setId(id);
    context.insert(task);
  }
  context.save();
  context.insert(std::make_shared<Task>("u", 1));  // pending inserts take part too

  FetchDescriptor<Task> undated;
  undated.predicate = [](const Task& task) { return !task.dueAt(); };
  EXPECT_EQ(titles(context.fetch(undated)), (std::vector<std::string>{"q", "r", "u"}));

  FetchDescriptor<Task> byId;
  byId.predicate = [](const Task& task) { return task.title() != "u"; };
  byId.sortBy = {SortDescriptor<Task>(&Task::id)};
  EXPECT_EQ(titles(context.fetch(byId)), (std::vector<std::string>{"t", "q", "r", "p", "s"}));
  byId.sortBy = {SortDescriptor<Task>(&Task::id, SortOrder::reverse)};
  EXPECT_EQ(titles(context.fetch(byId)), (std::vector<std::string>{"s", "p", "r", "q", "t"}));

  // Absent dates first; equal keys keep the store's order (stable).
  FetchDescriptor<Task> byPriorityThenDue;
  byPriorityThenDue.sortBy = {SortDescriptor<Task>(&Task::priority, SortOrder::reverse),
                              SortDescriptor<Task>(&Task::dueAt)};
  EXPECT_EQ(titles(context.fetch(byPriorityThenDue)), (std::vector<std::string>{"r", "t", "p", "q", "u", "s"}));
}

// Two processes save 200 single-record transactions each into one file at
// the same time: both succeed, nothing is lost.
// forEach reads only the columns asked for from a table the context has not
// loaded, and otherwise sees exactly what fetch sees (pending work included).
TEST_F(ModelContextTest, ForEachVisitsWhatFetchWouldReturn) {
  ModelContext writer(open());
  Tasks saved = saveTasks(writer, {"a", "b", "c"});
  saved[1]->setPriority(7);
  writer.save();

  ModelContext reader(writer.container());
  std::vector<std::pair<std::string, std::int64_t>> seen;
  reader.forEach<Task>({"priority", "title"}, [&](const Task& task) {
    seen.emplace_back(task.title(), task.priority());
    EXPECT_FALSE(task.dueAt()) << "a column not asked for keeps its default";
  });
  EXPECT_EQ(seen, (std::vector<std::pair<std::string, std::int64_t>>{{"a", 0}, {"b", 7}, {"c", 0}}));

  // Pending changes: an insert, a deletion and an unsaved value.
  auto d = std::make_shared<Task>("d", 3);
  writer.insert(d);
  writer.deleteRecord(saved[0]);
  saved[2]->setPriority(5);
  std::int64_t total = 0;
  std::size_t count = 0;
  writer.forEach<Task>({"priority"}, [&](const Task& task) { total += task.priority(), ++count; });
  EXPECT_EQ(count, 3U);
  EXPECT_EQ(total, 7 + 5 + 3);

  EXPECT_THROW(reader.forEach<Task>({"colour"}, [](const Task&) {}), StoreError);
}

// A filtered read picks the same records as the same test in memory, in row
// order, whether SQL reads them (through an index that orders them
// differently) or the context holds them, with pending changes too; a
// filtered fetch keeps the records it reads as a full fetch would.
TEST_F(ModelContextTest, AFilteredReadHandsOutThePassingRecordsInRowOrder) {
  auto indexed = configuration();
  indexed.schema.indexes = {{"Task", {"dueAt"}}};
  ModelContext writer(ModelContainer::open(indexed));
  // Due dates out of row order, equal to the bounds, absent, and infinite.
  const std::vector<std::optional<Date>> dues{Date(19),  Date(10), std::nullopt, Date(30), Date(20),
                                              Date(9.5), Date(15), Date(-std::numeric_limits<double>::infinity()), std::nullopt, Date(std::numeric_limits<double>::infinity())};
  Tasks saved;
  for (std::size_t i = 0; i < dues.size(); ++i) {
    saved.push_back(std::make_shared<Task>("t" + std::to_string(i), 0, dues[i]));
    writer.insert(saved.back());
  }
  writer.save();

  using Op = RowFilter::Op;
  const RowFilter filter = RowFilter::allOf({{"dueAt", Op::isNull, {}}})
                               .orElse(RowFilter::allOf({{"dueAt", Op::greaterOrEqual, Date(10)},
                                                         {"dueAt", Op::less, Date(20)},
                                                         {"createdAt", Op::lessOrEqual, Date(1000.25)}}));
  const auto expected = [](const Tasks& tasks) {
    std::vector<std::string> names;
    for (const auto& task : tasks) {
      const auto due = task->dueAt();
      if (!due || (*due >= Date(10) && *due < Date(20))) names.push_back(task->title());
    }
    return names;
  };
  const auto visited = [&](ModelContext& context) {
    std::vector<std::string> names;
    context.forEach<Task>({"title", "dueAt"}, filter, [&](const Task& task) { names.push_back(task.title()); });
    return names;
  };
  ASSERT_EQ(expected(saved), (std::vector<std::string>{"t0", "t1", "t2", "t6", "t8"}));

  ModelContext reader(writer.container());
  EXPECT_EQ(visited(reader), expected(saved)) << "read by SQL";
  EXPECT_EQ(visited(writer), expected(saved)) << "held in memory";

  // A pending insert that passes, a pending deletion of one that would.
  auto late = std::make_shared<Task>("late", 0, Date(12));
  writer.insert(late);
  writer.deleteRecord(saved[1]);
  EXPECT_EQ(visited(writer), (std::vector<std::string>{"t0", "t2", "t6", "t8", "late"}));

  // Whole records of the passing rows: the same objects a full fetch gives
  // later, and saved like any other when changed.
  ModelContext partial(writer.container());
  const Tasks some = partial.fetch<Task>(filter, {{}, {{&Task::title, SortOrder::reverse}}});
  ASSERT_EQ(titles(some), (std::vector<std::string>{"t8", "t6", "t2", "t1", "t0"}));
  some[1]->setPriority(6);
  partial.save();
  const Tasks all = partial.fetch<Task>();
  ASSERT_EQ(all.size(), dues.size());
  EXPECT_EQ(all[6], some[1]);
  EXPECT_EQ(all[0], some[4]);
  ModelContext elsewhere(writer.container());
  EXPECT_EQ(elsewhere.fetch<Task>()[6]->priority(), 6);
  // A row another context deleted is not handed out again.
  elsewhere.deleteRecord(elsewhere.fetch<Task>()[0]);
  elsewhere.save();
  ASSERT_EQ(titles(partial.fetch<Task>(filter)), (std::vector<std::string>{"t1", "t2", "t6", "t8"}));
  ModelContext again(writer.container());
  EXPECT_EQ(titles(again.fetch<Task>(RowFilter::allOf({{"dueAt", Op::greater, Date(15)}}))),
            (std::vector<std::string>{"t3", "t4", "t9"}));
  EXPECT_EQ(titles(again.fetch<Task>()), (std::vector<std::string>{"t1", "t2", "t3", "t4", "t5", "t6", "t7", "t8", "t9"}));

  // Only known date attributes, in any clause.
  const RowFilter onPriority = filter.orElse(RowFilter::allOf({{"priority", Op::less, Date(1)}}));
  const RowFilter onColour = filter.orElse(RowFilter::allOf({{"colour", Op::less, Date(1)}}));
  EXPECT_THROW(reader.forEach<Task>({"title"}, onPriority, [](const Task&) {}), StoreError);
  EXPECT_THROW(writer.forEach<Task>({"title"}, onColour, [](const Task&) {}), StoreError);
}

// Observers run inside the save's transaction: what they write commits with
// the save, and when they throw the save fails as a whole.
TEST_F(ModelContextTest, SaveObserversShareTheSavesTransaction) {
  ModelContext context(open());
  Tasks saved = saveTasks(context, {"a", "b"});
  const std::int64_t before = context.generation<Task>();

  std::vector<std::string> written;
  std::vector<std::string> deleted;
  context.setSaveObserver<Task>("names", [&](const ModelContext::SavedRecords<Task>& records) {
    EXPECT_EQ(records.previousGeneration, before);
    EXPECT_EQ(records.generation, before + 1);
    for (const Task* task : records.written) written.push_back(task->title());
    for (const Task* task : records.deleted) deleted.push_back(task->title());
    EXPECT_EQ(records.inserted, 1u);
    context.container()->setMetadata("observed", std::to_string(records.generation));
  });
  context.insert(std::make_shared<Task>("c"));
  saved[0]->setPriority(1);
  context.deleteRecord(saved[1]);
  context.save();
  EXPECT_EQ(written, (std::vector<std::string>{"c", "a"}));
  EXPECT_EQ(deleted, (std::vector<std::string>{"b"}));
  EXPECT_EQ(context.container()->metadata("observed"), std::to_string(before + 1));

  // The same name replaces the observer; this one fails the save.
  context.setSaveObserver<Task>("names", [&](const ModelContext::SavedRecords<Task>& records) {
    context.container()->setMetadata("observed", std::to_string(records.generation));
    throw StoreError(StoreError::Code::other, "refused");
  });
  saved[0]->setPriority(2);
  EXPECT_THROW(context.save(), StoreError);
  EXPECT_TRUE(context.hasChanges());
  EXPECT_EQ(context.generation<Task>(), before + 1);
  EXPECT_EQ(context.container()->metadata("observed"), std::to_string(before + 1));
  ModelContext fresh(open());
  EXPECT_EQ(fresh.fetch<Task>()[0]->priority(), 1);
}

TEST_F(ModelContextTest, UndoRestoresEveryRecordOfTheLastActionExactly) {
  const auto container = open();
  ModelContext context(container);
  const Tasks before = saveTasks(context, {"kept", "edited", "deleted"});  // not journaled
  const std::int64_t generation = context.generation<Task>();

  // One action of two saves: an insert, an edit, a deletion, then an edit of the new record.
  context.setUndoAction("tidy up");
  auto added = std::make_shared<Task>("added", 3, Date(-12.5));
  context.insert(added);
  before[1]->setTitle("edited twice");
  before[1]->setPriority(-7);
  context.deleteRecord(before[2]);
  context.save();
  added->setDone(true);
  context.save();
  ASSERT_EQ(container->lastUndoableAction()->name, "tidy up");

  // Another program (or a later run) undoes it.
  const auto elsewhere = open();
  const auto undone = elsewhere->undoLastAction();
  ASSERT_TRUE(undone);
  EXPECT_EQ(undone->name, "tidy up");
  EXPECT_FALSE(elsewhere->lastUndoableAction());
  EXPECT_FALSE(elsewhere->undoLastAction());  // the saves before the action stay

  ModelContext fresh(open());
  const Tasks after = fresh.fetch<Task>();
  ASSERT_EQ(titles(after), (std::vector<std::string>{"kept", "edited", "deleted"}));
  for (std::size_t i = 0; i < after.size(); ++i) {
    EXPECT_EQ(after[i]->id(), before[i]->id());
    EXPECT_EQ(after[i]->createdAt(), Date(1000.25));  // a fraction survives the round trip
    EXPECT_FALSE(after[i]->dueAt());
    EXPECT_EQ(after[i]->priority(), 0);
  }
  EXPECT_GT(fresh.generation<Task>(), generation + 2);  // readers and marks notice
  // The context that made the change sees the undo on its next fetch.
  EXPECT_EQ(titles(context.fetch<Task>()), (std::vector<std::string>{"kept", "edited", "deleted"}));
}

TEST_F(ModelContextTest, UndoRefusesWhenARecordChangedSinceAndKeepsOnlyTheLastActions) {
  const auto container = open();
  ModelContext context(container);
  const Tasks tasks = saveTasks(context, {"a"});
  context.setUndoAction("rename");
  tasks[0]->setTitle("b");
  context.save();
  executeElsewhere("UPDATE \"Task\" SET priority = 9");  // a change the journal never saw

  try {
    container->undoLastAction();
    ADD_FAILURE() << "the undo went through";
  } catch (const StoreError& error) {
    EXPECT_EQ(error.code(), StoreError::Code::changedSince);
  }
  ModelContext fresh(open());
  ASSERT_EQ(fresh.fetch<Task>().size(), 1u);
  EXPECT_EQ(fresh.fetch<Task>()[0]->title(), "b");
  EXPECT_EQ(fresh.fetch<Task>()[0]->priority(), 9);
  EXPECT_EQ(container->lastUndoableAction()->name, "rename");  // still there to retry

  // The journal keeps only the newest actions.
  for (std::size_t i = 0; i < UndoJournal::keptCommands + 5; ++i) {
    ModelContext action(container);
    action.setUndoAction("action " + std::to_string(i));
    action.insert(std::make_shared<Task>(std::string("t").append(std::to_string(i))));
    action.save();
  }
  std::size_t undone = 0;
  while (container->undoLastAction()) ++undone;
  EXPECT_EQ(undone, UndoJournal::keptCommands);
  EXPECT_EQ(ModelContext(open()).fetch<Task>().size(), 6u);  // "b" and the five oldest inserts
}

TEST_F(ModelContextTest, TheJournalForgetsTheCommandWhoseNewestSaveIsOldestAndAllOfIt) {
  const auto container = open();
  const auto insertTask = [](ModelContext& context, const char* title) {
    context.insert(std::make_shared<Task>(std::string(title)));
    context.save();
  };
  // Two commands interleave: the first saves again after the second.
  ModelContext first(container);
  first.setUndoAction("first");
  insertTask(first, "a1");
  ModelContext second(container);
  second.setUndoAction("second");
  insertTask(second, "b");
  insertTask(first, "a2");
  // One command more than the journal keeps: "second" is the oldest.
  for (std::size_t i = 0; i + 1 < UndoJournal::keptCommands; ++i) {
    ModelContext later(container);
    later.setUndoAction("later");
    insertTask(later, "later");
  }
  std::size_t undone = 0;
  std::optional<UndoJournal::Action> last;
  while (const auto action = container->undoLastAction()) {
    ++undone;
    last = action;
  }
  EXPECT_EQ(undone, UndoJournal::keptCommands);
  ASSERT_TRUE(last);
  EXPECT_EQ(last->name, "first");  // both of its saves, undone together
  const auto left = ModelContext(open()).fetch<Task>();
  ASSERT_EQ(left.size(), 1u);
  EXPECT_EQ(left[0]->title(), "b");
}

// Reads inside beginReading share one snapshot (other connections read
// meanwhile); a write ends it first, so what it saves lands, and others see
// it at once.
TEST_F(ModelContextTest, ReadsShareASnapshotUntilAWriteEndsIt) {
  const auto container = open();
  ModelContext context(container);
  saveTasks(context, {"first"});

  container->beginReading();
  ASSERT_EQ(context.fetch<Task>().size(), 1u);
  EXPECT_EQ(ModelContext(open()).fetch<Task>().size(), 1u);  // another connection reads too

  // Metadata and a save each write in a transaction of their own.
  container->setMetadata("note", "written");
  EXPECT_EQ(open()->metadata("note"), "written");
  saveTasks(context, {"second"});
  EXPECT_EQ(ModelContext(open()).fetch<Task>().size(), 2u);
  EXPECT_EQ(ModelContext(container).fetch<Task>().size(), 2u);  // the snapshot ended

  container->beginReading();
  container->endReading();
  container->endReading();  // nothing to end
  {
    ModelContext elsewhere(open());  // another connection, as another program
    saveTasks(elsewhere, {"elsewhere"});
  }
  EXPECT_EQ(ModelContext(container).fetch<Task>().size(), 3u);
  saveTasks(context, {"third"});
  EXPECT_EQ(ModelContext(open()).fetch<Task>().size(), 4u);
}

// A save is in the store's file itself before it returns, and no journal is
// left beside it: the file alone is the whole store.
TEST_F(ModelContextTest, ASaveReachesTheStoreFileBeforeItReturns) {
  const auto inFile = [&] {
    return SQLiteDatabase::openFileReadOnly(storePath().string(), true).queryInt64("SELECT count(*) FROM \"Task\"");
  };
  ModelContext context(open());
  saveTasks(context, {"first"});
  EXPECT_EQ(inFile(), 1);
  saveTasks(context, {"second", "third"});
  EXPECT_EQ(inFile(), 3);
  EXPECT_FALSE(std::filesystem::exists(storePath().string() + "-journal"));
  EXPECT_FALSE(std::filesystem::exists(storePath().string() + "-wal"));
  context.container()->setMetadata("note", "written");
  EXPECT_EQ(SQLiteDatabase::openFileReadOnly(storePath().string(), true)
                .queryInt64("SELECT count(*) FROM \"_metadata\" WHERE value = 'written'"),
            1);
}

TEST_F(ModelContextTest, TwoProcessesWriteConcurrently) {
  open();  // create the store before the writers start
  int start[2];
  ASSERT_EQ(pipe(start), 0);
  pid_t writers[2];
  for (pid_t& writer : writers) {
    writer = fork();
    ASSERT_GE(writer, 0);
    if (writer == 0) {
      char go;
      int status = read(start[0], &go, 1) == 1 ? 0 : 2;
      try {
        ModelContext context(open());
        for (int i = 0; i < 200 && status == 0; ++i) {
          context.insert(std::make_shared<Task>("task"));
          context.save();
        }
      } catch (const StoreError& error) {
        std::fprintf(stderr, "writer failed: %s\n", error.what());
        status = 1;
      }
      _exit(status);
    }
  }
  close(start[0]);
  ASSERT_EQ(write(start[1], "go", 2), 2);
  close(start[1]);
  for (const pid_t writer : writers) {
    int status = 0;
    ASSERT_EQ(waitpid(writer, &status, 0), writer);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
  }
  EXPECT_EQ(ModelContext(open()).fetch<Task>().size(), 400u);
}

// A save waits for another writer's turn to end, and every way out of a write lets the next writer in.
TEST_F(ModelContextTest, WritersTakeTurnsAcrossProcesses) {
  const auto container = open();
  ModelContext context(container);
  const auto folder = storePath().parent_path();
  const auto released = folder / "released";
  int held[2];
  ASSERT_EQ(pipe(held), 0);
  const pid_t other = fork();
  ASSERT_GE(other, 0);
  if (other == 0) {
    WriterLock lock(folder);
    lock.acquire(std::chrono::milliseconds(0));
    if (!lock.held() || write(held[1], "h", 1) != 1) _exit(2);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    if (std::FILE* marker = std::fopen(released.c_str(), "w")) std::fclose(marker);
    _exit(0);  // the lock goes with the process
  }
  close(held[1]);
  char byte;
  ASSERT_EQ(read(held[0], &byte, 1), 1);
  close(held[0]);
  context.setUndoAction("add");
  saveTasks(context, {"after"});
  EXPECT_TRUE(std::filesystem::exists(released)) << "the save did not wait for the other writer";
  int status = 0;
  ASSERT_EQ(waitpid(other, &status, 0), other);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);

  const auto isFree = [&] {
    WriterLock probe(folder);
    try {
      probe.acquire(std::chrono::milliseconds(0));
    } catch (const StoreError&) {
      return false;
    }
    return probe.held();
  };
  EXPECT_TRUE(isFree());
  container->setMetadata("note", "written");
  EXPECT_TRUE(isFree());
  ASSERT_TRUE(container->undoLastAction().has_value());
  EXPECT_TRUE(isFree());
  EXPECT_FALSE(container->undoLastAction().has_value());  // nothing left: a commit of nothing
  EXPECT_TRUE(isFree());
}

// A process killed in the middle of a large save leaves the store exactly as
// it was before that save, and undamaged.
TEST_F(ModelContextTest, KilledSaveLeavesTheStoreAsBefore) {
  {
    ModelContext context(open());
    for (int i = 0; i < 100; ++i) context.insert(std::make_shared<Task>("before"));
    context.save();
  }
  const auto store = storePath().string();
  const auto sizeBefore = std::filesystem::file_size(store);

  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const pid_t saver = fork();
  ASSERT_GE(saver, 0);
  if (saver == 0) {
    try {
      ModelContext context(open());
      for (int i = 0; i < 200'000; ++i) context.insert(std::make_shared<Task>(std::string(60, 'x'), i));
      if (write(ready[1], "s", 1) != 1) _exit(2);
      context.save();
    } catch (const StoreError&) {
      _exit(1);
    }
    _exit(0);
  }
  close(ready[1]);
  char byte;
  ASSERT_EQ(read(ready[0], &byte, 1), 1);
  close(ready[0]);
  // The save's pages spill into the file long before its commit (the rows
  // far exceed the page cache), with the journal of the old pages synced
  // first: once the file has grown by 1 MiB the child is inside the
  // transaction.
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  bool inside = false;
  while (!inside && std::chrono::steady_clock::now() < deadline) {
    struct stat info {};
    inside = ::stat(store.c_str(), &info) == 0 && static_cast<std::uintmax_t>(info.st_size) > sizeBefore + (1 << 20);
    if (!inside) std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
  kill(saver, SIGKILL);
  int status = 0;
  ASSERT_EQ(waitpid(saver, &status, 0), saver);
  ASSERT_TRUE(inside) << "the save never reached the file";
  ASSERT_TRUE(WIFSIGNALED(status)) << "the save finished before it was killed";

  const auto container = open();
  ModelContext context(container);
  const Tasks tasks = context.fetch<Task>();
  EXPECT_EQ(tasks.size(), 100u);
  EXPECT_EQ(titles(tasks), std::vector<std::string>(100, "before"));
  EXPECT_EQ(container->integrityCheck(), "ok");
}

}  // namespace
}  // namespace quillmont
