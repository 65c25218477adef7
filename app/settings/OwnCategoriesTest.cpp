#include "app/settings/OwnCategories.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/InvalidInput.h"
#include "app/Refusal.h"
#include "app/bookings/Bookings.h"
#include "app/session/StoreSession.h"
#include "app/settings/OfferedKinds.h"
#include "app/testing/ScratchHome.h"

namespace quillmont {
namespace {

using ::testing::HasSubstr;
using testing::utc;

std::string refused(const std::function<void(StoreSession&)>& action) {
  StoreSession session;
  try {
    action(session);
  } catch (const Refusal& error) {
    return error.what();
  }
  return "(done)";
}

TEST(OwnCategories, TitlesAreUniqueIgnoringCaseAndAtMostTwenty) {
  testing::ScratchHome home(utc(2026, 3, 20, 9));
  {
    StoreSession session;
    EXPECT_EQ(OwnCategories::add(session, "  Gym   visits ").title(), "Gym visits");
    EXPECT_THROW(OwnCategories::add(session, "   "), InvalidInput);
  }
  EXPECT_EQ(refused([](StoreSession& s) { OwnCategories::add(s, "GYM VISITS"); }),
            "A category called \"GYM VISITS\" exists already.");
  for (int i = 2; i <= 20; ++i) {
    EXPECT_EQ(refused([&](StoreSession& s) { OwnCategories::add(s, "C" + std::to_string(i)); }), "(done)");
  }
  EXPECT_EQ(refused([](StoreSession& s) { OwnCategories::add(s, "One more"); }),
            "You can keep at most 20 categories of your own.");
  StoreSession session;
  EXPECT_EQ(OwnCategories::list(session.settings()).size(), 20u);
}

TEST(OwnCategories, RenamingMovesTheBookingsAndRemovingLeavesThemTheirs) {
  testing::ScratchHome home(utc(2026, 3, 20, 9));
  {
    StoreSession session;
    OwnCategories::add(session, "Doctor");
    OwnCategories::add(session, "Gym");
    Bookings::add(session, {-15, "doctor", "", "", ""});
    Bookings::add(session, {-30, "doctor", "", "", ""});
    Bookings::add(session, {-45, "gym", "", "", ""});
  }
  EXPECT_EQ(refused([](StoreSession& s) { OwnCategories::rename(s, "Gym", "DOCTOR"); }),
            "A category called \"DOCTOR\" exists already.");
  EXPECT_EQ(refused([](StoreSession& s) { OwnCategories::rename(s, "Dentist", "Other"); }),
            "There is no category called \"Dentist\".");
  {
    StoreSession session;
    const auto renamed = OwnCategories::rename(session, "doctor", "Dentist");
    EXPECT_EQ(renamed.previous.title(), "Doctor");
    EXPECT_EQ(renamed.bookingsMoved, 2u);
    EXPECT_EQ(OwnCategories::remove(session, "GYM").title(), "Gym");
  }
  StoreSession session;
  std::size_t dentist = 0;
  std::size_t gym = 0;
  for (const auto& booking : session.context().fetch<BalanceAdjustment>()) {
    dentist += booking->category().title == "Dentist";
    gym += booking->category().title == "Gym";
  }
  EXPECT_EQ(dentist, 2u);
  EXPECT_EQ(gym, 1u);  // a removed category stays with its bookings
  ASSERT_EQ(OwnCategories::list(session.settings()).size(), 1u);
  EXPECT_THROW(OwnCategories::remove(session, "gym"), Refusal);
}

TEST(OfferedKinds, OnlyTheConfigurableKindsCanBeChosenByNameOrTitle) {
  EXPECT_EQ(OfferedKinds::kind("LONG LUNCH"), BalanceAdjustmentKind(BalanceAdjustmentKind::longLunch));
  EXPECT_EQ(OfferedKinds::kind("personalerrands"), BalanceAdjustmentKind(BalanceAdjustmentKind::personalErrands));
  for (const char* text : {"manual", "holiday", "sickLeave", "lunch", ""}) {
    EXPECT_THROW(OfferedKinds::kind(text), InvalidInput) << text;
  }
  testing::ScratchHome home(utc(2026, 3, 20, 9));
  StoreSession session;
  EXPECT_EQ(OfferedKinds::offered(session).size(), 4u);
  const AdjustmentKindConfiguration::KindSet one{OfferedKinds::kind("other")};
  EXPECT_EQ(OfferedKinds::offer(session, one), one);
  EXPECT_TRUE(OfferedKinds::offer(session, {}).empty());
}

}  // namespace
}  // namespace quillmont
