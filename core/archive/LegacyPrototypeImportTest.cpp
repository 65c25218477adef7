#include "core/archive/LegacyPrototypeImport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/foundation/JsonReader.h"

namespace quillmont {
namespace {

using testing::HasSubstr;
using testing::ThrowsMessage;

constexpr std::string_view lowerID = "6f9619ff-8b86-4011-b42d-00c04fc964ff";

std::string concatenated(std::initializer_list<std::string_view> pieces) {
  std::string text;
  for (const std::string_view piece : pieces) text.append(piece);
  return text;
}

// A file holding one object per element of `objects`, each given by its members.
std::string file(std::initializer_list<std::string_view> objects) {
  std::string text = "[";
  for (const std::string_view members : objects) text.append(text.size() > 1 ? ",{" : "{").append(members).append("}");
  return text.append("]");
}

TEST(LegacyPrototypeImportTest, ReadsEntriesInFileOrderAsWritten) {
  EXPECT_TRUE(LegacyPrototypeImport::decode(" [ ] ").empty());
  const std::string id = concatenated({R"("id":")", lowerID, "\""});
  const auto entries = LegacyPrototypeImport::decode(
      file({concatenated({id, R"(,"minutes":-90,"date":0,"note":"Arzt \/ Zahnarzt")"}),
            concatenated({R"("note":"","extra":[1,{"x":null}],"date":-978307200.5,"minutes":0,)", id})}));
  ASSERT_EQ(entries.size(), 2u);  // the same identifier twice is returned twice
  EXPECT_EQ(entries[0], (LegacyBalanceEntry{*UUID::parse(lowerID), -90, Date(0), "Arzt / Zahnarzt"}));
  EXPECT_EQ(entries[1].date.timeIntervalSince1970(), -0.5);
  EXPECT_EQ(entries[1].id, entries[0].id);

  // Written back: upper-case identifier, 2001-based date, the same keys.
  const std::string encoded = LegacyPrototypeImport::encode(entries);
  EXPECT_EQ(encoded, R"([{"id":"6F9619FF-8B86-4011-B42D-00C04FC964FF","minutes":-90,"date":0,"note":"Arzt \/ Zahnarzt"},)"
                     R"({"id":"6F9619FF-8B86-4011-B42D-00C04FC964FF","minutes":0,"date":-978307200.5,"note":""}])");
  EXPECT_EQ(LegacyPrototypeImport::decode(encoded), entries);
}

TEST(LegacyPrototypeImportTest, AnyBadElementFailsTheWholeRead) {
  const std::string_view valid = R"("id":"6F9619FF-8B86-4011-B42D-00C04FC964FF","minutes":5,"date":1)";
  const auto with = [valid](std::string_view more) { return file({concatenated({valid, R"(,"note":"")", more})}); };
  const std::pair<std::string, std::string_view> failures[] = {
      {"", "not valid JSON"},
      {"{}", "expected an array, found an object"},
      {concatenated({"[{", valid, R"(,"note":""},3])"}), "[1]: expected an object, found a number"},
      {file({valid}), R"([0]: missing key "note")"},
      {with(R"(,"minutes":"5")"), "[0].minutes: expected an integer, found a string"},
      {with(R"(,"minutes":1.5)"), "[0].minutes: expected an integer"},
      {with(R"(,"minutes":1e20)"), "out of the 64-bit range"},
      {with(R"(,"date":"2024-01-01")"), "[0].date: expected a number, found a string"},
      {with(R"(,"id":"6F9619FF8B864011B42D00C04FC964FF")"), "[0].id: expected a UUID"}};
  for (const auto& [json, message] : failures) {
    EXPECT_THAT(([&, &json = json] { LegacyPrototypeImport::decode(json); }),
                ThrowsMessage<JsonDecodingError>(HasSubstr(message)))
        << json;
  }
}

}  // namespace
}  // namespace quillmont
