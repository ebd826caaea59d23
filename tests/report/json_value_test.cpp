// JSON values as text, compared with those of another implementation.
#include "report/render/json_value.h"

#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>

namespace report_test {
namespace {

using korvel::Json;
using Other = nlohmann::ordered_json;

std::string Dump(const Other& json, int indent) { return json.dump(indent, ' ', false, Other::error_handler_t::replace); }

TEST(JsonValue, HasTextOfEachKind) {
  EXPECT_EQ(Json().dump(2), "null");
  EXPECT_EQ(Json(true).dump(2), "true");
  EXPECT_EQ(Json(std::numeric_limits<std::int64_t>::min()).dump(2), "-9223372036854775808");
  EXPECT_EQ(Json(std::numeric_limits<std::uint64_t>::max()).dump(2), "18446744073709551615");
  EXPECT_EQ(Json::number("98.1").dump(2), "98.1");
  EXPECT_EQ(Json("text").dump(2), "\"text\"");
  EXPECT_EQ(Json::array().dump(2), "[]");
  EXPECT_EQ(Json::object().dump(2), "{}");
  EXPECT_EQ(Json(std::vector<std::string>{"a", "b"}).dump(-1), "[\"a\",\"b\"]");
}

template <class Value>
Value Document() {
  Value json = {{"name", "korvelcheck"}, {"tool", {{"version", "0.1.0"}, {"number", -3}}}, {"none", Value()}};
  json["list"] = Value::array({1, true, {{"a", Value::array()}}});
  Value& empty = json["empty"] = Value::array();
  empty.push_back({{"b", std::vector<std::string>{"c"}}});
  json["object"] = Value::object();
  json.update(Value{{"name", "again"}, {"last", 7U}});
  return json;
}

TEST(JsonValue, IsWrittenWithAndWithoutIndentation) {
  for (const int indent : {-1, 0, 2}) EXPECT_EQ(Document<Json>().dump(indent), Dump(Document<Other>(), indent));
}

TEST(JsonValue, EscapesEveryByte) {
  for (int byte = 0; byte < 256; ++byte) {
    const std::string text = std::string("a") + static_cast<char>(byte) + "b";
    EXPECT_EQ(Json(text).dump(2), Dump(text, 2)) << byte;
  }
}

// Every lead byte with every second byte, complete and incomplete: overlong forms, surrogates, truncated characters.
TEST(JsonValue, ReplacesInvalidUtf8) {
  for (int lead = 0xC0; lead < 256; ++lead) {
    for (int second = 0x70; second < 256; ++second) {
      for (const char* rest : {"", "x", "\x80", "\x80x", "\x80\x80", "\x80\xC2\x80", "\xE2\x82"}) {
        const std::string text = std::string(1, static_cast<char>(lead)) + static_cast<char>(second) + rest;
        ASSERT_EQ(Json(text).dump(-1), Dump(text, -1)) << lead << " " << second << " " << rest;
      }
    }
  }
}

TEST(JsonValue, ListOfPairsIsObject) {
  EXPECT_EQ((Json{{"a", 1}}).dump(-1), "{\"a\":1}");
  EXPECT_EQ((Json{"a", 1}).dump(-1), "[\"a\",1]");
  EXPECT_EQ((Json{{"a", "b", "c"}}).dump(-1), "[[\"a\",\"b\",\"c\"]]");
}

}  // namespace
}  // namespace report_test
