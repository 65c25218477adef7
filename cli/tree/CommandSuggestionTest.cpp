#include "cli/tree/CommandSuggestion.h"

#include <gtest/gtest.h>

namespace quillmont {
namespace {

const std::vector<std::string> commands{"overview", "book",   "bookings", "timer", "work",   "report", "csv",
                                        "setup",    "settings", "schedule", "kinds", "category", "export", "import",
                                        "import-legacy", "open", "widget", "erase", "doctor"};

TEST(CommandSuggestion, CommonSlipsFindTheirCommand) {
  EXPECT_EQ(CommandSuggestion::closest("reprot", commands), "report");    // two letters swapped
  EXPECT_EQ(CommandSuggestion::closest("exprt", commands), "export");     // a letter left out
  EXPECT_EQ(CommandSuggestion::closest("timerr", commands), "timer");     // a letter too many
  EXPECT_EQ(CommandSuggestion::closest("setings", commands), "settings");
  EXPECT_EQ(CommandSuggestion::closest("wdiget", commands), "widget");
}

TEST(CommandSuggestion, FarOrAmbiguousWordsGetNoGuess) {
  EXPECT_EQ(CommandSuggestion::closest("frobnicate", commands), std::nullopt);
  EXPECT_EQ(CommandSuggestion::closest("rok", commands), std::nullopt);    // short words allow one edit only
  EXPECT_EQ(CommandSuggestion::closest("book", commands), std::nullopt);   // already a command
  EXPECT_EQ(CommandSuggestion::closest("", commands), std::nullopt);
  // "bork" is one edit from both "book" and "work": no guess beats the other.
  EXPECT_EQ(CommandSuggestion::closest("bork", commands), std::nullopt);
}

TEST(CommandSuggestion, DistanceCountsASwapAsOneEdit) {
  EXPECT_EQ(CommandSuggestion::distance("ab", "ba"), 1u);
  EXPECT_EQ(CommandSuggestion::distance("kitten", "sitting"), 3u);
  EXPECT_EQ(CommandSuggestion::distance("", "abc"), 3u);
}

}  // namespace
}  // namespace quillmont
