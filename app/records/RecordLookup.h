// RecordLookup: finds the records a command names by identifier. The user
// may type the whole identifier or any prefix of its text (either letter
// case, hyphens optional), as long as it names one identifier; several
// records may share an identifier (copies from other devices), and all of
// them are returned. Where a command says how its records are ordered from
// the newest, "@1" (or "last") names the newest, "@2" the one before, and so on.
#pragma once

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/Refusal.h"
#include "app/InvalidInput.h"
#include "platform/foundation/Date.h"
#include "platform/foundation/UUID.h"

namespace quillmont::RecordLookup {

/// The identifier text without hyphens, upper-case; nothing when `text` is
/// empty or holds anything but hexadecimal digits and hyphens.
std::optional<std::string> normalizedPrefix(std::string_view text);
/// Whether the identifier's text starts with the normalised prefix.
bool matches(const UUID& id, std::string_view normalizedPrefix);

/// Every record whose identifier the prefix names. Throws InvalidInput for a
/// prefix that cannot be an identifier and Refusal when no record or
/// more than one identifier matches; `noun` names the records ("booking").
template <class Model>
std::vector<std::shared_ptr<Model>> find(const std::vector<std::shared_ptr<Model>>& records, std::string_view prefix,
                                         std::string_view noun) {
  const auto normalized = normalizedPrefix(prefix);
  if (!normalized) throw InvalidInput("", "'" + std::string(prefix) + "' is not an identifier");
  std::vector<std::shared_ptr<Model>> found;
  for (const auto& record : records) {
    if (!matches(record->id(), *normalized)) continue;
    if (!found.empty() && found.front()->id() != record->id()) {
      throw Refusal("'" + std::string(prefix) + "' names more than one " + std::string(noun) +
                           "; type more of the identifier");
    }
    found.push_back(record);
  }
  if (found.empty()) throw Refusal("no " + std::string(noun) + " has the identifier " + std::string(prefix));
  return found;
}

/// The place that `text` names among the newest records: 1 for "@1" and
/// "last", 2 for "@2", ...; nothing for text that is no such name. Throws
/// InvalidInput for "@" followed by anything but a number from 1 on.
std::optional<std::size_t> recentPlace(std::string_view text);

/// An instant as a key of the newest-first order: an instant that is not a
/// number (a damaged stored value) counts as older than every other.
inline double recency(Date date) {
  const double seconds = date.timeIntervalSinceReferenceDate;
  return seconds == seconds ? seconds : -HUGE_VAL;
}

/// find(), where "@N" and "last" also name a record by its place among the
/// newest: `newer(a, b)` tells whether record `a` counts as newer than `b`.
/// Copies of one identifier hold one place, the place of the newest copy.
/// Throws Refusal when there are fewer records than the place.
template <class Model, class Newer>
std::vector<std::shared_ptr<Model>> find(const std::vector<std::shared_ptr<Model>>& records, std::string_view text,
                                         std::string_view noun, Newer newer) {
  const auto place = recentPlace(text);
  if (!place) return find(records, text, noun);
  std::vector<std::shared_ptr<Model>> newestFirst = records;
  std::stable_sort(newestFirst.begin(), newestFirst.end(),
                   [&](const auto& a, const auto& b) { return newer(*a, *b); });
  std::vector<UUID> seen;
  for (const auto& record : newestFirst) {
    if (std::find(seen.begin(), seen.end(), record->id()) != seen.end()) continue;
    seen.push_back(record->id());
    if (seen.size() < *place) continue;
    std::vector<std::shared_ptr<Model>> found;
    for (const auto& copy : records) {
      if (copy->id() == record->id()) found.push_back(copy);
    }
    return found;
  }
  throw Refusal("there is no " + std::string(noun) + " " + std::string(text) + ": " +
                       (seen.empty() ? "there are none" : "the oldest is @" + std::to_string(seen.size())));
}

}  // namespace quillmont::RecordLookup
