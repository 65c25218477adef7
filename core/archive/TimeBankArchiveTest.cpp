#include "core/archive/TimeBankArchive.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <limits>

#include "core/archive/TimeBankArchiveError.h"
#include "platform/foundation/JsonReader.h"
#include "platform/foundation/JsonWriter.h"

namespace quillmont {
namespace {

using testing::HasSubstr;
using testing::ThrowsMessage;
using Archive = TimeBankArchive;

UUID id(std::string_view text) { return *UUID::parse(text); }

// Distinct identifiers for bulk records.
UUID numberedID(std::size_t number) {
  UUID result;
  for (std::size_t i = 0; i < 8; ++i) result.bytes[15 - i] = static_cast<std::uint8_t>(number >> (8 * i));
  return result;
}

// 2024-06-10 08:00:00 UTC as seconds since 2001, and the same in 1970 seconds.
constexpr Date morning(739699200);
constexpr std::string_view morning1970 = "1718006400";

TEST(TimeBankArchiveTest, EncodesTheDocumentInItsFixedForm) {
  auto entry = std::make_shared<WorkEntry>(id("00000000-0000-4000-8000-00000000000E"), morning, std::nullopt, 30,
                                           "Release 1/2", morning, morning + 60);
  entry->setBreakMinutes(-5);  // as stored, not normalised
  auto adjustment = std::make_shared<BalanceAdjustment>(id("00000000-0000-4000-8000-00000000000A"), morning, -90,
                                                        "Dentist", BalanceAdjustmentKind::appointment, morning, morning);
  auto schedule = std::make_shared<WorkSchedule>(id("00000000-0000-4000-8000-000000000005"), Date(0),
                                                 std::vector<std::int64_t>{480, 480, 480, 480, 240, 0, 0}, Date(0.5),
                                                 Date(0.5));
  auto settings = std::make_shared<TimeBankSettings>();
  settings->setId(id("00000000-0000-4000-8000-000000000001"));
  settings->setCalculationStartDate(Date(-978307200));
  settings->setModifiedAt(morning);
  settings->setCustomAdjustmentCategoriesRawValue(R"(["Kita \/ Schule"])");
  const Archive archive(morning + 3600, std::vector{entry}, std::vector{adjustment}, std::vector{schedule},
                        std::vector{settings});

  EXPECT_EQ(archive.encodedJSON(), R"({
  "balanceAdjustments" : [
    {
      "createdAt" : 1718006400,
      "date" : 1718006400,
      "id" : "00000000-0000-4000-8000-00000000000A",
      "kind" : "appointment",
      "minutes" : -90,
      "modifiedAt" : 1718006400,
      "note" : "Dentist"
    }
  ],
  "exportedAt" : 1718010000,
  "schedules" : [
    {
      "createdAt" : 978307200.5,
      "effectiveFrom" : 978307200,
      "id" : "00000000-0000-4000-8000-000000000005",
      "modifiedAt" : 978307200.5,
      "weekdayMinutes" : [
        480,
        480,
        480,
        480,
        240,
        0,
        0
      ]
    }
  ],
  "schemaVersion" : 1,
  "settings" : [
    {
      "calculationStartDate" : 0,
      "customAdjustmentCategoriesRawValue" : "[\"Kita \\/ Schule\"]",
      "hasCompletedOnboarding" : false,
      "id" : "00000000-0000-4000-8000-000000000001",
      "modifiedAt" : 1718006400,
      "quickActionMinutes" : [
        15,
        30,
        60,
        120
      ],
      "startingBalanceMinutes" : 0,
      "visibleAdjustmentKindsRawValue" : "appointment,personalErrands,longLunch,other",
      "weekdayMinutes" : [
        480,
        480,
        480,
        480,
        480,
        0,
        0
      ]
    }
  ],
  "workEntries" : [
    {
      "breakMinutes" : -5,
      "createdAt" : 1718006400,
      "id" : "00000000-0000-4000-8000-00000000000E",
      "modifiedAt" : 1718006460,
      "note" : "Release 1/2",
      "startedAt" : 1718006400
    }
  ]
})");
  EXPECT_EQ(Archive::decodeJSON(archive.encodedJSON()), archive);
}

TEST(TimeBankArchiveTest, AnEmptyStoreExportsFourEmptyLists) {
  const Archive archive(morning, {}, {}, {}, {});
  const std::string json = archive.encodedJSON();
  EXPECT_EQ(json, std::string("{\n  \"balanceAdjustments\" : [],\n  \"exportedAt\" : ") + std::string(morning1970) +
                      ",\n  \"schedules\" : [],\n  \"schemaVersion\" : 1,\n  \"settings\" : [],\n  \"workEntries\" : []\n}");
  EXPECT_EQ(Archive::decodeJSON(std::string_view(json)), archive);
}

TEST(TimeBankArchiveTest, SortsByInstantThenIdentifierText) {
  const auto entry = [](std::string_view text, Date start) {
    return std::make_shared<WorkEntry>(id(text), start, start + 60, 0, "", start, start);
  };
  const std::vector entries{entry("F0000000-0000-4000-8000-000000000000", morning),
                            entry("a0000000-0000-4000-8000-000000000000", morning),
                            entry("FFFFFFFF-0000-4000-8000-000000000000", morning - 1),
                            entry("90000000-0000-4000-8000-000000000000", morning)};
  std::vector<std::shared_ptr<TimeBankSettings>> settings;
  for (std::string_view text : {"B0000000-0000-4000-8000-000000000000", "20000000-0000-4000-8000-000000000000"}) {
    settings.push_back(std::make_shared<TimeBankSettings>());
    settings.back()->setId(id(text));
    settings.back()->setCalculationStartDate(text[0] == '2' ? morning : morning - 100);
  }
  const Archive archive(morning, entries, {}, {}, settings);
  std::vector<std::string> order;
  for (const auto& record : archive.workEntries) order.push_back(record.id.uuidString().substr(0, 8));
  EXPECT_THAT(order, testing::ElementsAre("FFFFFFFF", "90000000", "A0000000", "F0000000"));
  EXPECT_EQ(archive.settings[0].id.uuidString()[0], '2');
}

TEST(TimeBankArchiveTest, ANonFiniteInstantFailsEncodingAndWritesNothing) {
  Archive archive;
  archive.workEntries.emplace_back().startedAt = Date(std::numeric_limits<double>::quiet_NaN());
  std::string output = "kept";
  EXPECT_THROW(archive.encodeJSON(output), JsonEncodingError);
  EXPECT_EQ(output, "kept");
  archive.workEntries[0].startedAt = morning;
  archive.exportedAt = Date(std::numeric_limits<double>::infinity());
  EXPECT_THROW(archive.encodedJSON(), JsonEncodingError);
}

// A document with one record of each kind, where `entry` replaces the work
// entry's members (after the required ones).
std::string document(std::string_view entry, std::string_view settingsExtra = "") {
  return std::string(R"({"schemaVersion":1,"exportedAt":1.5,"future":{"a":[1]},
    "balanceAdjustments":[{"id":"00000000-0000-4000-8000-00000000000a","date":0,"minutes":-30,"note":"",
      "kind":"custom:S2l0YQ==","createdAt":0,"modifiedAt":0}],
    "schedules":[{"id":"00000000-0000-4000-8000-000000000005","effectiveFrom":0,"weekdayMinutes":[1,2,3,4,5,6,7],
      "createdAt":0,"modifiedAt":0}],
    "settings":[{"id":"00000000-0000-4000-8000-000000000001","calculationStartDate":0,"startingBalanceMinutes":0,
      "weekdayMinutes":[0,0,0,0,0,0,0],"hasCompletedOnboarding":true,"modifiedAt":0)") +
         std::string(settingsExtra) + R"(}],
    "workEntries":[{)" + std::string(entry) + "}]}";
}

constexpr std::string_view validEntry =
    R"("id":"00000000-0000-4000-8000-00000000000e","startedAt":0,"breakMinutes":2.0,"note":"a\/b","createdAt":0,"modifiedAt":0)";

TEST(TimeBankArchiveTest, DecodesNullOptionalsAndIgnoresUnknownKeys) {
  for (std::string_view extra : {"", R"(,"endedAt":null)", R"(,"endedAt":5,"endedAt":null,"colour":"red")"}) {
    const Archive archive = Archive::decodeJSON(document(std::string(validEntry) + std::string(extra),
                                                         R"(,"quickActionMinutes":null,"visibleAdjustmentKindsRawValue":null)"));
    ASSERT_EQ(archive.workEntries.size(), 1u);
    const auto& entry = archive.workEntries[0];
    EXPECT_EQ(entry.endedAt, std::nullopt) << extra;
    EXPECT_EQ(entry.id.uuidString(), "00000000-0000-4000-8000-00000000000E");
    EXPECT_EQ(entry.breakMinutes, 2);
    EXPECT_EQ(entry.note, "a/b");
    EXPECT_EQ(entry.startedAt, Date(-978307200));
    EXPECT_EQ(archive.exportedAt, Date::fromTimeIntervalSince1970(1.5));
    const auto& settings = archive.settings[0];
    EXPECT_EQ(settings.quickActionMinutes, std::nullopt);
    EXPECT_EQ(settings.visibleAdjustmentKindsRawValue, std::nullopt);
    EXPECT_EQ(settings.customAdjustmentCategoriesRawValue, std::nullopt);
    EXPECT_EQ(archive.balanceAdjustments[0].kind, "custom:S2l0YQ==");
  }
  EXPECT_EQ(Archive::decodeJSON(document(std::string(validEntry) + R"(,"endedAt":1e3)")).workEntries[0].endedAt,
            Date(1000 - 978307200));
}

TEST(TimeBankArchiveTest, DecodingFailsOnEveryKindOfBadDocument) {
  const std::string entry(validEntry);
  const std::string withoutNote =
      R"("id":"00000000-0000-4000-8000-00000000000e","startedAt":0,"breakMinutes":0,"createdAt":0,"modifiedAt":0)";
  const std::pair<std::string, std::string_view> failures[] = {
      {"{schemaVersion: 1}", "not valid JSON"},
      {document(entry).substr(0, 200), "not valid JSON"},
      {"[]", "top level: expected an object, found an array"},
      {document(withoutNote), R"(workEntries[0]: missing key "note")"},
      {R"({"schemaVersion":1,"exportedAt":0,"balanceAdjustments":[],"schedules":[],"settings":[]})",
       R"(top level: missing key "workEntries")"},
      {document(entry + R"(,"endedAt":"soon")"), "workEntries[0].endedAt: expected a number, found a string"},
      {document(entry + R"(,"note":7)"), "workEntries[0].note: expected a string, found a number"},
      {document(entry + R"(,"breakMinutes":1.5)"), "workEntries[0].breakMinutes: expected an integer, found the fractional"},
      {document(entry + R"(,"breakMinutes":9223372036854775808)"), "breakMinutes: integer 9223372036854775808 is out of"},
      {document(entry + R"(,"id":"0000000-00000-4000-8000-00000000000e")"), "workEntries[0].id: expected a UUID"},
      {document(entry + R"(,"id":"{00000000-0000-4000-8000-00000000000e}")"), "workEntries[0].id: expected a UUID"},
      {document(entry, R"(,"quickActionMinutes":[15,30.5,60,120])"), "settings[0].quickActionMinutes[1]: expected an integer"},
      {document(entry, R"(,"hasCompletedOnboarding":1)"), "settings[0].hasCompletedOnboarding: expected a Boolean"},
      {document(entry) + "{}", "unexpected content after the top-level value"}};
  for (const auto& [json, message] : failures) {
    EXPECT_THAT(([&, &json = json] { Archive::decodeJSON(json); }),
                ThrowsMessage<JsonDecodingError>(HasSubstr(message)))
        << json;
  }
}

// Validation -----------------------------------------------------------------

template <class Record>
Record record(std::size_t number) {
  Record result;
  result.id = numberedID(number);
  return result;
}
const auto entry = record<Archive::WorkEntryRecord>;
const auto adjustment = record<Archive::BalanceAdjustmentRecord>;

Archive::ScheduleRecord schedule(std::size_t number, std::size_t weekdays = 7) {
  auto result = record<Archive::ScheduleRecord>(number);
  result.weekdayMinutes.assign(weekdays, 480);
  return result;
}

Archive::SettingsRecord settings(std::size_t number, std::size_t weekdays = 7,
                                 std::optional<std::size_t> quickActions = std::nullopt) {
  auto result = record<Archive::SettingsRecord>(number);
  result.weekdayMinutes.assign(weekdays, 0);
  if (quickActions) result.quickActionMinutes = std::vector<std::int64_t>(*quickActions, -7);
  return result;
}

TimeBankArchiveError validationError(const Archive& archive) {
  try {
    archive.validate();
  } catch (const TimeBankArchiveError& error) {
    return error;
  }
  throw std::logic_error("the archive passed validation");
}

TEST(TimeBankArchiveTest, ErrorsCarryTheirMessagesAndCompareByCaseAndVersion) {
  using Case = TimeBankArchiveError::Case;
  EXPECT_STREQ(TimeBankArchiveError::unsupportedSchema(-3).what(), "This archive uses unsupported format version -3.");
  EXPECT_STREQ(TimeBankArchiveError(Case::tooManyRecords).what(), "This archive contains too many records to import safely.");
  EXPECT_STREQ(TimeBankArchiveError(Case::malformedSchedule).what(), "This archive contains an invalid weekly schedule.");
  EXPECT_STREQ(TimeBankArchiveError(Case::malformedQuickActions).what(), "This archive contains invalid quick-action settings.");
  EXPECT_STREQ(TimeBankArchiveError(Case::duplicateIdentifiers).what(), "This archive contains duplicate record identifiers.");
  EXPECT_EQ(TimeBankArchiveError::unsupportedSchema(2), TimeBankArchiveError::unsupportedSchema(2));
  EXPECT_FALSE(TimeBankArchiveError::unsupportedSchema(2) == TimeBankArchiveError::unsupportedSchema(0));
  EXPECT_FALSE(TimeBankArchiveError(Case::tooManyRecords) == TimeBankArchiveError(Case::malformedSchedule));
}

TEST(TimeBankArchiveTest, ValidationReportsTheFirstFailingCheck) {
  using Case = TimeBankArchiveError::Case;
  Archive archive;
  EXPECT_NO_THROW(archive.validate());
  for (std::int64_t version : {0, 2, -1}) {
    archive.schemaVersion = version;
    archive.settings.assign(101, settings(0));  // also too many, and duplicates
    EXPECT_EQ(validationError(archive), TimeBankArchiveError::unsupportedSchema(version));
  }
  archive = Archive();
  archive.settings.assign(101, settings(0, 6));
  EXPECT_EQ(validationError(archive), TimeBankArchiveError(Case::tooManyRecords));
  archive.settings.assign(2, settings(0, 7, 3));
  archive.schedules = {schedule(1), schedule(1, 8)};
  EXPECT_EQ(validationError(archive), TimeBankArchiveError(Case::malformedSchedule));
  archive.schedules = {schedule(1), schedule(1)};
  EXPECT_EQ(validationError(archive), TimeBankArchiveError(Case::malformedQuickActions));
  archive.settings = {settings(0, 7, 4), settings(1, 7, 4)};
  EXPECT_EQ(validationError(archive), TimeBankArchiveError(Case::duplicateIdentifiers));
  archive.schedules = {schedule(1), schedule(2)};
  archive.balanceAdjustments = {adjustment(1), adjustment(2)};
  archive.workEntries = {entry(1)};  // the same identifier in another list is fine
  EXPECT_NO_THROW(archive.validate());
  archive.balanceAdjustments.push_back(adjustment(2));
  EXPECT_EQ(validationError(archive), TimeBankArchiveError(Case::duplicateIdentifiers));

  for (const std::size_t weekdays : {0, 6, 8}) {
    archive = Archive();
    archive.schedules = {schedule(1, weekdays)};
    EXPECT_EQ(validationError(archive), TimeBankArchiveError(Case::malformedSchedule));
    archive = Archive();
    archive.settings = {settings(1, weekdays)};
    EXPECT_EQ(validationError(archive), TimeBankArchiveError(Case::malformedSchedule));
  }
  archive.settings = {settings(1, 7, 5)};
  EXPECT_EQ(validationError(archive), TimeBankArchiveError(Case::malformedQuickActions));
}

TEST(TimeBankArchiveTest, ValidationAcceptsListsUpToTheirLimits) {
  const auto fill = [](auto& list, std::size_t count, auto make) {
    list.clear();
    for (std::size_t i = 0; i < count; ++i) list.push_back(make(i));
  };
  Archive archive;
  fill(archive.workEntries, 100000, entry);
  fill(archive.balanceAdjustments, 100000, adjustment);
  fill(archive.schedules, 10000, [](std::size_t i) { return schedule(i); });
  fill(archive.settings, 100, [](std::size_t i) { return settings(i); });
  EXPECT_NO_THROW(archive.validate());
  const TimeBankArchiveError tooMany(TimeBankArchiveError::Case::tooManyRecords);
  archive.workEntries.push_back(entry(100000));
  EXPECT_EQ(validationError(archive), tooMany);
  archive.workEntries.pop_back();
  archive.balanceAdjustments.push_back(adjustment(100000));
  EXPECT_EQ(validationError(archive), tooMany);
  archive.balanceAdjustments.pop_back();
  archive.schedules.push_back(schedule(10000));
  EXPECT_EQ(validationError(archive), tooMany);
  archive.schedules.pop_back();
  archive.settings.push_back(settings(100));
  EXPECT_EQ(validationError(archive), tooMany);
}

TEST(TimeBankArchiveTest, DecodingValidates) {
  const std::string json = document(std::string(validEntry), R"(,"quickActionMinutes":[15,30,60])");
  EXPECT_THAT([&] { Archive::decodeJSON(json); },
              ThrowsMessage<TimeBankArchiveError>(testing::StrEq("This archive contains invalid quick-action settings.")));
}

// Round trip -----------------------------------------------------------------

void appendUTF8(std::string& text, char32_t c) {
  if (c < 0x80) {
    text += static_cast<char>(c);
  } else if (c < 0x800) {
    text += static_cast<char>(0xC0 | (c >> 6));
    text += static_cast<char>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    text += static_cast<char>(0xE0 | (c >> 12));
    text += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    text += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    text += static_cast<char>(0xF0 | (c >> 18));
    text += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    text += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    text += static_cast<char>(0x80 | (c & 0x3F));
  }
}

// Any Unicode text, with the characters JSON escapes well represented.
rc::Gen<std::string> anyText() {
  const auto scalar = rc::gen::oneOf(
      rc::gen::element<char32_t>(U'/', U'"', U'\\', U'\n', U'\t', U'\0', U'\x1F', U'\x7F', U'\u2028', U'\U0001F600'),
      rc::gen::inRange<char32_t>(0, 0x80), rc::gen::inRange<char32_t>(0x80, 0xD800),
      rc::gen::inRange<char32_t>(0xE000, 0x110000));
  return rc::gen::map(rc::gen::container<std::vector<char32_t>>(scalar), [](const std::vector<char32_t>& scalars) {
    std::string text;
    for (const char32_t c : scalars) appendUTF8(text, c);
    return text;
  });
}

// Whole seconds, well inside the range where t + 978307200 is exact.
rc::Gen<Date> anyInstant() {
  return rc::gen::map(rc::gen::inRange<std::int64_t>(-40'000'000'000, 40'000'000'000),
                      [](std::int64_t seconds) { return Date(static_cast<double>(seconds)); });
}

template <class T>
rc::Gen<std::optional<T>> maybe(rc::Gen<T> gen) {
  return rc::gen::oneOf(rc::gen::just(std::optional<T>()), rc::gen::map(gen, [](T v) { return std::optional<T>(v); }));
}

rc::Gen<std::vector<std::int64_t>> integers(std::size_t count) {
  return rc::gen::container<std::vector<std::int64_t>>(count, rc::gen::arbitrary<std::int64_t>());
}

RC_GTEST_PROP(TimeBankArchiveTest, ValidArchivesWithWholeSecondsRoundTrip, ()) {
  Archive archive;
  archive.exportedAt = *anyInstant();
  std::size_t next = *rc::gen::arbitrary<std::uint32_t>();  // distinct identifiers, lists share some
  const auto count = [] { return *rc::gen::inRange<std::size_t>(0, 6); };
  for (std::size_t n = count(); n > 0; --n) {
    archive.workEntries.push_back({numberedID(next++), *anyInstant(), *maybe(anyInstant()),
                                   *rc::gen::arbitrary<std::int64_t>(), *anyText(), *anyInstant(), *anyInstant()});
  }
  for (std::size_t n = count(); n > 0; --n) {
    archive.balanceAdjustments.push_back({numberedID(next++), *anyInstant(), *rc::gen::arbitrary<std::int64_t>(),
                                          *anyText(), *anyText(), *anyInstant(), *anyInstant()});
  }
  next -= *rc::gen::inRange<std::size_t>(0, 3);
  for (std::size_t n = count(); n > 0; --n) {
    archive.schedules.push_back({numberedID(next++), *anyInstant(), *integers(7), *anyInstant(), *anyInstant()});
  }
  for (std::size_t n = count(); n > 0; --n) {
    archive.settings.push_back({numberedID(next++), *anyInstant(), *rc::gen::arbitrary<std::int64_t>(), *integers(7),
                                *maybe(integers(4)), *maybe(anyText()), *maybe(anyText()),
                                *rc::gen::arbitrary<bool>(), *anyInstant()});
  }
  RC_ASSERT(Archive::decodeJSON(archive.encodedJSON()) == archive);
}

}  // namespace
}  // namespace quillmont
