#include "platform/foundation/JsonWriter.h"

#include <gtest/gtest.h>

#include <limits>

namespace quillmont {
namespace {

template <class Write>
std::string written(JsonWriter::Options options, Write write) {
  std::string output;
  JsonWriter writer(output, options);
  write(writer);
  return output;
}

std::string encodedString(std::string_view text, bool escapeSlashes = true) {
  return written({.escapeSlashes = escapeSlashes}, [&](JsonWriter& writer) { writer.string(text); });
}

std::string encodedNumber(double value) {
  return written({}, [&](JsonWriter& writer) { writer.number(value); });
}

void writeSample(JsonWriter& writer) {
  writer.beginObject();
  writer.key("entries");
  writer.beginArray();
  writer.integer(1);
  writer.number(2.5);
  writer.beginObject();
  writer.key("done");
  writer.boolean(true);
  writer.key("note");
  writer.null();
  writer.endObject();
  writer.endArray();
  writer.key("empty");
  writer.beginObject();
  writer.endObject();
  writer.key("none");
  writer.beginArray();
  writer.endArray();
  writer.endObject();
}

TEST(JsonWriterTest, CompactAndPrettyLayouts) {
  EXPECT_EQ(written({}, writeSample), R"({"entries":[1,2.5,{"done":true,"note":null}],"empty":{},"none":[]})");
  EXPECT_EQ(written({.prettyPrinted = true}, writeSample),
            "{\n  \"entries\" : [\n    1,\n    2.5,\n    {\n      \"done\" : true,\n      \"note\" : null\n    }\n  ],\n"
            "  \"empty\" : {},\n  \"none\" : []\n}");
}

TEST(JsonWriterTest, StringEscapes) {
  EXPECT_EQ(encodedString("Team/1:1"), R"("Team\/1:1")");
  EXPECT_EQ(encodedString("Team/1:1", false), R"("Team/1:1")");
  EXPECT_EQ(encodedString(R"(say "hi" \ bye)"), R"("say \"hi\" \\ bye")");
  EXPECT_EQ(encodedString(std::string_view("\b\f\n\r\t\x01\x1f\0", 8)), R"("\b\f\n\r\t\u0001\u001f\u0000")");
  EXPECT_EQ(encodedString("Zürich ☕ \x7f"), "\"Zürich ☕ \x7f\"");
  EXPECT_EQ(written({}, [](JsonWriter& writer) {
              writer.beginObject();
              writer.key("a/\"b\"");  // keys are escaped alike
              writer.string("");
              writer.endObject();
            }),
            R"({"a\/\"b\"":""})");
}

TEST(JsonWriterTest, NumbersAreTheShortestRoundTripText) {
  EXPECT_EQ(encodedNumber(16200.0), "16200");
  EXPECT_EQ(encodedNumber(978307200.5), "978307200.5");
  EXPECT_EQ(encodedNumber(0.1), "0.1");
  EXPECT_EQ(encodedNumber(-0.0), "-0");
  EXPECT_EQ(encodedNumber(1e21), "1e+21");
  EXPECT_EQ(encodedNumber(5e-324), "5e-324");
  for (double value : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                       -std::numeric_limits<double>::infinity()}) {
    EXPECT_THROW(encodedNumber(value), JsonEncodingError);
  }
}

#ifndef NDEBUG
TEST(JsonWriterDeathTest, StructuralMisuseAssertsInDebugBuilds) {
  EXPECT_DEATH(written({}, [](JsonWriter& writer) {
                 writer.beginObject();
                 writer.integer(1);
               }),
               "without a key");
  EXPECT_DEATH(written({.sortedKeys = true}, [](JsonWriter& writer) {
                 writer.beginObject();
                 writer.key("b");
                 writer.null();
                 writer.key("a");
               }),
               "out of order");
}
#endif

}  // namespace
}  // namespace quillmont
