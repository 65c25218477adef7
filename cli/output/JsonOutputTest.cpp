// Black-box tests of `--json`: every list and report prints one JSON
// document of the documented shape, whose numbers agree with each other and
// with the text the tables show.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "cli/testing/CommandRunner.h"
#include "platform/foundation/JsonReader.h"

namespace quillmont {
namespace {

using ::testing::MatchesRegex;
using testing::CommandRunner;

// A document read whole, for looking values up in any order.
struct Node {
  JsonReader::Type type = JsonReader::Type::null;
  bool boolean = false;
  double number = 0;
  std::string text;
  std::vector<std::string> keys;
  std::vector<Node> values;  // of an object (beside keys) or an array

  const Node& operator[](std::string_view key) const {
    for (std::size_t index = 0; index < keys.size(); ++index) {
      if (keys[index] == key) return values[index];
    }
    ADD_FAILURE() << "no key " << key;
    return missing();
  }
  const Node& operator[](std::size_t index) const {
    if (index < values.size()) return values[index];
    ADD_FAILURE() << "no element " << index;
    return missing();
  }
  std::size_t Size() const { return values.size(); }
  bool IsNull() const { return type == JsonReader::Type::null; }
  bool GetBool() const { return boolean; }
  std::int64_t GetInt64() const { return static_cast<std::int64_t>(number); }
  static const Node& missing() {
    static const Node none;
    return none;
  }

  static Node read(JsonReader::Value& value, const JsonReader::Path& at) {
    Node node;
    node.type = JsonReader::type(value, at);
    switch (node.type) {
      case JsonReader::Type::object:
        JsonReader::forEachField(value, at, [&node](std::string_view key, JsonReader::Value& field, const JsonReader::Path& fieldAt) {
          node.keys.emplace_back(key);
          node.values.push_back(read(field, fieldAt));
        });
        break;
      case JsonReader::Type::array:
        JsonReader::forEachElement(value, at, [&node](JsonReader::Value& element, const JsonReader::Path& elementAt) {
          node.values.push_back(read(element, elementAt));
        });
        break;
      case JsonReader::Type::string: node.text = JsonReader::string(value, at); break;
      case JsonReader::Type::number: node.number = JsonReader::number(value, at); break;
      case JsonReader::Type::boolean: node.boolean = JsonReader::boolean(value, at); break;
      case JsonReader::Type::null: JsonReader::isNull(value); break;
    }
    return node;
  }
};

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

  const Node& json(const std::vector<std::string>& command) {
    const auto result = quillmont.run(command);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_FALSE(result.out.empty());
    if (!result.out.empty()) {
      EXPECT_EQ(result.out.back(), '\n');
    }
    try {
      return documents_.emplace_back(JsonReader::parse(result.out, [](JsonReader::Value& root) {
        return Node::read(root, JsonReader::Path());
      }));
    } catch (const JsonDecodingError& error) {
      ADD_FAILURE() << error.what() << "\n" << result.out;
      return Node::missing();
    }
  }

  CommandRunner quillmont;

 private:
  std::deque<Node> documents_;
};

double number(const Node& element) { return element.number; }
std::string text(const Node& element) { return element.text; }

TEST_F(JsonOutput, BookingsAndWorkListsReconcile) {
  const auto& bookings = json({"bookings", "list", "--from", "2026-03-01", "--to", "2026-03-31", "--json"});
  EXPECT_EQ(text(bookings["from"]), "2026-03-01");
  ASSERT_EQ(bookings["bookings"].Size(), 2u);
  const auto& dentist = bookings["bookings"][0u];
  EXPECT_EQ(dentist["minutes"].GetInt64(), -45);
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

  const auto& all = json({"bookings", "list", "--all", "--json"});
  EXPECT_TRUE(all["from"].IsNull());

  const auto& work = json({"work", "list", "--all", "--json"});
  ASSERT_EQ(work["count"].GetInt64(), 1);
  const auto& entry = work["entries"][0u];
  EXPECT_EQ(text(entry["start"]), "2026-03-03T08:00:00+01:00");
  EXPECT_EQ(text(entry["end"]), "2026-03-03T17:30:00+01:00");
  EXPECT_FALSE(entry["running"].GetBool());
  EXPECT_EQ(number(entry["workedSeconds"]), 9 * 3600);
  EXPECT_EQ(text(entry["worked"]), "9:00");
  EXPECT_EQ(number(work["workedSeconds"]), 9 * 3600);
}

TEST_F(JsonOutput, ReportsSchedulesCategoriesAndDoctor) {
  const auto& week = json({"report", "week", "--date", "2026-03-04", "--json"});
  EXPECT_EQ(text(week["period"]), "week");
  EXPECT_EQ(text(week["from"]), "2026-03-02");
  EXPECT_TRUE(week["through"].IsNull());
  double sum = 0;
  for (const auto& day : week["days"].values) {
    EXPECT_THAT(text(day["date"]), MatchesRegex("2026-03-0[2-8]"));
    EXPECT_EQ(number(day["differenceSeconds"]),
              number(day["workedSeconds"]) + number(day["adjustmentsSeconds"]) - number(day["plannedSeconds"]));
    sum += number(day["differenceSeconds"]);
  }
  EXPECT_EQ(number(week["totals"]["differenceSeconds"]), sum);
  EXPECT_EQ(text(week["categories"][0u]["category"]), "appointment");
  EXPECT_EQ(week["categories"][0u]["count"].GetInt64(), 1);

  const auto& range = json({"report", "--from", "2026-03-09", "--to", "2026-03-10", "--json"});
  EXPECT_EQ(text(range["period"]), "days");
  EXPECT_EQ(range["days"].Size(), 2u);
  EXPECT_EQ(number(range["days"][0u]["plannedSeconds"]), 6 * 3600);  // the schedule from the 9th

  const auto& schedules = json({"schedule", "list", "--json"});
  ASSERT_EQ(schedules.Size(), 1u);
  EXPECT_EQ(text(schedules[0u]["from"]), "2026-03-09");
  EXPECT_EQ(number(schedules[0u]["weekSeconds"][0u]), 6 * 3600);
  EXPECT_EQ(text(schedules[0u]["week"][6u]), "0:00");

  const auto& categories = json({"category", "list", "--json"});
  ASSERT_EQ(categories.Size(), 1u);
  EXPECT_EQ(text(categories[0u]["title"]), "Gym");

  const auto& doctor = json({"doctor", "--json"});
  EXPECT_TRUE(doctor["healthy"].GetBool());
  EXPECT_EQ(text(doctor["integrity"]), "ok");
  EXPECT_EQ(text(doctor["setUp"]), "complete");
}

}  // namespace
}  // namespace quillmont
