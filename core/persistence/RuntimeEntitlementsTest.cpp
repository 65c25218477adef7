#include "core/persistence/RuntimeEntitlements.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <unistd.h>

namespace quillmont {
namespace {

using namespace RuntimeEntitlements;

ProcessEntitlements entitlements(const char* json) { return *ProcessEntitlements::fromJSON(json); }

TEST(RuntimeEntitlements, AppGroupNeedsATeamAndTheGroup) {
  EXPECT_TRUE(hasUsableAppGroup(entitlements(R"({"com.apple.developer.team-identifier":"QM1",
      "com.apple.security.application-groups":["other","group.io.quillmont.ledger"]})")));
  EXPECT_FALSE(hasUsableAppGroup(entitlements(R"({"com.apple.developer.team-identifier":" \n\t",
      "com.apple.security.application-groups":["group.io.quillmont.ledger"]})")));
  EXPECT_FALSE(hasUsableAppGroup(entitlements(R"({"com.apple.developer.team-identifier":"QM1",
      "com.apple.security.application-groups":"group.io.quillmont.ledger"})")));
  EXPECT_FALSE(hasUsableAppGroup(entitlements(R"({"com.apple.developer.team-identifier":7,
      "com.apple.security.application-groups":["group.io.quillmont.ledger"]})")));
  EXPECT_FALSE(hasUsableAppGroup(entitlements(R"({"com.apple.developer.team-identifier":"QM1",
      "com.apple.security.application-groups":["GROUP.io.quillmont.ledger", 3]})")));
  EXPECT_FALSE(ProcessEntitlements::fromJSON("[]"));
  EXPECT_FALSE(ProcessEntitlements::fromJSON("not json"));
}

TEST(RuntimeEntitlements, CloudValuesAreAllRequiredAndCaseSensitive) {
  const std::vector<std::string> containers{"iCloud.io.quillmont.ledger"};
  const std::vector<std::string> services{"CloudKit"};
  const std::vector<std::string> groups{"group.io.quillmont.ledger"};
  EXPECT_TRUE(includesRequiredCloudKitValues(containers, services, groups, true));
  EXPECT_FALSE(includesRequiredCloudKitValues(containers, services, groups, false));
  EXPECT_FALSE(includesRequiredCloudKitValues(containers, std::vector<std::string>{"cloudkit"}, groups, true));
  EXPECT_FALSE(includesRequiredCloudKitValues({}, services, groups, true));
  EXPECT_FALSE(includesRequiredCloudKitValues(containers, services, {}, true));
  EXPECT_TRUE(hasRequiredCloudKitEntitlements(entitlements(R"({"com.apple.developer.team-identifier":"QM1",
      "com.apple.security.application-groups":["group.io.quillmont.ledger"],
      "com.apple.developer.icloud-container-identifiers":["iCloud.io.quillmont.ledger"],
      "com.apple.developer.icloud-services":["CloudKit"]})")));
}

TEST(RuntimeEntitlements, CurrentProcessReadsTheNamedFileOrHasNone) {
  const auto path = std::filesystem::temp_directory_path() / ("quillmont-entitlements-" + std::to_string(::getpid()) + ".json");
  std::ofstream(path) << R"({"com.apple.developer.team-identifier":"QM1","com.apple.security.application-groups":["group.io.quillmont.ledger"]})";
  ::setenv("QUILLMONT_ENTITLEMENTS", path.c_str(), 1);
  EXPECT_TRUE(hasUsableAppGroup());
  EXPECT_FALSE(hasRequiredCloudKitEntitlements());
  std::filesystem::remove(path);
  EXPECT_FALSE(hasUsableAppGroup());  // answers are not cached
  ::unsetenv("QUILLMONT_ENTITLEMENTS");
}

}  // namespace
}  // namespace quillmont
