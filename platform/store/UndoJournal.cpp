#include "platform/store/UndoJournal.h"

#include <algorithm>

namespace quillmont {
namespace {

constexpr std::string_view entriesTable = "_journal";
constexpr std::string_view keyColumn = "_pk";
// The attribute that tells copies of a record elsewhere which one is newer.
constexpr std::string_view modifiedAtAttribute = "modifiedAt";

std::string quoted(std::string_view name) { return SQLiteDatabase::quoted(name); }

std::string tableOf(const EntityDescription& entity) { return std::string(entriesTable) + "." + entity.name; }

}  // namespace

std::vector<std::string> UndoJournal::discardStatements(const std::vector<EntityDescription>& entities) {
  std::vector<std::string> statements{"DROP TABLE IF EXISTS " + quoted(entriesTable)};
  for (const auto& entity : entities) statements.push_back("DROP TABLE IF EXISTS " + quoted(tableOf(entity)));
  return statements;
}

std::string UndoJournal::journalTable(std::size_t entity) const { return quoted(tableOf(entities_[entity])); }

std::string UndoJournal::attributeList(std::size_t entity, std::string_view prefix) const {
  std::string list;
  for (const auto& attribute : entities_[entity].attributes) {
    list += (list.empty() ? "" : ", ") + std::string(prefix) + quoted(attribute.name);
  }
  return list;
}

std::string UndoJournal::columnList(std::size_t entity, std::string_view prefix) const {
  const std::string attributes = attributeList(entity, prefix);
  return std::string(prefix) + quoted(keyColumn) + (attributes.empty() ? "" : ", " + attributes);
}

void UndoJournal::begin(std::string_view action, std::string_view command, Date at) {
  database_.execute("CREATE TABLE IF NOT EXISTS " + quoted(entriesTable) + " (" + quoted(keyColumn) +
                    " INTEGER PRIMARY KEY, command TEXT NOT NULL, action TEXT NOT NULL, at REAL NOT NULL)");
  forgetOldCommands();

  SQLiteStatement insert =
      database_.prepare("INSERT INTO " + quoted(entriesTable) + " (command, action, at) VALUES (?1, ?2, ?3)");
  const std::string commandText(command);  // bound without a copy: live until the step
  const std::string actionText(action);
  insert.bind(1, commandText);
  insert.bind(2, actionText);
  insert.bind(3, at);
  insert.step();
  entry_ = database_.lastInsertRowid();
  at_ = at;
}

void UndoJournal::forgetOldCommands() {
  // The entries of all but the newest kept commands less one (a new one is
  // about to begin), a command placed by its newest entry. Once the journal
  // is full this runs at every command: one scan of the rowid, newest first
  // (grouping and sorting in SQL cost ten times as much), then one compiled
  // deletion per table.
  std::vector<std::int64_t> forgotten;
  {
    SQLiteStatement select = database_.prepare("SELECT " + quoted(keyColumn) + ", command FROM " +
                                               quoted(entriesTable) + " ORDER BY " + quoted(keyColumn) + " DESC");
    std::vector<std::string> kept;
    while (select.step()) {
      const std::string command = select.columnText(1);
      if (std::find(kept.begin(), kept.end(), command) != kept.end()) continue;
      if (kept.size() < keptCommands - 1) {
        kept.emplace_back(command);
      } else {
        forgotten.push_back(select.columnInt64(0));
      }
    }
  }
  if (forgotten.empty()) return;
  const auto forget = [&](const std::string& table, std::string_view column) {
    SQLiteStatement remove =
        database_.prepare("DELETE FROM " + quoted(table) + " WHERE " + std::string(column) + " = ?1");
    for (const std::int64_t entry : forgotten) {
      SQLiteStatement::Scope scope(remove);
      remove.bind(1, entry);
      remove.step();
    }
  };
  for (const auto& entity : entities_) {  // images first
    if (database_.hasTable(tableOf(entity))) forget(tableOf(entity), "_entry");
  }
  forget(std::string(entriesTable), quoted(keyColumn));
}

UndoJournal::EntityStatements& UndoJournal::statements(std::size_t entity) {
  if (statements_.size() < entities_.size()) statements_.resize(entities_.size());
  EntityStatements& result = statements_[entity];
  if (!result.prepared) {
    // Untyped columns: a copied value keeps its storage class exactly.
    database_.execute("CREATE TABLE IF NOT EXISTS " + journalTable(entity) + " (_entry, _image, " +
                      columnList(entity, "") + ")");
    result.copy = database_.prepare("INSERT INTO " + journalTable(entity) + " SELECT ?1, ?2, " + columnList(entity, "") +
                                    " FROM " + quoted(entities_[entity].name) + " WHERE " + quoted(keyColumn) + " = ?3");
    result.prepared = true;
  }
  return result;
}

void UndoJournal::record(std::size_t entity, std::int64_t key, Image image) {
  if (!entry_) return;
  SQLiteStatement& copy = statements(entity).copy;
  SQLiteStatement::Scope scope(copy);
  copy.bind(1, *entry_);
  copy.bind(2, static_cast<std::int64_t>(image));
  copy.bind(3, key);
  copy.step();
  if (image == Image::beforeDelete) deletions_.record(entity, key, at_, *entry_);
}

std::optional<UndoJournal::Action> UndoJournal::last() const {
  if (!database_.hasTable(std::string(entriesTable))) return std::nullopt;
  SQLiteStatement newest = database_.prepare("SELECT action, at FROM " + quoted(entriesTable) + " ORDER BY " +
                                             quoted(keyColumn) + " DESC LIMIT 1");
  if (!newest.step()) return std::nullopt;
  Action action{newest.columnText(0), Date()};
  newest.read(1, action.at);
  return action;
}

std::optional<std::pair<UndoJournal::Action, std::vector<std::size_t>>> UndoJournal::undoLast(Date now) {
  const auto action = last();
  if (!action) return std::nullopt;
  std::vector<std::int64_t> entries;
  {
    SQLiteStatement select = database_.prepare(
        "SELECT " + quoted(keyColumn) + " FROM " + quoted(entriesTable) + " WHERE command = (SELECT command FROM " +
        quoted(entriesTable) + " ORDER BY " + quoted(keyColumn) + " DESC LIMIT 1) ORDER BY " + quoted(keyColumn) +
        " DESC");
    while (select.step()) entries.push_back(select.columnInt64(0));
  }
  std::vector<std::size_t> changed;
  for (const std::int64_t entry : entries) undoEntry(entry, changed, now);
  std::sort(changed.begin(), changed.end());
  changed.erase(std::unique(changed.begin(), changed.end()), changed.end());
  return std::pair{*action, changed};
}

void UndoJournal::undoEntry(std::int64_t entry, std::vector<std::size_t>& changed, Date now) {
  deletions_.forgetEntry(entry);
  const std::string key = quoted(keyColumn);
  for (std::size_t entity = 0; entity < entities_.size(); ++entity) {
    if (!database_.hasTable(tableOf(entities_[entity]))) continue;
    const std::string table = quoted(entities_[entity].name);
    // The images of this save, all or of one kind, as "image".
    const std::string ofEntry =
        " FROM " + journalTable(entity) + " AS image WHERE image._entry = " + std::to_string(entry);
    const auto ofKind = [&](Image kind) {
      return ofEntry + " AND image._image = " + std::to_string(static_cast<std::int64_t>(kind));
    };
    if (database_.queryInt64("SELECT count(*)" + ofEntry) == 0) continue;

    // Every row must still be as the action left it: inserted and updated
    // rows equal to their image after the action, deleted rows still gone.
    // The modification instant is not compared: an earlier undo marks what
    // it restores as modified then, and a copy that came back from another
    // machine with the same values is the same record.
    std::string same = "row." + key + " = image." + key;
    for (const auto& attribute : entities_[entity].attributes) {
      if (attribute.name == modifiedAtAttribute) continue;
      same += " AND row." + quoted(attribute.name) + " IS image." + quoted(attribute.name);
    }
    const std::string unlike = " AND NOT EXISTS (SELECT 1 FROM " + table + " AS row WHERE " + same + ")";
    const std::string present = " AND EXISTS (SELECT 1 FROM " + table + " AS row WHERE row." + key + " = image." + key + ")";
    const std::int64_t conflicts = database_.queryInt64("SELECT count(*)" + ofKind(Image::inserted) + unlike) +
                                   database_.queryInt64("SELECT count(*)" + ofKind(Image::afterUpdate) + unlike) +
                                   database_.queryInt64("SELECT count(*)" + ofKind(Image::beforeDelete) + present);
    if (conflicts > 0) {
      throw StoreError(StoreError::Code::changedSince,
                       "the last change cannot be undone: " + std::to_string(conflicts) + " of its " +
                           entities_[entity].name + " records changed since");
    }

    const std::string insertedKeys = "SELECT image." + key + ofKind(Image::inserted);
    deletions_.recordRows(entity, insertedKeys, now);
    database_.execute("DELETE FROM " + table + " WHERE " + key + " IN (" + insertedKeys + ")");
    if (!entities_[entity].attributes.empty()) {
      database_.execute("UPDATE " + table + " AS row SET (" + attributeList(entity, "") + ") = (SELECT " +
                        attributeList(entity, "image.") + ofKind(Image::beforeUpdate) + " AND image." + key +
                        " = row." + key + ") WHERE " + key + " IN (SELECT image." + key +
                        ofKind(Image::beforeUpdate) + ")");
    }
    database_.execute("INSERT INTO " + table + " (" + columnList(entity, "") + ") SELECT " +
                      columnList(entity, "image.") + ofKind(Image::beforeDelete));
    const auto& attributes = entities_[entity].attributes;
    if (std::any_of(attributes.begin(), attributes.end(),
                    [](const auto& attribute) { return attribute.name == modifiedAtAttribute; })) {
      SQLiteStatement touch = database_.prepare(
          "UPDATE " + table + " SET " + quoted(modifiedAtAttribute) + " = ?1 WHERE " + key + " IN (SELECT image." +
          key + ofEntry + " AND image._image IN (" + std::to_string(static_cast<std::int64_t>(Image::beforeUpdate)) +
          ", " + std::to_string(static_cast<std::int64_t>(Image::beforeDelete)) + "))");
      touch.bind(1, now);
      while (touch.step()) {
      }
    }
    database_.execute("DELETE FROM " + journalTable(entity) + " WHERE _entry = " + std::to_string(entry));
    changed.push_back(entity);
  }
  database_.execute("DELETE FROM " + quoted(entriesTable) + " WHERE " + key + " = " + std::to_string(entry));
}

}  // namespace quillmont
