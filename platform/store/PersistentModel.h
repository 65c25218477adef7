// PersistentModel: the base of every record class the store keeps. It holds
// the store's own identity of the record (not the record's `id` attribute,
// which may repeat) and whether the record has changes its context has not
// saved yet. Record setters call didChange().
//
// Records are owned through std::shared_ptr; a context hands out the same
// object for the same stored row, so pointer equality is record identity.
// A record belongs to the context that fetched or inserted it; that context
// also notes here whether the record waits to be inserted or deleted.
#pragma once

#include <cstdint>
#include <utility>

namespace quillmont {

class ModelContext;

class PersistentModel {
 public:
  /// The store's row key; 0 until the record has been saved once.
  using PersistentIdentifier = std::int64_t;

  /// Tag for constructors that leave attributes for the store to fill
  /// (no random identifier, no clock read).
  struct ForLoading {};

  PersistentIdentifier persistentIdentifier() const { return persistentIdentifier_; }
  bool hasChanges() const { return hasChanges_; }

 protected:
  PersistentModel() = default;
  PersistentModel(const PersistentModel&) = delete;
  PersistentModel& operator=(const PersistentModel&) = delete;
  ~PersistentModel() = default;

  void didChange() { hasChanges_ = true; }
  /// Stores `value` in `field`, marking the record changed only when the value differs.
  template <class Field, class Value>
  void assign(Field& field, Value&& value) {
    if (field == value) return;
    field = std::forward<Value>(value);
    didChange();
  }

 private:
  friend class ModelContext;
  enum class Pending : std::uint8_t { nothing, insertion, deletion };

  PersistentIdentifier persistentIdentifier_ = 0;
  bool hasChanges_ = false;
  Pending pending_ = Pending::nothing;
};

}  // namespace quillmont
