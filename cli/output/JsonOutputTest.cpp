// Black-box tests of `--json`: every list and report prints one JSON
// document of the documented shape, whose numbers agree with each other and
// with the text the tables show.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <simdjson.h>

#include <string>
#include <vector>

#include "cli/testing/CommandRunner.h"

namespace quillmont {
namespace {

using ::testing::MatchesRegex;
using testing::CommandRunner;

class JsonOutput : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const std::vector<std::string>& command : std::vector<std::vector<std::string>>{
             {"setup", "--start", "2026-03-02", "--balance", "1:00", "--week", "8h,8h,8h,8h,8h,0,0"},
             {"category", "add", "Gym"},
             {"schedule", "add", "2026-03-09", "6h,6h,6h,6h,6h,0,0"},
             {"book", "-45", "-c", "appointment", "-n", "dentist", "-d", "2026-03-03"},
             {"book", "90", "-d", "2026-03-05"},
             {"work", "add", "--start", "2026-03-03 08:00", "--end", "17:30", "--break", "30"}}) {
      const auto result = quillmont.run(command);
      ASSERT_EQ(result.exitCode, 0) << command.front() << ": " << result.err;
    }
  }

  simdjson::dom::element json(const std::vector<std::string>& command) {
    const auto result = quillmont.run(command);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_FALSE(result.out.empty());
    if (!result.out.empty()) {
      EXPECT_EQ(result.out.back(), '\n');
    }
    documents_.push_back(result.out);
    simdjson::dom::element element;
    const auto error = parsers_.emplace_back().parse(documents_.back()).get(element);
    EXPECT_EQ(error, simdjson::SUCCESS) << result.out;
    return element;
  }

  CommandRunner quillmont;

 private:
  std::vector<std::string> documents_;
  std::vector<simdjson::dom::parser> parsers_;
};

double number(simdjson::dom::element element) { return double(element); }
std::string text(simdjson::dom::element element) { return std::string(std::string_view(element)); }

TEST_F(JsonOutput, BookingsAndWorkListsReconcile) {
  const auto bookings = json({"bookings", "list", "--from", "2026-03-01", "--to", "2026-03-31", "--json"});
  EXPECT_EQ(text(bookings["from"]), "2026-03-01");
  ASSERT_EQ(simdjson::dom::array(bookings["bookings"]).size(), 2u);
  const auto dentist = bookings["bookings"].at(0);
  EXPECT_EQ(int64_t(dentist["minutes"]), -45);
  EXPECT_EQ(number(dentist["amountSeconds"]), -2700);
  EXPECT_EQ(text(dentist["amount"]), "\u22120:45");
  EXPECT_EQ(text(dentist["category"]), "appointment");
  EXPECT_EQ(text(dentist["note"]), "dentist");
  // Instants carry the offset of the user's zone (Berlin in winter).
  EXPECT_EQ(text(dentist["date"]), "2026-03-03T12:00:00+01:00");
  EXPECT_EQ(number(bookings["balanceBeforeSeconds"]), 3600);
  EXPECT_EQ(number(bookings["balanceAfterSeconds"]),
            number(bookings["balanceBeforeSeconds"]) + number(bookings["totalSeconds"]));
  EXPECT_EQ(number(bookings["totalSeconds"]), 2700);

  const auto all = json({"bookings", "list", "--all", "--json"});
  EXPECT_TRUE(all["from"].is_null());

  const auto work = json({"work", "list", "--all", "--json"});
  ASSERT_EQ(int64_t(work["count"]), 1);
  const auto entry = work["entries"].at(0);
  EXPECT_EQ(text(entry["start"]), "2026-03-03T08:00:00+01:00");
  EXPECT_EQ(text(entry["end"]), "2026-03-03T17:30:00+01:00");
  EXPECT_FALSE(bool(entry["running"]));
  EXPECT_EQ(number(entry["workedSeconds"]), 9 * 3600);
  EXPECT_EQ(text(entry["worked"]), "9:00");
  EXPECT_EQ(number(work["workedSeconds"]), 9 * 3600);
}

TEST_F(JsonOutput, ReportsSchedulesCategoriesAndDoctor) {
  const auto week = json({"report", "week", "--date", "2026-03-04", "--json"});
  EXPECT_EQ(text(week["period"]), "week");
  EXPECT_EQ(text(week["from"]), "2026-03-02");
  EXPECT_TRUE(week["through"].is_null());
  double sum = 0;
  for (const auto day : simdjson::dom::array(week["days"])) {
    EXPECT_THAT(text(day["date"]), MatchesRegex("2026-03-0[2-8]"));
    EXPECT_EQ(number(day["differenceSeconds"]),
              number(day["workedSeconds"]) + number(day["adjustmentsSeconds"]) - number(day["plannedSeconds"]));
    sum += number(day["differenceSeconds"]);
  }
  EXPECT_EQ(number(week["totals"]["differenceSeconds"]), sum);
  EXPECT_EQ(text(week["categories"].at(0)["category"]), "appointment");
  EXPECT_EQ(int64_t(week["categories"].at(0)["count"]), 1);

  const auto range = json({"report", "--from", "2026-03-09", "--to", "2026-03-10", "--json"});
  EXPECT_EQ(text(range["period"]), "days");
  EXPECT_EQ(simdjson::dom::array(range["days"]).size(), 2u);
  EXPECT_EQ(number(range["days"].at(0)["plannedSeconds"]), 6 * 3600);  // the schedule from the 9th

  const auto schedules = json({"schedule", "list", "--json"});
  ASSERT_EQ(simdjson::dom::array(schedules).size(), 1u);
  EXPECT_EQ(text(schedules.at(0)["from"]), "2026-03-09");
  EXPECT_EQ(number(schedules.at(0)["weekSeconds"].at(0)), 6 * 3600);
  EXPECT_EQ(text(schedules.at(0)["week"].at(6)), "0:00");

  const auto categories = json({"category", "list", "--json"});
  ASSERT_EQ(simdjson::dom::array(categories).size(), 1u);
  EXPECT_EQ(text(categories.at(0)["title"]), "Gym");

  const auto doctor = json({"doctor", "--json"});
  EXPECT_TRUE(bool(doctor["healthy"]));
  EXPECT_EQ(text(doctor["integrity"]), "ok");
  EXPECT_EQ(text(doctor["setUp"]), "complete");
}

}  // namespace
}  // namespace quillmont
