// RecordLookup: finds the records a command names by identifier. The user
// may type the whole identifier or any prefix of its text (either letter
// case, hyphens optional), as long as it names one identifier; several
// records may share an identifier (copies from other devices), and all of
// them are returned.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/CommandFailure.h"
#include "cli/UsageError.h"
#include "platform/foundation/UUID.h"

namespace quillmont::RecordLookup {

/// The identifier text without hyphens, upper-case; nothing when `text` is
/// empty or holds anything but hexadecimal digits and hyphens.
std::optional<std::string> normalizedPrefix(std::string_view text);
/// Whether the identifier's text starts with the normalised prefix.
bool matches(const UUID& id, std::string_view normalizedPrefix);

/// Every record whose identifier the prefix names. Throws UsageError for a
/// prefix that cannot be an identifier and CommandFailure when no record or
/// more than one identifier matches; `noun` names the records ("booking").
template <class Model>
std::vector<std::shared_ptr<Model>> find(const std::vector<std::shared_ptr<Model>>& records, std::string_view prefix,
                                         std::string_view noun) {
  const auto normalized = normalizedPrefix(prefix);
  if (!normalized) throw UsageError("'" + std::string(prefix) + "' is not an identifier");
  std::vector<std::shared_ptr<Model>> found;
  for (const auto& record : records) {
    if (!matches(record->id(), *normalized)) continue;
    if (!found.empty() && found.front()->id() != record->id()) {
      throw CommandFailure("'" + std::string(prefix) + "' names more than one " + std::string(noun) +
                           "; type more of the identifier");
    }
    found.push_back(record);
  }
  if (found.empty()) throw CommandFailure("no " + std::string(noun) + " has the identifier " + std::string(prefix));
  return found;
}

}  // namespace quillmont::RecordLookup
