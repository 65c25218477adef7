#include "widget/AdjustTimeBankIntent.h"

#include <string>

#include "core/engine/DataStoreMaintenance.h"
#include "core/ledger/BalanceAdjustmentKind.h"
#include "core/ledger/TimeBankTransactionController.h"
#include "core/persistence/QuillmontPersistence.h"
#include "core/persistence/RuntimeEntitlements.h"
#include "core/widgetstate/WidgetSnapshotBuilder.h"
#include "core/widgetstate/WidgetSnapshotStore.h"
#include "platform/foundation/Calendar.h"
#include "platform/store/ModelContext.h"
#include "platform/widgets/WidgetCenter.h"

namespace quillmont {

std::string AdjustTimeBankIntent::parameterSummary() const {
  return "Adjust time bank by " + std::to_string(minutes) + " minutes";
}

std::string AdjustTimeBankIntent::dialog(AdjustmentOutcome outcome, std::int64_t minutes) {
  switch (outcome) {
    case AdjustmentOutcome::recorded:
      return minutes < 0 ? "Time subtracted from your bank." : "Time added to your bank.";
    case AdjustmentOutcome::invalidAmount:
      return "Choose a nonzero amount up to 24 hours.";
    case AdjustmentOutcome::needsSetup:
      break;
  }
  return "Open Quillmont and finish setup before changing your time bank.";
}

IntentResult AdjustTimeBankIntent::perform() const { return {adjust().dialog}; }

AdjustTimeBankIntent::Adjustment AdjustTimeBankIntent::adjust() const {
  const std::int64_t amount = minutes;
  if (amount == 0 || amount < -maximumMinutes || amount > maximumMinutes) {
    return {AdjustmentOutcome::invalidAmount, dialog(AdjustmentOutcome::invalidAmount, amount)};
  }
  ModelContext context(QuillmontPersistence::makeContainer(false, false, RuntimeEntitlements::hasUsableAppGroup()));
  const Calendar calendar = Calendar::autoupdatingCurrent();
  const Date now = Date::now();
  const auto settings = DataStoreMaintenance::reconcile(context, calendar, now, true);

  AdjustmentOutcome outcome = AdjustmentOutcome::needsSetup;
  if (settings->hasCompletedOnboarding()) {
    const BalanceAdjustmentKind manual = BalanceAdjustmentKind::manual;
    TimeBankTransactionController::record(amount, Date::now(), "", manual.rawValue(), context);
    outcome = AdjustmentOutcome::recorded;
  }
  const WidgetSnapshot snapshot = WidgetSnapshotBuilder::make(context, Date::now());
  WidgetSnapshotStore::save(snapshot);
  WidgetCenter::shared().reloadAllTimelines();
  return {outcome, dialog(outcome, amount)};
}

}  // namespace quillmont
