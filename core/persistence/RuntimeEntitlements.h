// RuntimeEntitlements: may this process use the shared application group
// (so the command line and the widget share one store), and the cloud
// container? Answers are computed on every call and never throw: no
// entitlements, missing keys or values of the wrong type answer false.
#pragma once

#include <span>
#include <string>

#include "platform/foundation/ProcessEntitlements.h"

namespace quillmont::RuntimeEntitlements {

inline constexpr std::string_view teamIdentifierKey = "com.apple.developer.team-identifier";
inline constexpr std::string_view applicationGroupsKey = "com.apple.security.application-groups";
inline constexpr std::string_view cloudContainersKey = "com.apple.developer.icloud-container-identifiers";
inline constexpr std::string_view cloudServicesKey = "com.apple.developer.icloud-services";

bool hasUsableAppGroup();
bool hasRequiredCloudKitEntitlements();
bool hasUsableAppGroup(const ProcessEntitlements& entitlements);
bool hasRequiredCloudKitEntitlements(const ProcessEntitlements& entitlements);
/// A team identifier that is text and not blank after trimming.
bool hasProvisionedTeam(const ProcessEntitlements& entitlements);

/// True when the team is provisioned and each list holds the value it needs
/// (exact, case-sensitive), tested in that order.
bool includesRequiredCloudKitValues(std::span<const std::string> containerIdentifiers,
                                    std::span<const std::string> services,
                                    std::span<const std::string> applicationGroups, bool hasProvisionedTeam);

}  // namespace quillmont::RuntimeEntitlements
