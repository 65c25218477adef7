#include "cli/testing/StoreProbe.h"

#include "core/persistence/QuillmontPersistence.h"
#include "core/persistence/RuntimeEntitlements.h"

namespace quillmont::testing {

StoreProbe::StoreProbe(const CommandRunner& runner) {
  runner.shareStoreWithThisProcess();
  context_ = std::make_unique<ModelContext>(
      QuillmontPersistence::makeContainer(false, false, RuntimeEntitlements::hasUsableAppGroup()));
}

Calendar StoreProbe::calendar() {
  return *Calendar::make(CommandRunner::defaultTimeZone, CommandRunner::defaultLocale);
}

}  // namespace quillmont::testing
