#include "core/widgetstate/WidgetSnapshot.h"

#include <vector>

#include "core/ledger/QuickActionConfiguration.h"
#include "platform/foundation/JsonReader.h"
#include "platform/foundation/JsonWriter.h"

namespace quillmont {
namespace {

constexpr std::array<std::int64_t, 4> defaultQuickActions{15, 30, 60, 120};

}  // namespace

WidgetSnapshot::WidgetSnapshot(double balance, double todayWorked, double todayExpected, std::optional<Date> running,
                               std::span<const std::int64_t> quickActions, Date updated, bool configured)
    : balanceSeconds(balance),
      todayWorkedSeconds(todayWorked),
      todayExpectedSeconds(todayExpected),
      runningSince(running),
      quickActionMinutes(QuickActionConfiguration::normalized(quickActions)),
      updatedAt(updated),
      isConfigured(configured) {}

const WidgetSnapshot& WidgetSnapshot::placeholder() {
  static const WidgetSnapshot snapshot(16200, 5400, 1800, std::nullopt, defaultQuickActions, Date::now(), true);
  return snapshot;
}

const WidgetSnapshot& WidgetSnapshot::empty() {
  static const WidgetSnapshot snapshot(0, 0, 0, std::nullopt, defaultQuickActions, Date::now(), false);
  return snapshot;
}

WidgetSnapshot WidgetSnapshot::displayed(Date at, const Calendar& calendar) const {
  WidgetSnapshot copy = *this;
  if (!calendar.isDate(updatedAt, at)) {
    copy.todayWorkedSeconds = 0;
    copy.todayExpectedSeconds = 0;
  }
  return copy;
}

std::string WidgetSnapshot::encodedJSON() const {
  std::string text;
  JsonWriter writer(text);
  writer.beginObject();
  writer.key("balanceSeconds");
  writer.number(balanceSeconds);
  writer.key("todayWorkedSeconds");
  writer.number(todayWorkedSeconds);
  writer.key("todayExpectedSeconds");
  writer.number(todayExpectedSeconds);
  if (runningSince) {
    writer.key("runningSince");
    writer.number(runningSince->timeIntervalSinceReferenceDate);
  }
  writer.key("quickActionMinutes");
  writer.beginArray();
  for (const std::int64_t minutes : quickActionMinutes) writer.integer(minutes);
  writer.endArray();
  writer.key("updatedAt");
  writer.number(updatedAt.timeIntervalSinceReferenceDate);
  writer.key("isConfigured");
  writer.boolean(isConfigured);
  writer.endObject();
  return text;
}

WidgetSnapshot WidgetSnapshot::decoded(std::string_view json) {
  using JsonReader::optionalKey;
  using JsonReader::requiredKey;
  using value = JsonReader::Value;
  static constexpr JsonReader::Key keys[] = {
      requiredKey("balanceSeconds"), requiredKey("todayWorkedSeconds"), requiredKey("todayExpectedSeconds"),
      optionalKey("runningSince"),   optionalKey("quickActionMinutes"), requiredKey("updatedAt"),
      optionalKey("isConfigured")};
  return JsonReader::parse(json, [](value& root) {
    double balance = 0, worked = 0, expected = 0;
    std::optional<Date> running;
    std::vector<std::int64_t> quickActions(defaultQuickActions.begin(), defaultQuickActions.end());
    Date updated;
    bool configured = true;
    const JsonReader::Path top;
    JsonReader::readObject(root, top, keys, [&](std::size_t key, value& field, const JsonReader::Path& at) {
      switch (key) {
        case 0: balance = JsonReader::number(field, at); break;
        case 1: worked = JsonReader::number(field, at); break;
        case 2: expected = JsonReader::number(field, at); break;
        case 3:
          running = JsonReader::isNull(field) ? std::nullopt : std::optional(Date(JsonReader::number(field, at)));
          break;
        case 4:
          quickActions.assign(defaultQuickActions.begin(), defaultQuickActions.end());
          if (!JsonReader::isNull(field)) {
            quickActions.clear();
            JsonReader::forEachElement(field, at, [&](value& element, const JsonReader::Path& elementAt) {
              quickActions.push_back(JsonReader::int64(element, elementAt));
            });
          }
          break;
        case 5: updated = Date(JsonReader::number(field, at)); break;
        default: configured = JsonReader::isNull(field) || JsonReader::boolean(field, at); break;
      }
    });
    return WidgetSnapshot(balance, worked, expected, running, quickActions, updated, configured);
  });
}

}  // namespace quillmont
