#include "core/persistence/AppConstants.h"

#include <cstdlib>

namespace quillmont::AppConstants {

const UUID& manualLedgerMigrationAdjustmentID() {
  static const UUID id = [] {
    const auto parsed = UUID::parse("C0DE5EED-0B4A-4C2A-9D6E-000000000001");
    if (!parsed) std::abort();  // the literal is well formed
    return *parsed;
  }();
  return id;
}

}  // namespace quillmont::AppConstants
