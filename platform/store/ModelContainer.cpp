#include "platform/store/ModelContainer.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstring>
#include <set>
#include <utility>

#include "platform/foundation/ContainerDirectories.h"
#include "platform/foundation/PrivateFiles.h"
#include "platform/store/SQLiteError.h"

namespace quillmont {
namespace {

using Code = StoreError::Code;

// Marks the file as ours in its header ("QUIL"); together with the version
// row it tells our stores from other SQLite databases.
constexpr std::int64_t applicationId = 0x5155494C;
constexpr std::string_view keyColumn = "_pk";
constexpr std::string_view metadataTable = "_metadata";
constexpr int busyTimeoutMilliseconds = 10'000;

std::string identifier(std::string_view name) { return SQLiteDatabase::quoted(name); }

std::string textLiteral(std::string_view text) {
  std::string result = "'";
  for (const char c : text) {
    result += c;
    if (c == '\'') result += '\'';
  }
  return result + '\'';
}

std::string realLiteral(double value) {
  char buffer[32];
  const auto end = std::to_chars(buffer, buffer + sizeof buffer, value).ptr;
  return std::string(buffer, end);
}

std::string literal(const AttributeValue& value) {
  struct Visitor {
    std::string operator()(const UUID& uuid) const {
      static constexpr char digits[] = "0123456789ABCDEF";
      std::string result = "X'";
      for (const auto byte : uuid.bytes) {
        result += digits[byte >> 4];
        result += digits[byte & 0xF];
      }
      return result + '\'';
    }
    std::string operator()(Date date) const { return realLiteral(date.timeIntervalSinceReferenceDate); }
    std::string operator()(const std::optional<Date>& date) const { return date ? (*this)(*date) : "NULL"; }
    std::string operator()(std::int64_t integer) const { return std::to_string(integer); }
    std::string operator()(const std::string& text) const { return textLiteral(text); }
    std::string operator()(bool flag) const { return flag ? "1" : "0"; }
  };
  return std::visit(Visitor{}, value);
}

std::string columnDefinition(const AttributeDescription& attribute) {
  static constexpr const char* sqlTypes[] = {"BLOB", "REAL", "REAL", "INTEGER", "TEXT", "INTEGER"};
  std::string definition = identifier(attribute.name) + ' ' + sqlTypes[static_cast<int>(attribute.type)];
  if (attribute.type != AttributeType::optionalDate) definition += " NOT NULL";
  return definition + " DEFAULT " + literal(attribute.defaultValue);
}

std::string createTable(const EntityDescription& entity) {
  // AUTOINCREMENT: a row key is never reused, so a context that still holds
  // a record whose row another process deleted never mistakes a new row for it.
  std::string sql =
      "CREATE TABLE " + identifier(entity.name) + " (" + identifier(keyColumn) + " INTEGER PRIMARY KEY AUTOINCREMENT";
  for (const auto& attribute : entity.attributes) sql += ", " + columnDefinition(attribute);
  return sql + ')';
}

/// "1.2.3" as {1, 2, 3}; nothing unless dotted decimal numbers.
std::optional<std::vector<std::int64_t>> parseVersion(std::string_view text) {
  std::vector<std::int64_t> parts;
  while (true) {
    std::int64_t part = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), part);
    if (error != std::errc{} || part < 0) return std::nullopt;
    parts.push_back(part);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    if (text.empty()) return parts;
    if (text.front() != '.') return std::nullopt;
    text.remove_prefix(1);
  }
}

/// Negative, zero or positive as `a` is older than, equal to or newer than `b` ("1.0" == "1").
int compareVersions(const std::vector<std::int64_t>& a, const std::vector<std::int64_t>& b) {
  for (std::size_t i = 0; i < std::max(a.size(), b.size()); ++i) {
    const std::int64_t left = i < a.size() ? a[i] : 0;
    const std::int64_t right = i < b.size() ? b[i] : 0;
    if (left != right) return left < right ? -1 : 1;
  }
  return 0;
}

void validate(const ModelConfiguration& configuration) {
  const Schema& schema = configuration.schema;
  if (!parseVersion(schema.version)) {
    throw StoreError(Code::other, "schema version \"" + schema.version + "\" is not a dotted version number");
  }
  std::set<std::string_view> entityNames;
  for (const auto& entity : schema.entities) {
    if (entity.name.empty() || entity.name == metadataTable || entity.name.starts_with("sqlite_") ||
        !entityNames.insert(entity.name).second) {
      throw StoreError(Code::other, "record type name \"" + entity.name + "\" is empty, reserved or repeated");
    }
    std::set<std::string_view> attributeNames;
    for (const auto& attribute : entity.attributes) {
      if (attribute.name.empty() || attribute.name == keyColumn || !attributeNames.insert(attribute.name).second) {
        throw StoreError(Code::other,
                         entity.name + ": attribute name \"" + attribute.name + "\" is empty, reserved or repeated");
      }
    }
  }
  if (!configuration.isStoredInMemoryOnly && configuration.name.find('/') != std::string::npos) {
    throw StoreError(Code::cannotOpen, "store name \"" + configuration.name + "\" contains a '/'");
  }
}

/// Creates `folder` and any missing parents with mode 0700.
void createFolder(const std::filesystem::path& folder) {
  if (!PrivateFiles::createFolder(folder)) {
    throw StoreError(Code::cannotOpen, "creating " + folder.string() + ": " + std::strerror(errno));
  }
}

/// Creates the store file, or tightens an existing one, so that only the
/// user can read it whatever the umask: a time bank is personal. SQLite
/// gives its log files the store's permissions.
void keepPrivate(const std::filesystem::path& store) {
  const int descriptor = ::open(store.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
  if (descriptor < 0) return;  // SQLite reports why it cannot open the file
  struct stat status {};
  if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && (status.st_mode & 077) != 0) {
    ::fchmod(descriptor, status.st_mode & 0700);
  }
  ::close(descriptor);
}

/// The statements that create the schema's indexes the file lacks.
std::vector<std::string> missingIndexes(const SQLiteDatabase& database, const Schema& schema) {
  if (schema.indexes.empty()) return {};
  std::set<std::string, std::less<>> present;
  SQLiteStatement statement = database.prepare("SELECT name FROM sqlite_master WHERE type = 'index'");
  while (statement.step()) present.insert(statement.columnText(0));
  std::vector<std::string> changes;
  for (const IndexDescription& index : schema.indexes) {
    if (present.contains(index.name())) continue;
    std::string columns;
    for (const auto& column : index.columns) columns += (columns.empty() ? "" : ", ") + identifier(column);
    changes.push_back("CREATE INDEX IF NOT EXISTS " + identifier(index.name()) + " ON " + identifier(index.entity) +
                      " (" + columns + ")");
  }
  return changes;
}

/// What has to happen to the file for it to hold `schema`: nothing for an
/// up-to-date store, the whole store for an empty file, the tables and
/// columns added since for an older store of the same major version. Only
/// reads; throws for a file that is not a store or that we must not change.
std::vector<std::string> schemaChanges(const SQLiteDatabase& database, const Schema& schema, const std::string& label) {
  // The first read of the file: one that is not a database fails here.
  const std::int64_t objectCount = database.queryInt64("SELECT count(*) FROM sqlite_master");
  const std::int64_t fileApplicationId = database.queryInt64("PRAGMA application_id");
  std::vector<std::string> changes;

  if (objectCount == 0 && fileApplicationId == 0) {
    changes.push_back("PRAGMA application_id = " + std::to_string(applicationId));
    changes.push_back("CREATE TABLE " + identifier(metadataTable) + " (key TEXT PRIMARY KEY, value TEXT NOT NULL)");
    changes.push_back("INSERT INTO " + identifier(metadataTable) + " VALUES ('schemaVersion', " +
                      textLiteral(schema.version) + ')');
    for (const auto& entity : schema.entities) changes.push_back(createTable(entity));
    return changes;
  }

  const auto notAStore = [&](const std::string& why) { return StoreError(Code::notAStore, label + " " + why); };
  if (fileApplicationId != applicationId || !database.hasTable(std::string(metadataTable))) {
    throw notAStore("is not a Quillmont store");
  }
  std::optional<std::vector<std::int64_t>> stored;
  std::string storedText;
  {
    SQLiteStatement statement =
        database.prepare("SELECT value FROM " + identifier(metadataTable) + " WHERE key = 'schemaVersion'");
    if (statement.step()) {
      storedText = statement.columnText(0);
      stored = parseVersion(storedText);
    }
  }
  if (!stored) throw notAStore("has no valid schema version");
  const auto wanted = *parseVersion(schema.version);
  const int order = compareVersions(*stored, wanted);
  if (order > 0) {
    throw StoreError(Code::newerVersion, label + " was written by a newer version (schema " + storedText +
                                             ", this program knows " + schema.version + ")");
  }
  if (stored->front() != wanted.front()) {
    throw StoreError(Code::other,
                     label + " has schema " + storedText + ", which this program cannot migrate to " + schema.version);
  }

  for (const auto& entity : schema.entities) {
    if (!database.hasTable(entity.name)) {
      changes.push_back(createTable(entity));
      continue;
    }
    if (!database.hasTable(entity.name, keyColumn.data())) throw notAStore("has a damaged table " + entity.name);
    for (const auto& attribute : entity.attributes) {
      if (!database.hasTable(entity.name, attribute.name.c_str())) {
        changes.push_back("ALTER TABLE " + identifier(entity.name) + " ADD COLUMN " + columnDefinition(attribute));
      }
    }
  }
  if (order < 0) {
    changes.push_back("UPDATE " + identifier(metadataTable) + " SET value = " + textLiteral(schema.version) +
                      " WHERE key = 'schemaVersion'");
  }
  return changes;
}

std::string joined(const std::vector<std::string>& names, std::string_view separator) {
  std::string result;
  for (const auto& name : names) {
    if (!result.empty()) result += separator;
    result += identifier(name);
  }
  return result;
}

}  // namespace

std::shared_ptr<ModelContainer> ModelContainer::open(ModelConfiguration configuration) {
  validate(configuration);
  std::optional<std::filesystem::path> url;
  SQLiteDatabase database;
  bool readOnly = false;
  if (configuration.isStoredInMemoryOnly) {
    database = SQLiteDatabase::openInMemory();
  } else {
    const auto folder = configuration.groupContainer
                            ? ContainerDirectories::groupContainer(*configuration.groupContainer)
                            : ContainerDirectories::processContainer();
    createFolder(folder);
    url = folder / ((configuration.name.empty() ? std::string("default") : configuration.name) + ".store");
    std::error_code error;
    const bool exists = std::filesystem::exists(*url, error);
    const bool folderWritable = ::access(folder.c_str(), W_OK) == 0;
    // A store that exists but cannot be written (a read-only file, folder
    // or file system) is still there to be read; only saves are refused.
    readOnly = exists && !(folderWritable && ::access(url->c_str(), W_OK) == 0);
    if (readOnly) {
      // Without a writable folder SQLite cannot make a log's shared index;
      // when no log or journal is left over (or only an empty log that an
      // older version kept), the file alone is the whole store. A journal
      // left by a failed save must first take the file back: SQLite says so.
      const auto leftOver = [&](const char* suffix) {
        std::error_code missing;
        const auto size = std::filesystem::file_size(url->string() + suffix, missing);
        return !missing && size > 0;
      };
      database = SQLiteDatabase::openFileReadOnly(url->string(),
                                                  !folderWritable && !leftOver("-wal") && !leftOver("-journal"));
    } else {
      keepPrivate(*url);
      database = SQLiteDatabase::openFile(url->string());
    }
  }
  sqlite3_busy_timeout(database.handle(), busyTimeoutMilliseconds);
  const std::string label = url ? url->string() : std::string("the store in memory");

  // Look before touching anything: a foreign or newer file stays as it is.
  const bool needsChanges = !schemaChanges(database, configuration.schema, label).empty();
  if (readOnly) {
    if (needsChanges) {
      throw StoreError(Code::readOnly, label +
                                           " is read-only and was written by an older version: it can be used "
                                           "once this program may update it");
    }
  } else if (url) {
    // A rollback journal: every commit syncs the journal, then the file,
    // and is in once the journal is deleted. A sync the disk refuses fails
    // the commit, and the journal left behind takes the file back to the
    // store before it, here or at the next open; so a save that reports an
    // error never shows up later. (A write-ahead log cannot promise that: a
    // commit whose log sync failed is still in the log, whole, and comes
    // back when the log is next read.) A store another program still holds
    // in write-ahead-log mode stays in it, with full syncs, until it is
    // opened alone.
    std::string mode;
    try {
      SQLiteStatement journalMode = database.prepare("PRAGMA journal_mode = DELETE");
      if (journalMode.step()) mode = journalMode.columnText(0);
    } catch (const StoreError& error) {
      if (error.code() != Code::busy) throw;
      mode = "wal";
    }
    if (mode != "delete" && mode != "wal") {
      throw StoreError(Code::cannotOpen, label + ": cannot keep a journal here");
    }
    database.execute("PRAGMA synchronous = FULL");
    // Reading through a memory map spares a read() call per page: a fresh
    // context reads every page of a table, more than the page cache keeps.
    database.execute("PRAGMA mmap_size = 268435456");
  }
  if (needsChanges) {
    // Another process may be creating or upgrading the same file: decide
    // again under the write lock, then apply everything in one transaction.
    WriterLock writer(url ? url->parent_path() : std::filesystem::path());  // none in memory
    writer.acquire(std::chrono::milliseconds(busyTimeoutMilliseconds));
    database.execute("BEGIN IMMEDIATE");
    try {
      for (const auto& change : schemaChanges(database, configuration.schema, label)) database.execute(change);
      // The journal's row images have the tables' old shape: start it afresh.
      for (const auto& statement : UndoJournal::discardStatements(configuration.schema.entities)) {
        database.execute(statement);
      }
      database.commit(Code::other);
    } catch (...) {
      if (database.isInTransaction()) sqlite3_exec(database.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
      throw;
    }
  }
  if (!readOnly && !missingIndexes(database, configuration.schema).empty()) {
    // Decided again under the write lock; a file another process is
    // indexing right now gets its index from that process.
    // A store that cannot be indexed now (busy past the timeout, a full
    // disk) is still read and written the same way, only slower.
    try {
      WriterLock writer(url ? url->parent_path() : std::filesystem::path());
      writer.acquire(std::chrono::milliseconds(busyTimeoutMilliseconds));
      database.execute("BEGIN IMMEDIATE");
      for (const auto& change : missingIndexes(database, configuration.schema)) database.execute(change);
      database.commit(Code::other);
    } catch (const std::exception&) {
      if (database.isInTransaction()) sqlite3_exec(database.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
  }
  return std::shared_ptr<ModelContainer>(
      new ModelContainer(std::move(configuration), std::move(url), std::move(database), readOnly));
}

ModelContainer::ModelContainer(ModelConfiguration configuration, std::optional<std::filesystem::path> url,
                               SQLiteDatabase database, bool readOnly)
    : configuration_(std::move(configuration)),
      url_(std::move(url)),
      database_(std::move(database)),
      writer_(url_ && !readOnly ? url_->parent_path() : std::filesystem::path()),
      isReadOnly_(readOnly) {
  entities_.resize(configuration_.schema.entities.size());
  for (std::size_t i = 0; i < entities_.size(); ++i) entities_[i].description = &configuration_.schema.entities[i];
}

ModelContainer::~ModelContainer() { endReading(); }

std::string ModelContainer::integrityCheck() {
  try {
    SQLiteStatement statement = database_.prepare("PRAGMA integrity_check");
    std::string report;
    while (statement.step()) {
      if (!report.empty()) report += '\n';
      report += statement.columnText(0);
    }
    return report;
  } catch (const StoreError& error) {
    return error.what();
  }
}

ModelContainer::EntityStore& ModelContainer::entityStore(std::string_view entityName) {
  const auto found = std::find_if(entities_.begin(), entities_.end(),
                                  [&](const EntityStore& store) { return store.description->name == entityName; });
  if (found == entities_.end()) {
    throw StoreError(Code::other, "the store's schema has no record type " + std::string(entityName));
  }
  return *found;
}

SQLiteStatement& ModelContainer::statement(EntityStore& store, Statement which) {
  SQLiteStatement& prepared = store.statements[static_cast<std::size_t>(which)];
  if (prepared) return prepared;
  const EntityDescription& entity = *store.description;
  std::vector<std::string> names;
  for (const auto& attribute : entity.attributes) names.push_back(attribute.name);
  const std::string table = identifier(entity.name);
  const std::string key = identifier(keyColumn);
  switch (which) {
    case Statement::selectAll:
      prepared = database_.prepare("SELECT " + key + (names.empty() ? "" : ", ") + joined(names, ", ") + " FROM " +
                                   table + " ORDER BY " + key);
      break;
    case Statement::insert: {
      std::string placeholders;
      for (std::size_t i = 1; i <= names.size(); ++i) placeholders += (i > 1 ? ",?" : "?") + std::to_string(i);
      prepared = names.empty() ? database_.prepare("INSERT INTO " + table + " DEFAULT VALUES")
                               : database_.prepare("INSERT INTO " + table + " (" + joined(names, ", ") +
                                                   ") VALUES (" + placeholders + ")");
      break;
    }
    case Statement::update: {
      std::string assignments;
      for (std::size_t i = 0; i < names.size(); ++i) {
        assignments += (i > 0 ? ", " : "") + identifier(names[i]) + " = ?" + std::to_string(i + 1);
      }
      prepared = database_.prepare("UPDATE " + table + " SET " + (names.empty() ? key + " = " + key : assignments) +
                                   " WHERE " + key + " = ?" + std::to_string(names.size() + 1));
      break;
    }
    case Statement::remove:
      prepared = database_.prepare("DELETE FROM " + table + " WHERE " + key + " = ?1");
      break;
  }
  return prepared;
}

SQLiteStatement& ModelContainer::selectColumns(EntityStore& store, std::initializer_list<std::string_view> names,
                                              const std::string& condition) {
  std::string columns;
  for (const std::string_view name : names) columns += (columns.empty() ? "" : ", ") + identifier(name);
  return selection(store, columns.empty() ? identifier(keyColumn) : columns, condition);
}

SQLiteStatement& ModelContainer::selectRows(EntityStore& store, const std::string& condition) {
  std::string columns = identifier(keyColumn);
  for (const auto& attribute : store.description->attributes) columns += ", " + identifier(attribute.name);
  return selection(store, columns, condition);
}

SQLiteStatement& ModelContainer::selection(EntityStore& store, const std::string& columns, const std::string& condition) {
  const std::string table = identifier(store.description->name);
  std::string sql = "SELECT " + columns + " FROM " + table;
  // The keys are chosen first, through an index where one helps, then read
  // in key order: the order without a condition, and what the planner would
  // otherwise keep by scanning the whole table.
  if (!condition.empty()) {
    const std::string key = identifier(keyColumn);
    sql += " WHERE " + key + " IN (SELECT " + key + " FROM " + table + " WHERE " + condition + ") ORDER BY " + key;
  }
  for (auto& [text, statement] : store.selections) {
    if (text == sql) return statement;
  }
  SQLiteStatement statement = database_.prepare(sql);
  return store.selections.emplace_back(std::move(sql), std::move(statement)).second;
}

std::int64_t ModelContainer::dataVersion() {
  if (!dataVersion_) dataVersion_ = database_.prepare("PRAGMA data_version");
  SQLiteStatement::Scope scope(dataVersion_);
  return dataVersion_.step() ? dataVersion_.columnInt64(0) : 0;
}

std::optional<std::string> ModelContainer::metadata(std::string_view key) {
  if (!readMetadata_) {
    readMetadata_ = database_.prepare("SELECT value FROM " + identifier(metadataTable) + " WHERE key = ?1");
  }
  const std::string keyText(key);  // bound without a copy: lives until the step
  SQLiteStatement::Scope scope(readMetadata_);
  readMetadata_.bind(1, keyText);
  if (!readMetadata_.step()) return std::nullopt;
  return readMetadata_.columnText(0);
}

std::int64_t ModelContainer::generation(std::string_view entityName) {
  const auto value = metadata("generation." + std::string(entityName));
  std::int64_t count = 0;
  if (value) std::from_chars(value->data(), value->data() + value->size(), count);
  return count;
}

void ModelContainer::raiseGeneration(std::string_view entityName) {
  if (!raiseGeneration_) {
    raiseGeneration_ = database_.prepare("INSERT INTO " + identifier(metadataTable) +
                                         " VALUES (?1, '1') ON CONFLICT(key) DO UPDATE SET value = "
                                         "CAST(CAST(value AS INTEGER) + 1 AS TEXT)");
  }
  const std::string key = "generation." + std::string(entityName);  // bound without a copy
  SQLiteStatement::Scope scope(raiseGeneration_);
  raiseGeneration_.bind(1, key);
  raiseGeneration_.step();
}

void ModelContainer::setMetadata(std::string_view key, std::string_view value) {
  const auto write = [&] {
    SQLiteStatement statement =
        database_.prepare("INSERT OR REPLACE INTO " + identifier(metadataTable) + " VALUES (?1, ?2)");
    const std::string keyText(key);  // bound without a copy: live until the step
    const std::string valueText(value);
    statement.bind(1, keyText);
    statement.bind(2, valueText);
    statement.step();
  };
  if (database_.isInTransaction() && !reading_) {  // a save's observer: part of that save
    write();
    return;
  }
  beginWriting();
  try {
    write();
    commitTransaction();  // not a save of records
  } catch (...) {
    abandonWriting();
    throw;
  }
}

std::optional<UndoJournal::Action> ModelContainer::undoLastAction() {
  beginWriting();
  try {
    auto undone = journal_.undoLast(Date::now());
    if (!undone) {
      commitTransaction();
      return std::nullopt;
    }
    for (const std::size_t entity : undone->second) {
      raiseGeneration(entities_[entity].description->name);
      ++entities_[entity].commitCount;  // this connection's contexts reload
    }
    commitWriting();
    return undone->first;
  } catch (...) {
    abandonWriting();
    throw;
  }
}

template <typename Write>
std::int64_t ModelContainer::writeAlone(Write write) {
  beginWriting();
  try {
    const std::int64_t changed = write();
    commitWriting();
    return changed;
  } catch (const StoreError& error) {
    abandonWriting();
    throw StoreError(error.code() == Code::busy ? Code::busy : Code::saveFailed, error.what());
  } catch (...) {
    abandonWriting();
    throw;
  }
}

std::int64_t ModelContainer::absorbDeletions(std::span<const DeletionLog::Entry> entries, Date forgetBefore) {
  return writeAlone([&] { return deletions_.absorb(entries, forgetBefore); });
}

std::int64_t ModelContainer::addHolidays(std::span<const HolidayList::Entry> entries) {
  return writeAlone([&] { return holidays_.add(entries); });
}

void ModelContainer::beginReading() {
  if (database_.isInTransaction()) return;
  database_.execute("BEGIN");  // deferred: the first read takes the snapshot
  reading_ = true;
}

void ModelContainer::endReading() noexcept {
  if (!reading_) return;
  reading_ = false;
  if (sqlite3_exec(database_.handle(), "COMMIT", nullptr, nullptr, nullptr) != SQLITE_OK) {
    sqlite3_exec(database_.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
  }
}

void ModelContainer::beginWriting() {
  endReading();
  if (isReadOnly_) {
    throw StoreError(Code::readOnly, "the store " + url_->string() + " is read-only: it can be read but not changed");
  }
  writer_.acquire(std::chrono::milliseconds(busyTimeoutMilliseconds));
  try {
    database_.execute("BEGIN IMMEDIATE", Code::saveFailed);
  } catch (...) {
    writer_.release();
    throw;
  }
}

void ModelContainer::commitTransaction() {
  database_.commit(Code::saveFailed);
  writer_.release();
}

void ModelContainer::commitWriting() {
  commitTransaction();
  ++savesCommitted_;
}

void ModelContainer::abandonWriting() noexcept {
  if (database_.isInTransaction()) sqlite3_exec(database_.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
  writer_.release();
}

}  // namespace quillmont
