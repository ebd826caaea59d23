// Tests the exact bytes of text and JSON lines.
#include "vesk/record_line.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace vesk {
namespace {

Record WithMessage(std::string_view message) {
  Record record;
  record.priority = 300;
  record.file = "src/common/modify_table.cpp";
  record.line = 42;
  record.function = "KorvelModifyTable";
  record.message = message;
  return record;
}

std::string TextOf(std::string_view message) {
  const std::string line = TextLine(WithMessage(message));
  const std::string front = "ERROR src/common/modify_table.cpp:42 KorvelModifyTable: ";
  EXPECT_EQ(line.substr(0, front.size()), front);
  return line.substr(front.size());
}

// The message as a JSON reader returns it. The reader refuses invalid UTF-8 and unescaped control characters.
std::string ReadBack(std::string_view message) {
  const auto object = nlohmann::json::parse("{" + JsonMembers(WithMessage(message)) + "}", nullptr, false);
  return object.is_object() ? object["message"].get<std::string>() : "(no JSON)";
}

TEST(PriorityName, UsesNextLessSeverePriority) {
  EXPECT_EQ(PriorityName(-1), "ERROR");
  EXPECT_EQ(PriorityName(300), "ERROR");
  EXPECT_EQ(PriorityName(301), "WARN");
  EXPECT_EQ(PriorityName(400), "WARN");
  EXPECT_EQ(PriorityName(401), "INFO");
  EXPECT_EQ(PriorityName(600), "INFO");
  EXPECT_EQ(PriorityName(800), "INFO");
}

TEST(TextLine, KeepsReadableText) {
  EXPECT_EQ(TextOf("entry:'uid', 100% \xEF\xBC\x8C \xF0\x9F\x93\x84"), "entry:'uid', 100% \xEF\xBC\x8C \xF0\x9F\x93\x84");
  EXPECT_EQ(TextOf(""), "");
}

TEST(TextLine, EscapesLineBreaks) {
  EXPECT_EQ(TextOf("a\nb\rc\td\\n"), "a\\nb\\rc\\td\\\\n");
  EXPECT_EQ(TextOf(std::string_view("\0\x1b[31m\x1f\x7f", 8)), "\\x00\\x1b[31m\\x1f\\x7f");
  EXPECT_EQ(TextOf("\xC2\x85 \xC2\x9F \xC2\xA0"), "\\u0085 \\u009f \xC2\xA0");
  EXPECT_EQ(TextOf("\xE2\x80\xA7\xE2\x80\xA8\xE2\x80\xA9"), "\xE2\x80\xA7\\u2028\\u2029");
}

TEST(TextLine, EscapesHiddenCharactersAndCommandsOfServices) {
  EXPECT_EQ(TextOf("a\xE2\x80\xAE"
                   "b\xEF\xBB\xBF \xF3\xA0\x81\x81"),
            "a\\u202eb\\ufeff \\U000e0041");
  EXPECT_EQ(TextOf("a ##[error]b # ##"), "a \\x23#[error]b # ##");
}

TEST(TextLine, EscapesInvalidUtf8) {
  EXPECT_EQ(TextOf("\x80 \xFF \xC0\xAF \xC3"), "\\x80 \\xff \\xc0\\xaf \\xc3");
  EXPECT_EQ(TextOf("\xED\xA0\x80 \xF4\x90\x80\x80"), "\\xed\\xa0\\x80 \\xf4\\x90\\x80\\x80");
}

TEST(TextLine, EscapesFileAndFunctionToo) {
  Record record = WithMessage("m");
  record.file = "a\nb";
  record.function = "c\nd";
  EXPECT_EQ(TextLine(record), "ERROR a\\nb:42 c\\nd: m");
}

TEST(JsonMembers, HasMembersInOrder) {
  EXPECT_EQ(JsonMembers(WithMessage("say \"no\"\n")),
            "\"priority\":300,\"level\":\"ERROR\",\"file\":\"src/common/modify_table.cpp\",\"line\":42,"
            "\"function\":\"KorvelModifyTable\",\"message\":\"say \\\"no\\\"\\n\"");
}

TEST(JsonMembers, EscapesHiddenCharactersAndCommandsOfServices) {
  const std::string message = "a\x7F \xC2\x85 \xE2\x80\xAE \xF3\xA0\x81\x81 ##[error]";
  const std::string members = JsonMembers(WithMessage(message));
  EXPECT_TRUE(members.ends_with("\"a\\u007f \\u0085 \\u202e \\udb40\\udc41 \\u0023#[error]\"")) << members;
  EXPECT_EQ(ReadBack(message), message);
}

TEST(JsonMembers, PreservesAscii) {
  std::string message;
  for (char byte = 0; byte < 0x7F; ++byte) message += byte;
  message += '\x7F';
  EXPECT_EQ(ReadBack(message), message);
  EXPECT_EQ(JsonMembers(WithMessage(message)).find('\n'), std::string::npos);
}

TEST(JsonMembers, PreservesCharactersOfEveryLength) {
  for (const std::string_view character : {"\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xE1\x80\x80", "\xED\x9F\xBF", "\xEE\x80\x80",
                                           "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF1\x80\x80\x80", "\xF4\x8F\xBF\xBF"}) {
    EXPECT_EQ(ReadBack(character), character);
  }
}

struct BadBytes {
  const char* what;
  std::string_view bytes;
  std::size_t replacements;
};

TEST(JsonMembers, ReplacesInvalidUtf8) {
  for (const BadBytes& bad : {BadBytes{"continuation alone", "\x80", 1}, BadBytes{"never a byte of UTF-8", "\xFE", 1},
                              BadBytes{"overlong slash", "\xC0\xAF", 2}, BadBytes{"overlong in three", "\xE0\x9F\xBF", 3},
                              BadBytes{"surrogate", "\xED\xA0\x80", 3}, BadBytes{"overlong in four", "\xF0\x8F\xBF\xBF", 4},
                              BadBytes{"past the last character", "\xF4\x90\x80\x80", 4}, BadBytes{"cut in two", "\xE2\x82", 2},
                              BadBytes{"cut in four", "\xF0\x9F\x93", 3}, BadBytes{"third byte wrong", "\xE2\x82\xC3", 3}}) {
    SCOPED_TRACE(bad.what);
    std::string expected = "<";
    for (std::size_t i = 0; i < bad.replacements; ++i) expected += "\xEF\xBF\xBD";
    EXPECT_EQ(ReadBack("<" + std::string(bad.bytes) + ">"), expected + ">");
    EXPECT_EQ(ReadBack("<" + std::string(bad.bytes)), expected);
  }
}

TEST(JsonMembers, IsValidForEveryPairOfBytes) {
  for (int first = 0; first < 256; ++first) {
    std::string message;
    for (int second = 0; second < 256; ++second) message += {static_cast<char>(first), static_cast<char>(second), ' '};
    EXPECT_NE(ReadBack(message), "(no JSON)") << first;
  }
}

}  // namespace
}  // namespace vesk
