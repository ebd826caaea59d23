// Signals that editors send to the program.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <optional>
#include <string>

#include "../tool/process.h"
#include "base/file_descriptor.h"
#include "lsp/frames.h"
#include "server_fixture.h"

namespace lsp_test {
namespace {

using korvel::FileDescriptor;
using korvel::lsp::Connection;

class LspSignalTest : public ServerTest {
 protected:
  LspSignalTest() {
    std::filesystem::create_directory(PathOf("pages"));
    for (const char* name : {"in", "out"}) EXPECT_EQ(::mkfifo(PathOf(name).c_str(), 0600), 0);
  }

  // Opens a report and waits until it is written.
  void OpenReport(int input, int output) const {
    Connection program(output, input);
    const auto send = [&](const Json& message) { program.Write(message.dump()); };
    send({{"id", 1}, {"method", "initialize"}, {"params", Json::object()}});
    const Json document = {{"uri", Uri("shop.xml")}, {"version", 1}, {"text", SmallPrice()}};
    send({{"method", "textDocument/didOpen"}, {"params", {{"textDocument", document}}}});
    const Json command = {{"command", "korvelcheck.report"}, {"arguments", {Uri("shop.xml")}}};
    send({{"id", 2}, {"method", "workspace/executeCommand"}, {"params", command}});
    for (Json message = Json::object(); message.value("id", 0) != 2;) {
      program.Wait(std::nullopt);
      message = Json::parse(program.Next().value());
    }
  }

  // Reads until the program has ended.
  static bool EndsOutput(int output) {
    char bytes[4096];
    ssize_t size = 1;
    while (size > 0) size = ::read(output, bytes, sizeof bytes);
    return size == 0;
  }

  bool HasPages() const { return !std::filesystem::is_empty(PathOf("pages")); }
};

TEST_F(LspSignalTest, EndTheServerThatRemovesItsPages) {
  for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
    const auto interrupt = [&](pid_t process) {
      const FileDescriptor input(::open(PathOf("in").c_str(), O_WRONLY | O_CLOEXEC));
      const FileDescriptor output(::open(PathOf("out").c_str(), O_RDONLY | O_CLOEXEC));
      OpenReport(input.get(), output.get());
      EXPECT_TRUE(HasPages());
      ::kill(process, signal);
      EXPECT_TRUE(EndsOutput(output.get()));  // the input is still open
    };
    const tool_test::Outcome outcome =
        tool_test::RunProgram({.arguments = {"lsp"},
                               .directory = PathOf("").string(),
                               .launcher = {"/bin/sh", "-c", "exec \"$@\" < in > out", "sh"},
                               .environment = {"TMPDIR=" + PathOf("pages").string(), "PATH=/usr/bin:/bin"},
                               .meanwhile = interrupt});
    EXPECT_EQ(outcome.exit_code, 1) << outcome.signal << outcome.err;
    EXPECT_FALSE(HasPages());
  }
}

}  // namespace
}  // namespace lsp_test
