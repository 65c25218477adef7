#include "platform/store/DeletionLog.h"

#include <algorithm>

namespace quillmont {
namespace {

constexpr std::string_view table = "_deletions";
constexpr std::string_view idAttribute = "id";

std::string quoted(std::string_view name) { return SQLiteDatabase::quoted(name); }

// Keeps the later of two deletions of one record.
const std::string keepLater = " ON CONFLICT (entity, id) DO UPDATE SET deletedAt = max(deletedAt, excluded.deletedAt)";

}  // namespace

void DeletionLog::createTable() {
  if (created_) return;
  database_.execute("CREATE TABLE IF NOT EXISTS " + quoted(table) +
                    " (entity TEXT NOT NULL, id NOT NULL, deletedAt REAL NOT NULL, entry INTEGER,"
                    " PRIMARY KEY (entity, id)) WITHOUT ROWID");
  created_ = true;
}

bool DeletionLog::tableExists() const {
  if (created_) return true;
  SQLiteStatement statement = database_.prepare("SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = ?1");
  const std::string name(table);
  statement.bind(1, name);
  return statement.step();
}

void DeletionLog::record(std::size_t entity, std::int64_t key, Date at, std::int64_t entry) {
  const EntityDescription& description = entities_[entity];
  const bool hasIdentifier = std::any_of(description.attributes.begin(), description.attributes.end(),
                                         [](const auto& attribute) { return attribute.name == idAttribute; });
  if (!hasIdentifier) return;
  createTable();
  SQLiteStatement statement = database_.prepare(
      "INSERT INTO " + quoted(table) + " (entity, id, deletedAt, entry) SELECT ?1, " + quoted(idAttribute) +
      ", ?2, ?3 FROM " + quoted(description.name) + " WHERE _pk = ?4" + keepLater + ", entry = excluded.entry");
  statement.bind(1, description.name);
  statement.bind(2, at);
  statement.bind(3, entry);
  statement.bind(4, key);
  statement.step();
}

void DeletionLog::recordRows(std::size_t entity, const std::string& keySelection, Date at) {
  const EntityDescription& description = entities_[entity];
  const bool hasIdentifier = std::any_of(description.attributes.begin(), description.attributes.end(),
                                         [](const auto& attribute) { return attribute.name == idAttribute; });
  if (!hasIdentifier) return;
  createTable();
  SQLiteStatement statement = database_.prepare("INSERT INTO " + quoted(table) + " (entity, id, deletedAt, entry) SELECT ?1, " +
                                                quoted(idAttribute) + ", ?2, NULL FROM " + quoted(description.name) +
                                                " WHERE _pk IN (" + keySelection + ")" + keepLater + ", entry = NULL");
  statement.bind(1, description.name);
  statement.bind(2, at);
  while (statement.step()) {
  }
}

void DeletionLog::forgetEntry(std::int64_t entry) {
  if (!tableExists()) return;
  SQLiteStatement statement = database_.prepare("DELETE FROM " + quoted(table) + " WHERE entry = ?1");
  statement.bind(1, entry);
  statement.step();
}

std::vector<DeletionLog::Entry> DeletionLog::entries() const {
  std::vector<Entry> result;
  if (!tableExists()) return result;
  SQLiteStatement statement =
      database_.prepare("SELECT entity, id, deletedAt FROM " + quoted(table) + " ORDER BY entity, id");
  while (statement.step()) {
    Entry entry;
    statement.read(0, entry.entity);
    statement.read(1, entry.id);
    statement.read(2, entry.deletedAt);
    result.push_back(std::move(entry));
  }
  return result;
}

std::int64_t DeletionLog::absorb(std::span<const Entry> entries, Date forgetBefore) {
  createTable();
  std::int64_t changed = 0;
  SQLiteStatement insert = database_.prepare("INSERT INTO " + quoted(table) +
                                             " (entity, id, deletedAt) VALUES (?1, ?2, ?3)" + keepLater +
                                             " WHERE excluded.deletedAt > deletedAt");
  for (const Entry& entry : entries) {
    if (entry.deletedAt < forgetBefore) continue;
    SQLiteStatement::Scope scope(insert);
    insert.bind(1, entry.entity);
    insert.bind(2, entry.id);
    insert.bind(3, entry.deletedAt);
    insert.step();
    changed += sqlite3_changes(database_.handle());
  }
  SQLiteStatement forget = database_.prepare("DELETE FROM " + quoted(table) + " WHERE deletedAt < ?1");
  forget.bind(1, forgetBefore);
  forget.step();
  return changed;
}

}  // namespace quillmont
