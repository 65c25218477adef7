// The public holidays a device file carries beside its deletions.
#include "core/sync/SyncDeviceFile.h"

#include <gtest/gtest.h>

#include "platform/foundation/JsonReader.h"

namespace quillmont {
namespace {

TEST(SyncDeviceFile, CarriesThePublicHolidaysAndReadsFilesWithoutThem) {
  const UUID device = *UUID::parse("00000000-0000-0000-0000-000000000007");
  const SyncDeviceFile file{device,
                            "laptop",
                            Date(800000000),
                            {},
                            {{"2026-12-25", "christmas@example", "Christmas \"Day\""},
                             {"2027-01-01", "ny", "New Year"}}};
  const std::string json = file.encodedJSON();
  EXPECT_NE(json.find(R"("holidays":[{"day":"2026-12-25","name":"Christmas \"Day\"","uid":"christmas@example"})"),
            std::string::npos)
      << json;
  EXPECT_EQ(SyncDeviceFile::decodeJSON(json), file);

  // A file of an earlier version has no holidays.
  const auto earlier = SyncDeviceFile::decodeJSON(
      R"({"deletions":[],"device":"00000000-0000-0000-0000-000000000007","name":"x","writtenAt":1})");
  EXPECT_TRUE(earlier.holidays.empty());
  const std::string incomplete = R"({"deletions":[],"device":"00000000-0000-0000-0000-000000000007",)"
                                 R"("holidays":[{"day":"2026-12-25"}],"name":"x","writtenAt":1})";
  EXPECT_THROW(SyncDeviceFile::decodeJSON(incomplete), JsonDecodingError);
}

}  // namespace
}  // namespace quillmont
