#include "core/persistence/QuillmontPersistence.h"

#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/TimeBankSettings.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"
#include "core/persistence/AppConstants.h"

namespace quillmont::QuillmontPersistence {

const Schema& schema() {
  static const Schema shared = [] {
    Schema schema = Schema::of<WorkEntry, BalanceAdjustment, WorkSchedule, TimeBankSettings>("1.0.0");
    // The reads of one day or period: work that ends in or after it (or
    // runs), and bookings dated inside it.
    schema.indexes = {{"WorkEntry", {"endedAt", "startedAt"}}, {"BalanceAdjustment", {"date"}}};
    return schema;
  }();
  return shared;
}

ModelConfiguration makeConfiguration(bool inMemory, bool cloudSync, bool useAppGroup) {
  ModelConfiguration configuration{std::string(storeName), schema(), inMemory, true, std::nullopt, std::nullopt};
  if (!inMemory && useAppGroup) configuration.groupContainer = std::string(AppConstants::appGroupIdentifier);
  if (!inMemory && cloudSync) configuration.cloudKitDatabase = std::string(AppConstants::cloudKitContainerIdentifier);
  return configuration;
}

std::shared_ptr<ModelContainer> makeContainer(bool inMemory, bool cloudSync, bool useAppGroup) {
  return ModelContainer::open(makeConfiguration(inMemory, cloudSync, useAppGroup));
}

}  // namespace quillmont::QuillmontPersistence
