#include "desktop/application/PreferenceChanges.h"

namespace quillmont {

PreferenceChanges& PreferenceChanges::instance() {
  static PreferenceChanges changes;
  return changes;
}

void PreferenceChanges::notify() { emit instance().changed(); }

}  // namespace quillmont
