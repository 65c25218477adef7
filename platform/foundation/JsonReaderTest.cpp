#include "platform/foundation/JsonReader.h"

#include "platform/foundation/JsonWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <bit>
#include <limits>

namespace quillmont {
namespace {

using JsonReader::Path;
using value = JsonReader::Value;
using testing::HasSubstr;
using testing::ThrowsMessage;

// Reads `json` as the member "field" of an object with `read`.
template <class Read>
auto readField(std::string_view json, Read read) {
  static constexpr JsonReader::Key keys[] = {JsonReader::requiredKey("field")};
  return JsonReader::parse(R"({"field":)" + std::string(json) + "}", [&](value& root) {
    std::remove_cvref_t<decltype(read(root, Path()))> result{};
    JsonReader::readObject(root, Path(), keys, [&](std::size_t, value& field, const Path& at) { result = read(field, at); });
    return result;
  });
}

std::int64_t int64(std::string_view json) { return readField(json, JsonReader::int64); }
std::string ownedString(value& field, const Path& at) { return std::string(JsonReader::string(field, at)); }

TEST(JsonReaderTest, Int64TakesIntegralNumbersInRangeOnly) {
  EXPECT_EQ(int64("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(int64("9223372036854775807"), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(int64("2.0"), 2);
  EXPECT_EQ(int64("1e3"), 1000);
  const std::pair<std::string_view, std::string_view> failures[] = {
      {"1.5", "field: expected an integer, found the fractional number 1.5"},
      {"9223372036854775808", "field: integer 9223372036854775808 is out of the 64-bit range"},
      {"-9223372036854775809", "out of the 64-bit range"},
      {"1e19", "field: number 1e19 is out of the 64-bit range"},
      {"\"2\"", "field: expected an integer, found a string"},
      {"null", "found null"}, {"01", "field: not valid JSON"}};
  for (const auto& [json, message] : failures) {
    EXPECT_THAT(([&, &json = json] { int64(json); }), ThrowsMessage<JsonDecodingError>(HasSubstr(message))) << json;
  }
}

TEST(JsonReaderTest, OtherLeafReaders) {
  EXPECT_EQ(readField("18446744073709551616", JsonReader::number), 18446744073709551616.0);
  EXPECT_TRUE(readField("true", JsonReader::boolean));
  EXPECT_EQ(readField(R"("a\/b \u00fc\n")", ownedString), "a/b ü\n");
  EXPECT_THAT([] { readField("\"1\"", JsonReader::number); }, ThrowsMessage<JsonDecodingError>(HasSubstr("found a string")));
  const UUID id = *UUID::parse("C0DE5EED-0B4A-4C2A-9D6E-00000000000A");
  EXPECT_EQ(readField(R"("C0DE5EED-0B4A-4C2A-9D6E-00000000000A")", JsonReader::uuid), id);
  EXPECT_EQ(readField(R"("c0de5eed-0b4a-4c2a-9d6e-00000000000a")", JsonReader::uuid), id);
  for (std::string_view json : {R"("{C0DE5EED-0B4A-4C2A-9D6E-00000000000A}")", R"("C0DE5EED0B4A4C2A9D6E00000000000A")", "1"}) {
    EXPECT_THROW(readField(json, JsonReader::uuid), JsonDecodingError) << json;
  }
}

// A decoder in the usual shape: fields in any order, unknown keys skipped, an
// optional note that may be null.
struct Pause {
  UUID id;
  std::int64_t minutes = 0;
  std::optional<std::string> note;
};

std::vector<Pause> decodePauses(std::string_view json) {
  enum PauseKey : std::size_t { id, minutes, note };
  static constexpr JsonReader::Key pauseKeys[] = {JsonReader::requiredKey("id"), JsonReader::requiredKey("minutes"),
                                                  JsonReader::optionalKey("note")};
  static constexpr JsonReader::Key documentKeys[] = {JsonReader::requiredKey("pauses")};
  std::vector<Pause> pauses;
  JsonReader::parse(json, [&](value& root) {
    JsonReader::readObject(root, Path(), documentKeys, [&](std::size_t, value& list, const Path& at) {
      JsonReader::forEachElement(list, at, [&](value& element, const Path& elementAt) {
        Pause& pause = pauses.emplace_back();
        JsonReader::readObject(element, elementAt, pauseKeys, [&](std::size_t key, value& field, const Path& fieldAt) {
          switch (key) {
            case id: pause.id = JsonReader::uuid(field, fieldAt); break;
            case minutes: pause.minutes = JsonReader::int64(field, fieldAt); break;
            case note: if (!JsonReader::isNull(field)) pause.note = ownedString(field, fieldAt); break;
          }
        });
      });
    });
  });
  return pauses;
}

TEST(JsonReaderTest, DecodesStructsFromObjectsInAnyKeyOrder) {
  const auto pauses = decodePauses(R"({"version":2,"pauses":[
      {"minutes":30,"extra":{"deep":[1,{"id":2}]},"id":"C0DE5EED-0B4A-4C2A-9D6E-000000000001","note":null},
      {"note":"Lunch \/ walk","id":"c0de5eed-0b4a-4c2a-9d6e-000000000002","minutes":45.0}]} )");
  ASSERT_EQ(pauses.size(), 2u);
  EXPECT_EQ(pauses[0].id.uuidString(), "C0DE5EED-0B4A-4C2A-9D6E-000000000001");
  EXPECT_EQ(pauses[0].note, std::nullopt);
  EXPECT_EQ(pauses[1].minutes, 45);
  EXPECT_EQ(pauses[1].note, "Lunch / walk");

  // Keys and identifiers written with escapes read as their characters.
  const auto escaped = decodePauses(R"({"pauses":[{"\u0069d":"\u00430DE5EED-0B4A-4C2A-9D6E-000000000003","min\u0075tes":5}]})");
  ASSERT_EQ(escaped.size(), 1u);
  EXPECT_EQ(escaped[0].id.uuidString(), "C0DE5EED-0B4A-4C2A-9D6E-000000000003");
  EXPECT_EQ(escaped[0].minutes, 5);
  EXPECT_THROW(decodePauses(R"({"pauses":[{"\x":1}]})"), JsonDecodingError);
}

// A text handed over is read like any other, while the pages read through
// are given back (they read as zeros then); a parse within the parse, of
// another text, leaves that text alone.
TEST(JsonReaderTest, ParseConsumingReadsAndGivesBackTheText) {
  std::string json = R"({"pauses":[)";
  for (int i = 0; i < 60000; ++i) {
    if (i > 0) json += ',';
    json += R"({"id":"C0DE5EED-0B4A-4C2A-9D6E-)" + std::to_string(100000000000 + i) + R"(","minutes":)" +
            std::to_string(i % 480) + R"(,"note":"pause \"number\" )" + std::to_string(i) +
            R"(","skipped":[1,{"deep":"text that is skipped"}]})";
  }
  json += "]}";
  ASSERT_GT(json.size(), std::size_t{6} << 20);
  const std::vector<Pause> expected = decodePauses(json);
  ASSERT_EQ(expected.size(), 60000u);

  const std::string other = R"(["inner", "array"])";
  std::size_t index = 0;
  const char* early = nullptr;  // a place in the text some 200 kB in
  bool mismatch = false;
  bool releasedBehind = false;
  static constexpr JsonReader::Key documentKeys[] = {JsonReader::requiredKey("pauses")};
  JsonReader::parseConsuming(json, [&](value& root) {
    JsonReader::readObject(root, Path(), documentKeys, [&](std::size_t, value& list, const Path& at) {
      JsonReader::forEachElement(list, at, [&](value& element, const Path& elementAt) {
        static constexpr JsonReader::Key keys[] = {JsonReader::requiredKey("id"), JsonReader::requiredKey("minutes"),
                                                   JsonReader::requiredKey("note")};
        Pause pause;
        JsonReader::readObject(element, elementAt, keys, [&](std::size_t key, value& field, const Path& fieldAt) {
          if (key == 0) pause.id = JsonReader::uuid(field, fieldAt);
          if (key == 1) pause.minutes = JsonReader::int64(field, fieldAt);
          if (key == 2) pause.note = JsonReader::string(field, fieldAt);
        });
        mismatch |= pause.id != expected[index].id || pause.minutes != expected[index].minutes ||
                    pause.note != expected[index].note;
        if (index == 1000) early = element.location();
        if (index == 30000) mismatch |= JsonReader::stringArray(other) != std::vector<std::string>{"inner", "array"};
        if (index == 59999) releasedBehind = early != nullptr && early[0] == '\0' && early[4095] == '\0';
        ++index;
      });
    });
  });
  EXPECT_EQ(index, 60000u);
  EXPECT_FALSE(mismatch);
  EXPECT_TRUE(releasedBehind);
  EXPECT_EQ(other, R"(["inner", "array"])");
}

TEST(JsonReaderTest, DecodingErrorsNameTheirPlace) {
  const std::string id = R"("id":"C0DE5EED-0B4A-4C2A-9D6E-000000000001")";
  const std::pair<std::string, std::string_view> failures[] = {
      {R"({"pauses":[{)" + id + R"(,"minutes":1},{)" + id + "}]}", R"(pauses[1]: missing key "minutes")"},
      {R"({"pauses":[{)" + id + R"(,"minutes":"5"}]})", "pauses[0].minutes: expected an integer, found a string"},
      {R"({"pauses":[{"id":"C0DE5EED","minutes":5}]})", "pauses[0].id: expected a UUID"},
      {R"({"pauses":{}})", "pauses: expected an array, found an object"},
      {R"({"pause":[]})", R"(top level: missing key "pauses")"},
      {R"({"pauses":[]} {})", "top level: unexpected content after the top-level value"},
      {R"({"pauses":[)", "not valid JSON"},
      {"[\"\xff\"]", "top level: not valid JSON"},
      {R"("pauses")", "top level: expected an object or an array"},
      {"[]", "top level: expected an object, found an array"}};
  for (const auto& [json, message] : failures) {
    EXPECT_THAT(([&, &json = json] { decodePauses(json); }),
                ThrowsMessage<JsonDecodingError>(HasSubstr(message)))
        << json;
  }
}

TEST(JsonReaderTest, ParseReadsTheTextWhereItLies) {
  const std::string json = R"([" plain", "esc\"aped"])";
  std::vector<std::string_view> strings;
  JsonReader::parse(json, [&](value& root) {
    EXPECT_EQ(root.location(), json.data());
    JsonReader::forEachElement(root, Path(), [&](value& element, const Path& at) {
      strings.push_back(JsonReader::string(element, at));
    });
    // Views live until the parse returns.
    ASSERT_EQ(strings.size(), 2u);
    EXPECT_EQ(strings[0].data(), json.data() + 2);  // a view of the text
    EXPECT_EQ(strings[1], "esc\"aped");
  });
  EXPECT_EQ(json, R"([" plain", "esc\"aped"])");  // a text that is not handed over is left as it was
}

// Values nobody asks for are skipped, and still checked: a document is JSON
// throughout or refused.
TEST(JsonReaderTest, SkippedValuesAreCheckedAsTheyAreSkipped) {
  const auto withExtra = [](std::string_view extra) {
    return R"({"extra":)" + std::string(extra) + R"(,"pauses":[{"id":"C0DE5EED-0B4A-4C2A-9D6E-000000000001","minutes":1,"skip":)" +
           std::string(extra) + "}]}";
  };
  for (std::string_view extra : {"1e400", "-0.5E+3", R"("\ud83d\ude00 \u0000")", R"({"a":[[],{}],"b":{"c":null}})",
                                 "[true,false,null]", " [ 1 , 2 ] "}) {
    EXPECT_EQ(decodePauses(withExtra(extra)).size(), 1u) << extra;
  }
  std::string deep(1000, '[');
  deep += std::string(1000, ']');
  EXPECT_EQ(decodePauses(withExtra(deep)).size(), 1u);

  for (std::string_view extra : {"01", "-", "1.", "1e", ".5", "+1", "tru", "nul", "[1,]", "[1 2]", "{\"a\":1,}", "{\"a\" 1}",
                                 "{1:2}", R"("\x")", R"("\u00e")", R"("\ud800")", R"("\udc00")", R"("\ud800\u0041")", "\"tab\there\"", "\"open", "[", "{\"a\":",
                                 "NaN", "'a'"}) {
    EXPECT_THAT([&] { decodePauses(withExtra(extra)); }, ThrowsMessage<JsonDecodingError>(HasSubstr("not valid JSON")))
        << extra;
  }
  std::string tooDeep(1100, '[');
  tooDeep += std::string(1100, ']');
  EXPECT_THROW(decodePauses(withExtra(tooDeep)), JsonDecodingError);
  EXPECT_THROW(decodePauses(std::string("{\"pauses\":[]}\0", 15)), JsonDecodingError);
  EXPECT_THROW(decodePauses(std::string("{\"pauses\":[\"\0\"]}", 16)), JsonDecodingError);
}

TEST(JsonReaderTest, CallbacksMayLeaveValuesUnreadButNotReadThemTwice) {
  static constexpr JsonReader::Key keys[] = {JsonReader::requiredKey("a"), JsonReader::requiredKey("b")};
  std::int64_t b = 0;
  JsonReader::parse(R"({"a":{"x":[1,"]"]},"b":2})", [&](value& root) {
    JsonReader::readObject(root, Path(), keys, [&](std::size_t key, value& field, const Path& at) {
      if (key == 1) b = JsonReader::int64(field, at);
    });
  });
  EXPECT_EQ(b, 2);
  EXPECT_THAT(([] {
                JsonReader::parse(R"([1, 2])", [](value& root) {
                  JsonReader::forEachElement(root, Path(), [](value& element, const Path& at) {
                    JsonReader::int64(element, at);
                    JsonReader::int64(element, at);
                  });
                });
              }),
              ThrowsMessage<JsonDecodingError>(HasSubstr("[0]: read out of order")));
}

TEST(JsonReaderTest, NumbersBeyondTheRangeOfDoubles) {
  EXPECT_EQ(readField("1e-400", JsonReader::number), 0.0);
  EXPECT_EQ(readField("-4.9406564584124654e-324", JsonReader::number), -0x1p-1074);
  EXPECT_THAT([] { readField("-1e400", JsonReader::number); }, ThrowsMessage<JsonDecodingError>(HasSubstr("field: number -1e400")));
  EXPECT_THAT([] { int64("1e400"); }, ThrowsMessage<JsonDecodingError>(HasSubstr("out of the 64-bit range")));
}

TEST(JsonReaderTest, StringArrayShapes) {
  EXPECT_EQ(JsonReader::stringArray("[]"), std::vector<std::string>());
  EXPECT_EQ(JsonReader::stringArray(R"([ "Team\/1:1", "Ärzte" ])"), (std::vector<std::string>{"Team/1:1", "Ärzte"}));
  for (std::string_view json : {"", "not JSON", "{}", R"("x")", "[1]", R"(["a",null])", R"(["a"] ["b"])", "[\"a\""}) {
    EXPECT_EQ(JsonReader::stringArray(json), std::nullopt) << json;
  }
}

RC_GTEST_PROP(JsonReaderTest, FiniteDoublesRoundTripBitForBit, ()) {
  // Uniform over the bit patterns of finite doubles: every exponent, subnormals included.
  const std::uint64_t magnitude = *rc::gen::inRange<std::uint64_t>(0, 0x7FF0000000000000);
  const std::uint64_t bits = magnitude | (*rc::gen::arbitrary<bool>() ? 0x8000000000000000 : 0);
  std::string json;
  JsonWriter(json).number(std::bit_cast<double>(bits));
  RC_ASSERT(std::bit_cast<std::uint64_t>(readField(json, JsonReader::number)) == bits);
}

RC_GTEST_PROP(JsonReaderTest, Int64RoundTrips, (std::int64_t integer)) {
  std::string json;
  JsonWriter(json).integer(integer);
  RC_ASSERT(int64(json) == integer);
}

}  // namespace
}  // namespace quillmont
