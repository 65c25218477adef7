// ModelContext: a unit of work on one container. It hands out records,
// keeps the ones inserted, changed or deleted since the last save, and
// writes them all in one transaction on save(). Used from one thread.
//
// A record type is read from its table once and served from memory after
// that, until the file changes: another connection's commit (SQLite's
// data_version) or a save by another context on the same container (the
// container's commit count). A reload keeps each row's object and refreshes
// its values, except for records with unsaved changes. The same row always
// yields the same object, so pointer equality is record identity.
//
// A record type used here offers `entityName`, `attributes()` and a
// `Model(PersistentModel::ForLoading)` constructor, and is in the
// container's schema.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "platform/store/FetchDescriptor.h"
#include "platform/store/ModelContainer.h"
#include "platform/store/PersistentModel.h"
#include "platform/store/RowFilter.h"
#include "platform/store/SQLiteStatement.h"
#include "platform/store/Schema.h"
#include "platform/store/StoreError.h"

namespace quillmont {

class ModelContext {
 public:
  explicit ModelContext(std::shared_ptr<ModelContainer> container);
  ~ModelContext();
  ModelContext(const ModelContext&) = delete;
  ModelContext& operator=(const ModelContext&) = delete;

  const std::shared_ptr<ModelContainer>& container() const { return container_; }

  /// The records of one type, pending inserts included and pending
  /// deletions left out, filtered and sorted (stably) as `descriptor` says.
  /// Without sort keys: saved records by row, then pending inserts in the
  /// order they were inserted. Throws StoreError when the table cannot be read.
  template <class Model>
  std::vector<std::shared_ptr<Model>> fetch(const FetchDescriptor<Model>& descriptor = {});
  /// The same for the records that pass `rows` (see RowFilter) as well. A
  /// table this context has not loaded, and holds no changes of, yields only
  /// the rows that pass, read whole and kept (the same object for the same
  /// row, as ever), so that they can be changed and saved like any record.
  /// Throws StoreError for a filter on anything but a date attribute.
  template <class Model>
  std::vector<std::shared_ptr<Model>> fetch(const RowFilter& rows, const FetchDescriptor<Model>& descriptor = {});

  /// Calls `visit(const Model&)` for every record `fetch()` would return,
  /// in no particular order, with only the named attributes certain to be
  /// read: a table this context has not loaded, and holds no changes of, is
  /// read column by column into one scratch record, so a large table can be
  /// summed up without an object per row. Throws StoreError like fetch, and
  /// for a name that is not an attribute of the type.
  template <class Model, class Visit>
  void forEach(std::initializer_list<std::string_view> attributeNames, Visit visit) {
    forEach<Model>(attributeNames, RowFilter{}, std::move(visit));
  }
  /// The same for the records that pass `filter` (see RowFilter), in the
  /// same order as without it; the rows that fail are not read. Throws
  /// StoreError for a filter on anything but a date attribute.
  template <class Model, class Visit>
  void forEach(std::initializer_list<std::string_view> attributeNames, const RowFilter& filter, Visit visit);

  /// Adds a new record to be saved; a record already inserted or saved is
  /// left alone, and inserting a record that waits for deletion keeps it.
  template <class Model>
  void insert(std::shared_ptr<Model> record);

  /// Deletes a saved record on the next save; a record that was only
  /// inserted is simply dropped.
  template <class Model>
  void deleteRecord(const std::shared_ptr<Model>& record);

  /// Deletes every record of the type on the next save, pending inserts too.
  template <class Model>
  void deleteAll();

  /// Journals every following save of this context as one action named
  /// `action` (see UndoJournal), so `ModelContainer::undoLastAction` can
  /// undo all of them at once. Saves before the call are not journaled.
  void setUndoAction(std::string action);

  /// Keeps `entries` in the store's deletion log with the next save, in its
  /// transaction (as DeletionLog::absorb: the later of two instants, and
  /// deletions before `forgetBefore` forgotten). Until then they are pending.
  void absorbDeletions(std::span<const DeletionLog::Entry> entries, Date forgetBefore);
  /// The deletions absorbDeletions keeps for the next save.
  const std::vector<DeletionLog::Entry>& pendingDeletions() const { return pendingDeletions_; }

  /// Whether anything was inserted, changed or deleted since the last save.
  bool hasChanges() const;
  /// The same for records of one type.
  template <class Model>
  bool hasChanges() {
    return table<Model>().hasChanges();
  }

  /// The store's count of saves that wrote records of the type (see
  /// ModelContainer::generation).
  template <class Model>
  std::int64_t generation() {
    return container_->generation(Model::entityName);
  }

  /// What a save observer is told: the type's generation before and after
  /// the save, the records of the type it inserted or changed (the inserted
  /// ones first, `inserted` of them), and those it deleted.
  template <class Model>
  struct SavedRecords {
    std::int64_t previousGeneration = 0;
    std::int64_t generation = 0;
    std::vector<const Model*> written;
    std::vector<const Model*> deleted;
    std::size_t inserted = 0;
  };

  /// Calls `observer` inside the transaction of every later save of this
  /// context that writes records of the type, once they are written; it
  /// replaces an earlier observer of the type under the same name. Metadata
  /// it sets through the container commits with the save or not at all, and
  /// an observer that throws fails the save.
  template <class Model>
  void setSaveObserver(std::string name, std::function<void(const SavedRecords<Model>&)> observer) {
    auto& observers = table<Model>().observers;
    const auto known = std::find_if(observers.begin(), observers.end(),
                                    [&](const auto& named) { return named.first == name; });
    if (known != observers.end()) {
      known->second = std::move(observer);
    } else {
      observers.emplace_back(std::move(name), std::move(observer));
    }
  }

  /// Writes every pending change in one transaction. Does nothing (not even
  /// touch the file) without changes. On failure the transaction is undone,
  /// every pending change is kept as it was, and StoreError(busy or
  /// saveFailed) is thrown.
  void save();

  /// Drops every pending change; changed records get their saved values
  /// back on the next fetch.
  void rollback();

 private:
  using Pending = PersistentModel::Pending;

  /// What the context knows of one record type; the typed part is RecordTable.
  class Entity {
   public:
    Entity(ModelContainer& container, ModelContainer::EntityStore& entityStore, const void* recordType)
        : owner(container), store(entityStore), type(recordType) {}
    virtual ~Entity() = default;
    Entity(const Entity&) = delete;
    Entity& operator=(const Entity&) = delete;

    virtual bool hasChanges() const = 0;
    /// Writes the pending work inside the open write transaction; whether it wrote anything.
    virtual bool write() = 0;
    /// After the transaction committed: inserted records get their row keys,
    /// every record is clean again.
    virtual void didCommit() = 0;
    virtual void discardPending() = 0;
    virtual bool isObserved() const = 0;
    /// Inside the transaction, after write(): tells the save observer.
    virtual void notifyObserver(std::int64_t previousGeneration, std::int64_t generation) = 0;

    /// Whether the table has to be read (again) before a fetch.
    bool isStale();

    ModelContainer& owner;
    ModelContainer::EntityStore& store;
    const void* type;
    bool loaded = false;
    std::int64_t loadedDataVersion = 0;
    std::uint64_t loadedCommitCount = 0;
  };

  template <class Model>
  class RecordTable;

  template <class Model>
  RecordTable<Model>& table();
  /// The member behind an attribute name; throws StoreError for an unknown name.
  template <class Model>
  static typename Attribute<Model>::Member member(std::string_view name);
  template <class Model>
  static bool passes(const Model& record, const RowFilter& filter);
  /// Throws StoreError unless every comparison names a date attribute.
  template <class Model>
  static void checkFilter(const RowFilter& filter);
  /// Stable sort by the descriptor's keys.
  template <class Model>
  static void sort(std::vector<std::shared_ptr<Model>>& records, const FetchDescriptor<Model>& descriptor);

  std::shared_ptr<ModelContainer> container_;
  std::vector<std::unique_ptr<Entity>> entities_;
  std::optional<std::string> undoAction_;
  std::string undoCommand_;
  std::vector<DeletionLog::Entry> pendingDeletions_;
  std::optional<Date> forgetDeletionsBefore_;
};

template <class Model>
class ModelContext::RecordTable final : public Entity {
 public:
  using Record = std::shared_ptr<Model>;
  using Entity::Entity;

  ~RecordTable() override {
    // Records may outlive the context: they no longer wait for anything.
    for (const Record& record : inserted) state(*record).pending_ = Pending::nothing;
    for (const Record& record : deleted) state(*record).pending_ = Pending::nothing;
  }

  static PersistentModel& state(PersistentModel& record) { return record; }
  static const PersistentModel& state(const PersistentModel& record) { return record; }

  void refresh() {
    if (isStale()) reload();
  }

  /// Reads the whole table. Rows already held keep their objects; both
  /// lists are in row-key order, so one merge pass matches them up.
  void reload() {
    const std::int64_t dataVersion = owner.dataVersion();
    const std::uint64_t commitCount = store.commitCount;
    SQLiteStatement& select = owner.statement(store, ModelContainer::Statement::selectAll);
    SQLiteStatement::Scope scope(select);
    std::vector<Record> merged;
    merged.reserve(rows.size());
    std::size_t old = 0;
    while (select.step()) {
      const std::int64_t key = select.columnInt64(0);
      while (old < rows.size() && state(*rows[old]).persistentIdentifier_ < key) ++old;  // gone from the table
      if (old < rows.size() && state(*rows[old]).persistentIdentifier_ == key) {
        const Record& record = rows[old++];
        const PersistentModel& known = state(*record);
        if (!known.hasChanges_ && known.pending_ == Pending::nothing) readAttributes(select, *record);
        merged.push_back(record);
      } else {
        auto record = std::make_shared<Model>(PersistentModel::ForLoading{});
        readAttributes(select, *record);
        state(*record).persistentIdentifier_ = key;
        merged.push_back(std::move(record));
      }
    }
    rows = std::move(merged);
    loaded = true;
    loadedDataVersion = dataVersion;
    loadedCommitCount = commitCount;
  }

  /// Reads the rows that pass `filter`, in row-key order, into `rows`:
  /// rows already held keep their objects and get the stored values. The
  /// table stays unloaded, so a later fetch of everything reads it all.
  /// Only for a table without changes.
  std::vector<Record> loadSome(const RowFilter& filter) {
    SQLiteStatement& select = owner.selectRows(store, filter.sql());
    SQLiteStatement::Scope scope(select);
    int parameter = 0;
    for (const Date value : filter.parameters()) select.bind(++parameter, value);
    std::vector<Record> found;
    while (select.step()) {
      const std::int64_t key = select.columnInt64(0);
      const auto held = std::lower_bound(rows.begin(), rows.end(), key, [](const Record& record, std::int64_t value) {
        return state(*record).persistentIdentifier_ < value;
      });
      if (held != rows.end() && state(**held).persistentIdentifier_ == key) {
        readAttributes(select, **held);
        found.push_back(*held);
      } else {
        auto record = std::make_shared<Model>(PersistentModel::ForLoading{});
        readAttributes(select, *record);
        state(*record).persistentIdentifier_ = key;
        rows.insert(held, record);
        found.push_back(std::move(record));
      }
    }
    return found;
  }

  bool hasChanges() const override {
    return !inserted.empty() || !deleted.empty() ||
           std::any_of(rows.begin(), rows.end(), [](const Record& record) { return state(*record).hasChanges_; });
  }

  bool write() override {
    bool wrote = false;
    newKeys.clear();
    newKeys.reserve(inserted.size());
    UndoJournal& journal = owner.journal_;
    const auto entity = static_cast<std::size_t>(&store - owner.entities_.data());
    for (const Record& record : inserted) {
      SQLiteStatement& insert = owner.statement(store, ModelContainer::Statement::insert);
      SQLiteStatement::Scope scope(insert);
      bindAttributes(insert, *record);
      insert.step();
      newKeys.push_back(owner.database_.lastInsertRowid());
      journal.record(entity, newKeys.back(), UndoJournal::Image::inserted);
      wrote = true;
    }
    const int keyIndex = static_cast<int>(Model::attributes().size()) + 1;
    for (const Record& record : rows) {
      const PersistentModel& known = state(*record);
      if (!known.hasChanges_ || known.pending_ != Pending::nothing) continue;
      journal.record(entity, known.persistentIdentifier_, UndoJournal::Image::beforeUpdate);
      SQLiteStatement& update = owner.statement(store, ModelContainer::Statement::update);
      SQLiteStatement::Scope scope(update);
      bindAttributes(update, *record);
      update.bind(keyIndex, known.persistentIdentifier_);
      update.step();
      journal.record(entity, known.persistentIdentifier_, UndoJournal::Image::afterUpdate);
      wrote = true;
    }
    for (const Record& record : deleted) {
      journal.record(entity, state(*record).persistentIdentifier_, UndoJournal::Image::beforeDelete);
      SQLiteStatement& remove = owner.statement(store, ModelContainer::Statement::remove);
      SQLiteStatement::Scope scope(remove);
      remove.bind(1, state(*record).persistentIdentifier_);
      remove.step();
      wrote = true;
    }
    return wrote;
  }

  void didCommit() override {
    if (!deleted.empty()) {
      for (const Record& record : deleted) {
        PersistentModel& gone = state(*record);
        gone.persistentIdentifier_ = 0;
        gone.pending_ = Pending::nothing;
        gone.hasChanges_ = false;
      }
      std::erase_if(rows, [](const Record& record) { return state(*record).persistentIdentifier_ == 0; });
      deleted.clear();
    }
    for (const Record& record : rows) state(*record).hasChanges_ = false;
    // Row keys only ever grow (AUTOINCREMENT), so appending keeps `rows` in key order.
    rows.reserve(rows.size() + inserted.size());
    for (std::size_t i = 0; i < inserted.size(); ++i) {
      PersistentModel& saved = state(*inserted[i]);
      saved.persistentIdentifier_ = newKeys[i];
      saved.pending_ = Pending::nothing;
      saved.hasChanges_ = false;
      rows.push_back(std::move(inserted[i]));
    }
    inserted.clear();
    newKeys.clear();
  }

  void discardPending() override {
    for (const Record& record : inserted) state(*record).pending_ = Pending::nothing;
    for (const Record& record : deleted) state(*record).pending_ = Pending::nothing;
    for (const Record& record : rows) state(*record).hasChanges_ = false;
    inserted.clear();
    deleted.clear();
    loaded = false;  // changed records get their saved values back
  }

  bool isObserved() const override { return !observers.empty(); }

  void notifyObserver(std::int64_t previousGeneration, std::int64_t generation) override {
    SavedRecords<Model> saved{previousGeneration, generation, {}, {}, inserted.size()};
    saved.written.reserve(inserted.size());
    for (const Record& record : inserted) saved.written.push_back(record.get());
    for (const Record& record : rows) {
      const PersistentModel& known = state(*record);
      if (known.hasChanges_ && known.pending_ == Pending::nothing) saved.written.push_back(record.get());
    }
    for (const Record& record : deleted) saved.deleted.push_back(record.get());
    for (const auto& [name, observer] : observers) observer(saved);
  }

  static void bindAttributes(SQLiteStatement& statement, const Model& record) {
    int index = 1;
    for (const auto& attribute : Model::attributes()) {
      std::visit([&](auto member) { statement.bind(index, record.*member); }, attribute.member);
      ++index;
    }
  }

  static void readAttributes(const SQLiteStatement& statement, Model& record) {
    int column = 1;  // column 0 is the row key
    for (const auto& attribute : Model::attributes()) {
      std::visit([&](auto member) { statement.read(column, record.*member); }, attribute.member);
      ++column;
    }
  }

  std::vector<Record> rows;      ///< saved records, by row key
  std::vector<Record> inserted;  ///< pending inserts, in insertion order
  std::vector<Record> deleted;   ///< saved records waiting for deletion
  std::vector<std::int64_t> newKeys;  ///< row keys of this save's inserts, handed out after the commit
  std::vector<std::pair<std::string, std::function<void(const SavedRecords<Model>&)>>> observers;
};

template <class Model>
ModelContext::RecordTable<Model>& ModelContext::table() {
  static constexpr char type = 0;  // one address per record type
  for (const auto& entity : entities_) {
    if (entity->type == &type) return static_cast<RecordTable<Model>&>(*entity);
  }
  ModelContainer::EntityStore& store = container_->entityStore(Model::entityName);
  const auto attributes = Model::attributes();
  const auto& described = store.description->attributes;
  bool matches = attributes.size() == described.size();
  for (std::size_t i = 0; matches && i < attributes.size(); ++i) {
    matches = attributes[i].name == described[i].name &&
              attributeType<Model>(attributes[i].member) == described[i].type;
  }
  if (!matches) {
    throw StoreError(StoreError::Code::other,
                     std::string(Model::entityName) + "'s attributes differ from the store's schema");
  }
  entities_.push_back(std::make_unique<RecordTable<Model>>(*container_, store, &type));
  return static_cast<RecordTable<Model>&>(*entities_.back());
}

template <class Model>
std::vector<std::shared_ptr<Model>> ModelContext::fetch(const FetchDescriptor<Model>& descriptor) {
  RecordTable<Model>& records = table<Model>();
  records.refresh();
  std::vector<std::shared_ptr<Model>> result;
  result.reserve(records.rows.size() + records.inserted.size());
  const auto& predicate = descriptor.predicate;
  for (const auto& record : records.rows) {
    if (RecordTable<Model>::state(*record).pending_ == Pending::nothing && (!predicate || predicate(*record))) {
      result.push_back(record);
    }
  }
  for (const auto& record : records.inserted) {
    if (!predicate || predicate(*record)) result.push_back(record);
  }
  sort(result, descriptor);
  return result;
}

template <class Model>
void ModelContext::sort(std::vector<std::shared_ptr<Model>>& records, const FetchDescriptor<Model>& descriptor) {
  if (descriptor.sortBy.empty()) return;
  std::stable_sort(records.begin(), records.end(), [&](const auto& a, const auto& b) {
    for (const auto& key : descriptor.sortBy) {
      if (const int order = key.compare(*a, *b); order != 0) return order < 0;
    }
    return false;
  });
}

template <class Model>
std::vector<std::shared_ptr<Model>> ModelContext::fetch(const RowFilter& rows, const FetchDescriptor<Model>& descriptor) {
  checkFilter<Model>(rows);
  RecordTable<Model>& records = table<Model>();
  if (rows.empty() || (records.loaded && !records.isStale()) || records.hasChanges()) {
    auto result = fetch<Model>(descriptor);
    std::erase_if(result, [&](const auto& record) { return !passes(*record, rows); });
    return result;
  }
  auto result = records.loadSome(rows);
  if (descriptor.predicate) std::erase_if(result, [&](const auto& record) { return !descriptor.predicate(*record); });
  sort(result, descriptor);
  return result;
}

template <class Model>
typename Attribute<Model>::Member ModelContext::member(std::string_view name) {
  const auto attributes = Model::attributes();
  const auto found =
      std::find_if(attributes.begin(), attributes.end(), [&](const auto& attribute) { return attribute.name == name; });
  if (found == attributes.end()) {
    throw StoreError(StoreError::Code::other, std::string(Model::entityName) + " has no attribute " + std::string(name));
  }
  return found->member;
}

template <class Model>
bool ModelContext::passes(const Model& record, const RowFilter& filter) {
  if (filter.empty()) return true;
  return std::any_of(filter.anyOf.begin(), filter.anyOf.end(), [&](const auto& clause) {
    return std::all_of(clause.begin(), clause.end(), [&](const RowFilter::Comparison& comparison) {
      const auto found = member<Model>(comparison.attribute);
      if (const auto* date = std::get_if<Date Model::*>(&found)) return comparison.holds(record.**date);
      return comparison.holds(record.*std::get<std::optional<Date> Model::*>(found));  // checked by forEach
    });
  });
}

template <class Model>
void ModelContext::checkFilter(const RowFilter& filter) {
  // Before SQL could take an unknown name for a text.
  for (const auto& clause : filter.anyOf) {
    for (const RowFilter::Comparison& comparison : clause) {
      const auto found = member<Model>(comparison.attribute);
      if (!std::holds_alternative<Date Model::*>(found) && !std::holds_alternative<std::optional<Date> Model::*>(found)) {
        throw StoreError(StoreError::Code::other, std::string(Model::entityName) + "." +
                                                      std::string(comparison.attribute) + " is not a date");
      }
    }
  }
}

template <class Model, class Visit>
void ModelContext::forEach(std::initializer_list<std::string_view> attributeNames, const RowFilter& filter,
                           Visit visit) {
  RecordTable<Model>& records = table<Model>();
  checkFilter<Model>(filter);
  if ((records.loaded && !records.isStale()) || records.hasChanges()) {
    for (const auto& record : fetch<Model>()) {
      if (passes(*record, filter)) visit(static_cast<const Model&>(*record));
    }
    return;
  }
  std::vector<typename Attribute<Model>::Member> members;
  members.reserve(attributeNames.size());
  for (const std::string_view name : attributeNames) members.push_back(member<Model>(name));
  SQLiteStatement& select = container_->selectColumns(records.store, attributeNames, filter.sql());
  SQLiteStatement::Scope scope(select);
  int parameter = 0;
  for (const Date value : filter.parameters()) select.bind(++parameter, value);
  Model scratch{PersistentModel::ForLoading{}};
  while (select.step()) {
    int column = 0;
    for (const auto& member : members) {
      std::visit([&](auto pointer) { select.read(column, scratch.*pointer); }, member);
      ++column;
    }
    visit(static_cast<const Model&>(scratch));
  }
}

template <class Model>
void ModelContext::insert(std::shared_ptr<Model> record) {
  if (!record) return;
  RecordTable<Model>& records = table<Model>();
  PersistentModel& known = RecordTable<Model>::state(*record);
  if (known.pending_ == Pending::deletion) {
    std::erase(records.deleted, record);
    known.pending_ = Pending::nothing;
  } else if (known.pending_ == Pending::nothing && known.persistentIdentifier_ == 0) {
    known.pending_ = Pending::insertion;
    records.inserted.push_back(std::move(record));
  }
}

template <class Model>
void ModelContext::deleteRecord(const std::shared_ptr<Model>& record) {
  if (!record) return;
  RecordTable<Model>& records = table<Model>();
  PersistentModel& known = RecordTable<Model>::state(*record);
  if (known.pending_ == Pending::insertion) {
    known.pending_ = Pending::nothing;
    std::erase(records.inserted, record);
  } else if (known.pending_ == Pending::nothing && known.persistentIdentifier_ != 0) {
    known.pending_ = Pending::deletion;
    records.deleted.push_back(record);
  }
}

template <class Model>
void ModelContext::deleteAll() {
  RecordTable<Model>& records = table<Model>();
  records.refresh();
  for (const auto& record : records.inserted) RecordTable<Model>::state(*record).pending_ = Pending::nothing;
  records.inserted.clear();
  for (const auto& record : records.rows) {
    PersistentModel& known = RecordTable<Model>::state(*record);
    if (known.pending_ != Pending::nothing) continue;
    known.pending_ = Pending::deletion;
    records.deleted.push_back(record);
  }
}

}  // namespace quillmont
