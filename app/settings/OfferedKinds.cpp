#include "app/settings/OfferedKinds.h"

#include <string>

#include "app/InvalidInput.h"
#include "app/session/StoreSession.h"
#include "platform/foundation/Text.h"

namespace quillmont::OfferedKinds {

BalanceAdjustmentKind kind(std::string_view typed) {
  const std::string wanted = Text::lowercased(typed);
  std::string choices;
  for (const BalanceAdjustmentKind kind : AdjustmentKindConfiguration::configurableKinds) {
    if (Text::lowercased(kind.rawValue()) == wanted || Text::lowercased(kind.title()) == wanted) return kind;
    choices += choices.empty() ? "" : ", ";
    choices += kind.rawValue();
  }
  throw InvalidInput("", "'" + std::string(typed) + "' is not a kind that can be offered (choose from " + choices + ")");
}

AdjustmentKindConfiguration::KindSet offer(StoreSession& session, const AdjustmentKindConfiguration::KindSet& kinds) {
  session.journal("kinds");
  session.settings().setVisibleAdjustmentKindsRawValue(AdjustmentKindConfiguration::rawValue(kinds));
  session.saveSettings();
  return offered(session);
}

AdjustmentKindConfiguration::KindSet offered(StoreSession& session) {
  return AdjustmentKindConfiguration::kinds(session.settings().visibleAdjustmentKindsRawValue());
}

}  // namespace quillmont::OfferedKinds
