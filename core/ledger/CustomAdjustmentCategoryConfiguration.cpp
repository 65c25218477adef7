#include "core/ledger/CustomAdjustmentCategoryConfiguration.h"

#include <unordered_set>

#include "platform/foundation/JsonReader.h"
#include "platform/foundation/JsonWriter.h"
#include "platform/foundation/Text.h"

namespace quillmont::CustomAdjustmentCategoryConfiguration {
namespace {

// Keeps the first category of each lower-cased title, at most maximumCount.
template <class Categories, class Append>
void forEachDistinct(const Categories& candidates, Append append) {
  std::unordered_set<std::string> seen;
  for (const auto& candidate : candidates) {
    if (seen.size() == CustomAdjustmentCategory::maximumCount) break;
    if (seen.insert(Text::lowercased(candidate.title())).second) append(candidate);
  }
}

}  // namespace

std::string rawValue(const std::vector<CustomAdjustmentCategory>& categories) {
  std::string result;
  JsonWriter writer(result, JsonWriter::Options{});
  writer.beginArray();
  forEachDistinct(categories, [&](const CustomAdjustmentCategory& category) { writer.string(category.title()); });
  writer.endArray();
  return result;
}

std::vector<CustomAdjustmentCategory> categories(std::string_view rawValue) {
  std::vector<CustomAdjustmentCategory> decoded;
  if (const auto titles = JsonReader::stringArray(rawValue)) {
    for (const std::string& title : *titles) {
      if (auto category = CustomAdjustmentCategory::fromTitle(title)) decoded.push_back(std::move(*category));
    }
  }
  std::vector<CustomAdjustmentCategory> result;
  forEachDistinct(decoded, [&](const CustomAdjustmentCategory& category) { result.push_back(category); });
  return result;
}

}  // namespace quillmont::CustomAdjustmentCategoryConfiguration
