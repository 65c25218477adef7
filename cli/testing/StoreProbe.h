// StoreProbe: opens, from inside a test, the store a CommandRunner's program
// uses (same data home, same entitlements), so a test can compute with the
// core what the program should have printed.
#pragma once

#include <memory>

#include "cli/testing/CommandRunner.h"
#include "platform/foundation/Calendar.h"
#include "platform/store/ModelContext.h"

namespace quillmont::testing {

class StoreProbe {
 public:
  explicit StoreProbe(const CommandRunner& runner);
  ModelContext& context() { return *context_; }
  /// The calendar the program uses under the runner's default zone and locale.
  static Calendar calendar();

 private:
  std::unique_ptr<ModelContext> context_;
};

}  // namespace quillmont::testing
