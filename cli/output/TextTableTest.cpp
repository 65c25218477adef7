#include "cli/output/TextTable.h"

#include <gtest/gtest.h>

#include <sstream>

#include "platform/foundation/Text.h"

namespace quillmont {
namespace {

// Where the text `column` starts on each line, in terminal columns.
std::vector<std::size_t> startsOf(const std::string& rendered, const std::string& marker) {
  std::vector<std::size_t> starts;
  std::istringstream lines(rendered);
  for (std::string line; std::getline(lines, line);) {
    const auto at = line.find(marker);
    if (at != std::string::npos) starts.push_back(Text::displayWidth(line.substr(0, at)));
  }
  return starts;
}

TEST(TextTable, WideAndCombiningCharactersKeepColumnsInLine) {
  using Alignment = TextTable::Alignment;
  TextTable table({{"Category"}, {"Minutes", Alignment::right}, {"Note"}});
  table.addRow({"Holiday", "480", "|a"});
  table.addRow({"\u4F11\u6687", "60", "|b"});          // two wide characters
  table.addRow({"Cafe\u0301 break", "−15", "|c"});     // a combining accent
  table.addRow({"\U0001F334 Leave", "1440", "|d"});    // an emoji
  const std::string rendered = table.render();
  const auto starts = startsOf(rendered, "|");
  ASSERT_EQ(starts.size(), 4u) << rendered;
  for (const std::size_t start : starts) EXPECT_EQ(start, starts.front()) << rendered;
}

}  // namespace
}  // namespace quillmont
