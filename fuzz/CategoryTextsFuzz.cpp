// Any text as the stored category texts: decoders never fail, and what they
// decode reaches a form that its own encoding keeps.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "core/ledger/AdjustmentCategoryValidation.h"
#include "core/ledger/AdjustmentKindConfiguration.h"
#include "core/ledger/CustomAdjustmentCategory.h"
#include "core/ledger/CustomAdjustmentCategoryConfiguration.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quillmont;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  // One round brings any text to its canonical form; further rounds keep it.
  const auto kinds = AdjustmentKindConfiguration::kinds(
      AdjustmentKindConfiguration::rawValue(AdjustmentKindConfiguration::kinds(text)));
  if (AdjustmentKindConfiguration::kinds(AdjustmentKindConfiguration::rawValue(kinds)) != kinds) std::abort();
  // Titles are trimmed before they are cut to length, so a cut title may end
  // in a space that the next reading trims: the list is read, not compared.
  const auto categories = CustomAdjustmentCategoryConfiguration::categories(text);
  (void)CustomAdjustmentCategoryConfiguration::categories(CustomAdjustmentCategoryConfiguration::rawValue(categories));
  (void)CustomAdjustmentCategory::fromRawValue(text);
  const std::string normalized = AdjustmentCategoryValidation::normalizedRawValue(text);
  if (AdjustmentCategoryValidation::normalizedRawValue(normalized) != normalized) std::abort();
  return 0;
}
