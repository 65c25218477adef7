#include "core/persistence/RuntimeEntitlements.h"

#include <algorithm>

#include "core/persistence/AppConstants.h"
#include "platform/foundation/Text.h"

namespace quillmont::RuntimeEntitlements {
namespace {

bool contains(std::span<const std::string> list, std::string_view value) {
  return std::find(list.begin(), list.end(), value) != list.end();
}

}  // namespace

bool hasProvisionedTeam(const ProcessEntitlements& entitlements) {
  const auto team = entitlements.string(teamIdentifierKey);
  return team && !Text::trimmingWhitespaceAndNewlines(*team).empty();
}

bool hasUsableAppGroup(const ProcessEntitlements& entitlements) {
  return hasProvisionedTeam(entitlements) &&
         contains(entitlements.stringList(applicationGroupsKey), AppConstants::appGroupIdentifier);
}

bool hasRequiredCloudKitEntitlements(const ProcessEntitlements& entitlements) {
  return includesRequiredCloudKitValues(entitlements.stringList(cloudContainersKey),
                                        entitlements.stringList(cloudServicesKey),
                                        entitlements.stringList(applicationGroupsKey), hasProvisionedTeam(entitlements));
}

bool hasUsableAppGroup() {
  const auto entitlements = ProcessEntitlements::current();
  return entitlements && hasUsableAppGroup(*entitlements);
}

bool hasRequiredCloudKitEntitlements() {
  const auto entitlements = ProcessEntitlements::current();
  return entitlements && hasRequiredCloudKitEntitlements(*entitlements);
}

bool includesRequiredCloudKitValues(std::span<const std::string> containerIdentifiers,
                                    std::span<const std::string> services,
                                    std::span<const std::string> applicationGroups, bool hasProvisionedTeam) {
  return hasProvisionedTeam && contains(containerIdentifiers, AppConstants::cloudKitContainerIdentifier) &&
         contains(services, "CloudKit") && contains(applicationGroups, AppConstants::appGroupIdentifier);
}

}  // namespace quillmont::RuntimeEntitlements
