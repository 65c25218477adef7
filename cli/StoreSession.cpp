#include "cli/StoreSession.h"

#include "core/engine/DataStoreMaintenance.h"
#include "core/persistence/QuillmontPersistence.h"
#include "core/persistence/RuntimeEntitlements.h"

namespace quillmont {

StoreSession::StoreSession()
    : calendar_(Calendar::autoupdatingCurrent()),
      now_(Date::now()),
      container_(QuillmontPersistence::makeContainer(false, false, RuntimeEntitlements::hasUsableAppGroup())),
      context_(std::make_unique<ModelContext>(container_)),
      settings_(DataStoreMaintenance::reconcile(*context_, calendar_, now_, true)) {}

void StoreSession::saveSettings() {
  settings_->setModifiedAt(now_);
  context_->save();
}

}  // namespace quillmont
