// AdjustTimeBankIntent: the action behind the widget's −60 and +60 buttons.
// It books a signed number of minutes as a "manual" booking into the store
// the widget shares with the application (its own store when the process
// may not use the application group), without opening the application; then
// it rebuilds and saves the snapshot and asks every widget to reload.
//
// An amount of 0 or beyond 24 hours either way is refused before anything
// is opened; a bank that is not set up books nothing but still refreshes
// the snapshot. perform() runs on the main thread; the store's errors pass
// through (what was saved before them stays saved).
#pragma once

#include <cstdint>

#include "platform/intents/AppIntent.h"

namespace quillmont {

class AdjustTimeBankIntent final : public AppIntent {
 public:
  enum class AdjustmentOutcome { recorded, invalidAmount, needsSetup };

  static constexpr std::int64_t maximumMinutes = 1440;

  /// 30 minutes.
  AdjustTimeBankIntent() = default;
  explicit AdjustTimeBankIntent(std::int64_t amount) : minutes(amount) {}

  std::int64_t minutes = 30;

  std::string title() const override { return "Adjust time bank"; }
  std::vector<IntentParameterMetadata> parameters() const override {
    return {{"Minutes", IntentParameterMetadata::Control::stepper}};
  }
  struct Adjustment {
    AdjustmentOutcome outcome;
    std::string dialog;
  };

  /// "Adjust time bank by 30 minutes".
  std::string parameterSummary() const override;
  /// The dialog of adjust().
  IntentResult perform() const override;
  /// Does the work and says how it ended (hosts that tell a refusal apart
  /// from a booking use this).
  Adjustment adjust() const;

  /// The dialog of each outcome for an amount of `minutes`.
  static std::string dialog(AdjustmentOutcome outcome, std::int64_t minutes);
};

}  // namespace quillmont
