#include "lsp/frames.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace korvel::lsp {
namespace {

std::vector<std::string> MessagesOf(FrameParser& parser) {
  std::vector<std::string> messages;
  while (const std::optional<std::string> message = parser.Next()) messages.push_back(*message);
  return messages;
}

TEST(FramesTest, FindsMessagesHoweverTheyArrive) {
  const std::vector<std::string> sent = {"{}", "", std::string("\0\r\n\r\n", 5), std::string(100'000, 'x')};
  std::string stream;
  for (const std::string& one : sent) stream += Framed(one);
  for (const std::size_t step : {std::size_t{1}, std::size_t{2}, std::size_t{7}, std::size_t{64}, stream.size()}) {
    FrameParser parser;
    std::vector<std::string> received;
    for (std::size_t i = 0; i < stream.size(); i += step) {
      parser.Append(std::string_view(stream).substr(i, step));
      for (std::string& one : MessagesOf(parser)) received.push_back(std::move(one));
    }
    EXPECT_EQ(received, sent) << step;
    EXPECT_TRUE(parser.IsBetweenMessages());
  }
}

TEST(FramesTest, IgnoresOtherHeadersAndCase) {
  FrameParser parser;
  parser.Append("Content-Type: application/vscode-jsonrpc; charset=utf-8\r\ncontent-length:2\r\n\r\n{}");
  EXPECT_EQ(parser.Next(), "{}");
}

TEST(FramesTest, KnowsWhetherAMessageIsIncomplete) {
  FrameParser parser;
  EXPECT_TRUE(parser.IsBetweenMessages());
  parser.Append("Content-Length: 2\r\n\r\n{");
  EXPECT_EQ(parser.Next(), std::nullopt);
  EXPECT_FALSE(parser.IsBetweenMessages());
}

std::string ErrorOf(const std::string& stream) {
  FrameParser parser;
  parser.Append(stream);
  try {
    parser.Next();
  } catch (const FrameError& error) {
    return error.what();
  }
  return "";
}

TEST(FramesTest, RefusesWhatIsNoMessage) {
  EXPECT_EQ(ErrorOf("Content-Length: -1\r\n\r\n"), "Content-Length is '-1'; allowed: the length of the message in bytes");
  EXPECT_EQ(ErrorOf("Content-Length: 2x\r\n\r\n"), "Content-Length is '2x'; allowed: the length of the message in bytes");
  EXPECT_EQ(ErrorOf("Content-Length:\r\n\r\n"), "Content-Length is ''; allowed: the length of the message in bytes");
  EXPECT_EQ(ErrorOf("Content-Length: 536870913\r\n\r\n"), "a message has 536870913 bytes; allowed: at most 536870912");
  EXPECT_EQ(ErrorOf("Host: here\r\n\r\n"), "a header has no Content-Length; allowed: messages of the language server protocol");
  EXPECT_EQ(ErrorOf(std::string(5000, 'x')), "the header of a message does not end");
  EXPECT_EQ(ErrorOf(std::string(4000, 'x')), "");
}

}  // namespace
}  // namespace korvel::lsp
