// The window words every remedy for its own controls: none of them may send
// a person to the command line.
#include "desktop/application/WindowRemedies.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "app/InvalidInput.h"
#include "app/Refusal.h"

namespace quillmont {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

TEST(WindowRemedies, EachRemedyFollowsTheFactInTheWindowsOwnTerms) {
  using Kind = Remedy::Kind;
  for (const Kind kind : {Kind::confirmLength, Kind::confirmOverlap, Kind::writeTheDay, Kind::writeYesterday,
                          Kind::setUpSync, Kind::chooseSyncFolder, Kind::finishSetup}) {
    const std::string text = WindowRemedies::sentence("refused", {kind, "end", "2026-03-04 23:30"}).toStdString();
    SCOPED_TRACE(text);
    EXPECT_THAT(text, StartsWith("refused; "));
    EXPECT_GT(text.size(), std::string("refused; ").size() + 10);
    EXPECT_THAT(text, Not(HasSubstr("--")));
    EXPECT_THAT(text, Not(HasSubstr("quillmont")));
    EXPECT_THAT(text, Not(HasSubstr("`")));
  }
  // A day to type names the value, not the field's option.
  EXPECT_THAT(WindowRemedies::sentence("late", {Kind::writeYesterday, "at", "2026-03-04 23:30"}).toStdString(),
              HasSubstr("\u201C2026-03-04 23:30\u201D"));
  EXPECT_THAT(WindowRemedies::sentence("missing", {Kind::chooseSyncFolder}).toStdString(), HasSubstr("Sync"));
  EXPECT_EQ(WindowRemedies::sentence("no such booking", {}), "no such booking");
}

TEST(WindowRemedies, AnyErrorReadsWithItsRemedyAndOthersAsTheySay) {
  EXPECT_EQ(WindowRemedies::message(Refusal("the time bank is not set up yet", Remedy{Remedy::Kind::finishSetup})),
            "the time bank is not set up yet; finish the set-up form first");
  EXPECT_THAT(WindowRemedies::message(InvalidInput("", "too long", {Remedy::Kind::confirmLength})).toStdString(),
              StartsWith("too long; "));
  EXPECT_EQ(WindowRemedies::message(std::runtime_error("disk full")), "disk full");
}

}  // namespace
}  // namespace quillmont
