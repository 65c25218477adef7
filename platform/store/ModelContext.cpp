#include "platform/store/ModelContext.h"

#include <utility>

namespace quillmont {

using Code = StoreError::Code;

ModelContext::ModelContext(std::shared_ptr<ModelContainer> container) : container_(std::move(container)) {
  if (!container_) throw StoreError(Code::other, "a context needs a container");
}

ModelContext::~ModelContext() = default;

bool ModelContext::Entity::isStale() {
  if (!loaded || store.commitCount != loadedCommitCount) return true;
  return owner.dataVersion() != loadedDataVersion;
}

void ModelContext::absorbDeletions(std::span<const DeletionLog::Entry> entries, Date forgetBefore) {
  pendingDeletions_.insert(pendingDeletions_.end(), entries.begin(), entries.end());
  forgetDeletionsBefore_ = forgetDeletionsBefore_ ? std::max(*forgetDeletionsBefore_, forgetBefore) : forgetBefore;
}

bool ModelContext::hasChanges() const {
  if (forgetDeletionsBefore_) return true;
  return std::any_of(entities_.begin(), entities_.end(), [](const auto& entity) { return entity->hasChanges(); });
}

void ModelContext::setUndoAction(std::string action) {
  undoAction_ = std::move(action);
  undoCommand_ = UUID::random().uuidString();
}

void ModelContext::save() {
  if (!hasChanges()) return;
  if (!container_->configuration().allowsSave) {
    throw StoreError(Code::saveFailed, "the store's configuration does not allow saving");
  }
  std::vector<Entity*> written;
  try {
    // BEGIN IMMEDIATE takes the write lock up front (waiting for other
    // writers up to the busy timeout), so the transaction never has to
    // upgrade a read lock, which is where two writers could deadlock.
    container_->beginWriting();
    if (undoAction_) container_->journal_.begin(*undoAction_, undoCommand_, Date::now());
    for (const auto& entity : entities_) {
      if (entity->write()) written.push_back(entity.get());
    }
    for (Entity* entity : written) {
      const std::string& name = entity->store.description->name;
      const std::int64_t previous = entity->isObserved() ? container_->generation(name) : 0;
      container_->raiseGeneration(name);
      if (entity->isObserved()) entity->notifyObserver(previous, previous + 1);
    }
    container_->journal_.end();
    if (forgetDeletionsBefore_) container_->deletions_.absorb(pendingDeletions_, *forgetDeletionsBefore_);
    container_->commitWriting();
  } catch (const StoreError& error) {
    container_->journal_.end();
    // Nothing in memory has changed yet: row keys and clean flags are only
    // handed out below, after the commit.
    container_->abandonWriting();
    const bool keepsCode = error.code() == Code::busy || error.code() == Code::readOnly;
    throw StoreError(keepsCode ? error.code() : Code::saveFailed, error.what());
  } catch (...) {
    container_->journal_.end();
    container_->abandonWriting();
    throw;
  }
  for (Entity* entity : written) {
    // Our own commit: what this context holds is what the table holds now,
    // unless another context had saved in between (then reload as usual).
    const std::uint64_t before = entity->store.commitCount++;
    if (entity->loadedCommitCount == before) entity->loadedCommitCount = entity->store.commitCount;
    entity->didCommit();
  }
  pendingDeletions_.clear();
  forgetDeletionsBefore_.reset();
}

void ModelContext::rollback() {
  for (const auto& entity : entities_) entity->discardPending();
  pendingDeletions_.clear();
  forgetDeletionsBefore_.reset();
}

}  // namespace quillmont
