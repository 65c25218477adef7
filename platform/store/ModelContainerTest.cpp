#include "platform/store/ModelContainer.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
#include <string>

#include "platform/store/ModelContext.h"
#include "platform/store/SQLiteDatabase.h"
#include "platform/store/SQLiteStatement.h"

namespace quillmont {
namespace {

// The first version of a record type...
class Memo final : public PersistentModel {
 public:
  static constexpr std::string_view entityName = "Memo";
  static std::span<const Attribute<Memo>> attributes() {
    static const std::array<Attribute<Memo>, 2> list{{{"id", &Memo::id_}, {"text", &Memo::text_}}};
    return list;
  }
  explicit Memo(ForLoading) {}
  explicit Memo(std::string text) : id_(UUID::random()), text_(std::move(text)) {}
  const std::string& text() const { return text_; }

 private:
  UUID id_;
  std::string text_;
};

// ...and a later one with two more attributes, whose defaults fill old rows.
class MemoWithRank final : public PersistentModel {
 public:
  static constexpr std::string_view entityName = "Memo";
  static std::span<const Attribute<MemoWithRank>> attributes() {
    static const std::array<Attribute<MemoWithRank>, 4> list{{{"id", &MemoWithRank::id_},
                                                              {"text", &MemoWithRank::text_},
                                                              {"rank", &MemoWithRank::rank_},
                                                              {"label", &MemoWithRank::label_}}};
    return list;
  }
  explicit MemoWithRank(ForLoading) {}
  const std::string& text() const { return text_; }
  std::int64_t rank() const { return rank_; }
  const std::string& label() const { return label_; }

 private:
  UUID id_;
  std::string text_;
  std::int64_t rank_ = 7;
  std::string label_{"it's new"};
};

class Label final : public PersistentModel {
 public:
  static constexpr std::string_view entityName = "Label";
  static std::span<const Attribute<Label>> attributes() {
    static const std::array<Attribute<Label>, 1> list{{{"pinned", &Label::pinned_}}};
    return list;
  }
  Label() = default;
  explicit Label(ForLoading) {}

 private:
  bool pinned_ = false;
};

class ModelContainerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "quillmont-container-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    home_ = pattern;
    const char* previous = std::getenv("QUILLMONT_HOME");
    if (previous != nullptr) previousHome_ = previous;
    setenv("QUILLMONT_HOME", (home_ / "data").c_str(), 1);
  }
  void TearDown() override {
    if (previousHome_) {
      setenv("QUILLMONT_HOME", previousHome_->c_str(), 1);
    } else {
      unsetenv("QUILLMONT_HOME");
    }
    std::filesystem::remove_all(home_);
  }

  static ModelConfiguration configuration(Schema schema) {
    return ModelConfiguration{"memos", std::move(schema), false, true, "group.memo", std::nullopt};
  }
  std::filesystem::path storePath() const { return home_ / "data" / "group.memo" / "memos.store"; }

  static std::string contents(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  }
  void writeFile(const std::string& bytes) const {
    std::filesystem::create_directories(storePath().parent_path());
    std::ofstream(storePath(), std::ios::binary) << bytes;
  }

  /// Opening fails with `code` and leaves the file exactly as it was.
  void expectRefused(const Schema& schema, StoreError::Code code) const {
    const std::string before = contents(storePath());
    try {
      ModelContainer::open(configuration(schema));
      ADD_FAILURE() << "opened";
    } catch (const StoreError& error) {
      EXPECT_EQ(error.code(), code) << error.what();
    }
    EXPECT_EQ(contents(storePath()), before);
  }

  std::filesystem::path home_;
  std::optional<std::string> previousHome_;
};

TEST_F(ModelContainerTest, CreatesThePrivateFolderAndAJournaledStore) {
  const mode_t umask = ::umask(0);  // everything is private whatever the umask
  const auto container = ModelContainer::open(configuration(Schema::of<Memo>("1")));
  ::umask(umask);
  EXPECT_EQ(container->url(), storePath());
  struct stat info {};
  ASSERT_EQ(::stat(storePath().parent_path().c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0700u);
  ASSERT_EQ(::stat((home_ / "data").c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0700u);
  const std::string header = contents(storePath());
  ASSERT_GE(header.size(), 100u);
  EXPECT_EQ(header.substr(0, 16), std::string("SQLite format 3\0", 16));
  EXPECT_EQ(header[18], 1);  // a rollback journal
  EXPECT_EQ(container->integrityCheck(), "ok");
  ASSERT_EQ(::stat(storePath().c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0600u);

  // Without a group the program's own folder is used.
  auto ownConfiguration = configuration(Schema::of<Memo>("1"));
  ownConfiguration.groupContainer.reset();
  EXPECT_EQ(ModelContainer::open(ownConfiguration)->url(), home_ / "data" / "platform_tests" / "memos.store");

  auto memoryConfiguration = configuration(Schema::of<Memo>("1"));
  memoryConfiguration.isStoredInMemoryOnly = true;
  const auto inMemory = ModelContainer::open(memoryConfiguration);
  EXPECT_FALSE(inMemory->url());
  ModelContext context(inMemory);
  context.insert(std::make_shared<Memo>("kept in memory"));
  context.save();
  EXPECT_EQ(context.fetch<Memo>().size(), 1u);
}

// A store in memory has no file, no folder and no writer lock: creating its
// tables and indexes must not look for one.
TEST_F(ModelContainerTest, StoresInMemoryNeedNoFolder) {
  auto memoryConfiguration = configuration(Schema::of<Memo, Label>("1"));
  memoryConfiguration.isStoredInMemoryOnly = true;
  memoryConfiguration.schema.indexes = {{"Memo", {"text"}}};
  std::filesystem::permissions(home_, std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
  const auto first = ModelContainer::open(memoryConfiguration);
  const auto second = ModelContainer::open(memoryConfiguration);
  std::filesystem::permissions(home_, std::filesystem::perms::owner_all);
  ModelContext context(first);
  context.insert(std::make_shared<Memo>("only here"));
  context.save();
  EXPECT_EQ(context.fetch<Memo>().size(), 1u);
  EXPECT_TRUE(ModelContext(second).fetch<Memo>().empty());  // each its own database
  EXPECT_EQ(first->integrityCheck(), "ok");
  EXPECT_FALSE(std::filesystem::exists(home_ / "data"));
}

TEST_F(ModelContainerTest, RefusesFilesThatAreNotStoresAndLeavesThemAlone) {
  writeFile("These are my notes, not a database.\n");
  expectRefused(Schema::of<Memo>("1"), StoreError::Code::notAStore);

  std::filesystem::remove(storePath());
  sqlite3* database = nullptr;
  ASSERT_EQ(sqlite3_open(storePath().c_str(), &database), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(database, "CREATE TABLE Memo (x); INSERT INTO Memo VALUES (1);", nullptr, nullptr, nullptr),
            SQLITE_OK);
  sqlite3_close(database);
  expectRefused(Schema::of<Memo>("1"), StoreError::Code::notAStore);
}

TEST_F(ModelContainerTest, OlderVersionsGainNewColumnsAndTablesNewerOnesAreRefused) {
  {
    ModelContext context(ModelContainer::open(configuration(Schema::of<Memo>("1.2"))));
    context.insert(std::make_shared<Memo>("old"));
    context.save();
  }
  // Versions compare by number: 1.10 is newer than 1.2.
  {
    const auto upgraded = ModelContainer::open(configuration(Schema::of<MemoWithRank, Label>("1.10")));
    ModelContext context(upgraded);
    const auto memos = context.fetch<MemoWithRank>();
    ASSERT_EQ(memos.size(), 1u);
    EXPECT_EQ(memos[0]->text(), "old");
    EXPECT_EQ(memos[0]->rank(), 7);
    EXPECT_EQ(memos[0]->label(), "it's new");
    context.insert(std::make_shared<Label>());
    context.save();
    EXPECT_EQ(context.fetch<Label>().size(), 1u);
  }
  expectRefused(Schema::of<Memo>("1.2"), StoreError::Code::newerVersion);
  expectRefused(Schema::of<MemoWithRank, Label>("2"), StoreError::Code::other);  // needs a migration
  EXPECT_EQ(ModelContainer::open(configuration(Schema::of<MemoWithRank, Label>("1.10.0")))->integrityCheck(), "ok");
}

/// 0 when `container` is read-only, reads its one memo and refuses a save
/// with the read-only error without losing the pending change; else which
/// check failed.
int readOnlyProblems(const std::shared_ptr<ModelContainer>& container) {
  if (!container->isReadOnly()) return 10;
  ModelContext context(container);
  const auto memos = context.fetch<Memo>();
  if (memos.size() != 1 || memos[0]->text() != "kept") return 11;
  context.insert(std::make_shared<Memo>("refused"));
  try {
    context.save();
    return 12;
  } catch (const StoreError& error) {
    if (error.code() != StoreError::Code::readOnly) return 13;
  }
  if (!context.hasChanges() || context.fetch<Memo>().size() != 2) return 14;
  return 0;
}

TEST_F(ModelContainerTest, StoresThatCannotBeWrittenAreReadAndNeverChanged) {
  {
    ModelContext context(ModelContainer::open(configuration(Schema::of<Memo>("1"))));
    context.insert(std::make_shared<Memo>("kept"));
    context.save();
  }
  const std::string before = contents(storePath());
  // Permissions bind everyone but the superuser, so as root the checks run
  // in a child that has become "nobody" and owns the files.
  const bool root = ::geteuid() == 0;
  constexpr uid_t nobody = 65534;
  std::filesystem::permissions(home_, std::filesystem::perms(0755));
  std::filesystem::permissions(home_ / "data", std::filesystem::perms(0755));
  if (root) {
    for (const auto& path : {home_ / "data", storePath().parent_path(), storePath()}) {
      ASSERT_EQ(::chown(path.c_str(), nobody, nobody), 0);
    }
  }
  ASSERT_EQ(::chmod(storePath().c_str(), 0400), 0);
  ASSERT_EQ(::chmod(storePath().parent_path().c_str(), 0500), 0);

  const pid_t child = ::fork();
  ASSERT_NE(child, -1);
  if (child == 0) {
    if (root && (::setgid(nobody) != 0 || ::setuid(nobody) != 0)) ::_exit(1);
    int problem = 0;
    try {
      // A read-only folder: no log files can be made beside the store, nor
      // the index the schema asks for, which the store does without.
      Schema indexed = Schema::of<Memo>("1");
      indexed.indexes = {{"Memo", {"text"}}};
      problem = readOnlyProblems(ModelContainer::open(configuration(indexed)));
      // An older store that would need new columns cannot be upgraded.
      if (problem == 0) {
        try {
          ModelContainer::open(configuration(Schema::of<MemoWithRank>("1.1")));
          problem = 20;
        } catch (const StoreError& error) {
          if (error.code() != StoreError::Code::readOnly) problem = 21;
        }
      }
      // A read-only file in a writable folder.
      if (problem == 0 && ::chmod(storePath().parent_path().c_str(), 0700) != 0) problem = 2;
      if (problem == 0) problem = readOnlyProblems(ModelContainer::open(configuration(Schema::of<Memo>("1"))));
    } catch (...) {
      problem = 3;
    }
    ::_exit(problem);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
  ::chmod(storePath().parent_path().c_str(), 0700);
  ::chmod(storePath().c_str(), 0600);
  EXPECT_EQ(contents(storePath()), before);
}

// An index is a lookup aid: a store gains it on opening, keeps its version,
// its records and what undo can take back, and a second opening adds nothing.
TEST_F(ModelContainerTest, IndexesAreAddedWithoutTouchingRecordsVersionOrUndo) {
  {
    ModelContext context(ModelContainer::open(configuration(Schema::of<Memo>("1"))));
    context.setUndoAction("write");
    context.insert(std::make_shared<Memo>("kept"));
    context.save();
  }
  Schema indexed = Schema::of<Memo>("1");
  indexed.indexes = {{"Memo", {"text", "id"}}};
  const auto indexNames = [&] {
    std::vector<std::string> names;
    SQLiteDatabase database = SQLiteDatabase::openFile(storePath().string());
    SQLiteStatement statement = database.prepare("SELECT name FROM sqlite_master WHERE type = 'index' AND tbl_name = 'Memo'");
    while (statement.step()) names.push_back(statement.columnText(0));
    return names;
  };
  EXPECT_TRUE(indexNames().empty());
  auto container = ModelContainer::open(configuration(indexed));
  EXPECT_EQ(indexNames(), std::vector<std::string>{"Memo.text.id"});
  container = ModelContainer::open(configuration(indexed));
  EXPECT_EQ(indexNames(), std::vector<std::string>{"Memo.text.id"});
  EXPECT_EQ(container->metadata("schemaVersion"), "1");
  ASSERT_TRUE(container->lastUndoableAction());
  EXPECT_EQ(container->lastUndoableAction()->name, "write");
  ModelContext context(container);
  ASSERT_EQ(context.fetch<Memo>().size(), 1u);
  EXPECT_EQ(context.fetch<Memo>()[0]->text(), "kept");
}

}  // namespace
}  // namespace quillmont
