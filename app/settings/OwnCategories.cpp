#include "app/settings/OwnCategories.h"

#include <optional>

#include "app/InvalidInput.h"
#include "app/Refusal.h"
#include "app/session/StoreSession.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/CustomAdjustmentCategoryConfiguration.h"
#include "platform/foundation/Text.h"

namespace quillmont::OwnCategories {
namespace {

CustomAdjustmentCategory titled(const std::string& title) {
  auto category = CustomAdjustmentCategory::fromTitle(title);
  if (!category) throw InvalidInput("", "a category needs a title that is not blank");
  return *category;
}

// The position of the category whose title equals `title` ignoring case.
std::size_t existing(const std::vector<CustomAdjustmentCategory>& categories, const std::string& title) {
  if (const auto wanted = CustomAdjustmentCategory::fromTitle(title)) {
    const std::string key = Text::lowercased(wanted->title());
    for (std::size_t i = 0; i < categories.size(); ++i) {
      if (Text::lowercased(categories[i].title()) == key) return i;
    }
  }
  throw Refusal("There is no category called \"" + title + "\".");
}

// Stores the list when the settings keep every category of it (at most
// maximumCount, titles unique ignoring case); refuses otherwise.
void store(StoreSession& session, const std::vector<CustomAdjustmentCategory>& categories,
           const CustomAdjustmentCategory& added) {
  const std::string rawValue = CustomAdjustmentCategoryConfiguration::rawValue(categories);
  if (CustomAdjustmentCategoryConfiguration::categories(rawValue).size() != categories.size()) {
    if (categories.size() > CustomAdjustmentCategory::maximumCount) {
      throw Refusal("You can keep at most " + std::to_string(CustomAdjustmentCategory::maximumCount) +
                    " categories of your own.");
    }
    throw Refusal("A category called \"" + added.title() + "\" exists already.");
  }
  session.settings().setCustomAdjustmentCategoriesRawValue(rawValue);
}

}  // namespace

std::vector<CustomAdjustmentCategory> list(const TimeBankSettings& settings) {
  return CustomAdjustmentCategoryConfiguration::categories(settings.customAdjustmentCategoriesRawValue());
}

CustomAdjustmentCategory add(StoreSession& session, const std::string& title) {
  const CustomAdjustmentCategory category = titled(title);
  session.journal("category add " + title);
  auto categories = list(session.settings());
  categories.push_back(category);
  store(session, categories, category);
  session.saveSettings();
  return category;
}

Renamed rename(StoreSession& session, const std::string& from, const std::string& to) {
  const CustomAdjustmentCategory renamed = titled(to);
  session.journal("category rename " + from + " to " + to);
  auto categories = list(session.settings());
  const std::size_t index = existing(categories, from);
  Renamed result{categories[index], renamed, 0};
  categories[index] = renamed;
  store(session, categories, renamed);
  // Bookings follow their category to its new title.
  if (result.previous.rawValue() != renamed.rawValue()) {
    for (const auto& booking : session.context().fetch<BalanceAdjustment>()) {
      if (booking->kindRawValue() != result.previous.rawValue()) continue;
      booking->setKindRawValue(renamed.rawValue());
      booking->setModifiedAt(session.now());
      ++result.bookingsMoved;
    }
  }
  session.saveSettings();
  return result;
}

CustomAdjustmentCategory remove(StoreSession& session, const std::string& title) {
  session.journal("category remove " + title);
  auto categories = list(session.settings());
  const std::size_t index = existing(categories, title);
  const CustomAdjustmentCategory removed = categories[index];
  categories.erase(categories.begin() + static_cast<std::ptrdiff_t>(index));
  session.settings().setCustomAdjustmentCategoriesRawValue(CustomAdjustmentCategoryConfiguration::rawValue(categories));
  session.saveSettings();
  return removed;
}

}  // namespace quillmont::OwnCategories
