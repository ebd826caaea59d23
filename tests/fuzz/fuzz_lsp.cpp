// Sessions of the language server. Requires one answer to each request, and well-formed messages.
//
// An input that begins with "Content-Length" is the stream itself. Of any other, each line is a message without its header. The
// streams are files, which are always ready, so a run does not depend on the time.
//
// The files of kNew, such as file:///new/shop.xml, are compared with those of a baseline.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "base/file_descriptor.h"
#include "base/uri.h"
#include "fuzz/input.h"
#include "fuzz/require.h"
#include "lsp/frames.h"
#include "lsp/json.h"
#include "lsp/serve.h"

namespace {

using Json = nlohmann::json;

constexpr std::string_view kNew = "file:///new/";
constexpr char kOldShop[] =
    "<metalib name=\"shop\" version=\"1\">\n"
    "  <meta name=\"items\">\n"
    "    <entry name=\"sku\" type=\"uint32\"/>\n"
    "    <entry name=\"price\" type=\"int64\"/>\n"
    "    <primarykey entries=\"sku\"/>\n"
    "  </meta>\n"
    "</metalib>\n";

// A directory with the baseline, outside of repositories. There is no git: starting it would take most of the time.
class Workplace {
 public:
  Workplace() : path_(std::filesystem::temp_directory_path() / "fuzz_lsp.XXXXXX") {
    fuzz::Require(::mkdtemp(path_.data()) != nullptr && ::setenv("PATH", path_.c_str(), 1) == 0, "there is a directory");
    std::filesystem::create_directory(path_ + "/new");
    std::filesystem::create_directory(Baseline());
    std::ofstream(Baseline() + "/shop.xml") << kOldShop;
  }
  Workplace(const Workplace&) = delete;
  Workplace& operator=(const Workplace&) = delete;
  ~Workplace() {
    std::filesystem::current_path("/");
    std::filesystem::remove_all(path_);
  }

  std::string Baseline() const { return path_ + "/old"; }

  // With the addresses of existing files.
  std::string Located(std::string line) const {
    const std::string address = korvel::UriOf(path_ + "/new/");
    for (std::size_t at = line.find(kNew); at != std::string::npos; at = line.find(kNew, at + address.size())) {
      line.replace(at, kNew.size(), address);
    }
    return line;
  }

 private:
  std::string path_;
};

const Workplace& Place() {
  static const Workplace place;
  return place;
}

korvel::FileDescriptor FileWith(std::string_view text) {
  korvel::FileDescriptor file(::memfd_create("stream", MFD_CLOEXEC));
  fuzz::Require(file.get() >= 0 && korvel::WriteAll(file.get(), text) == 0 && ::lseek(file.get(), 0, SEEK_SET) == 0,
                "there is memory for the stream");
  return file;
}

std::string ContentsOf(const korvel::FileDescriptor& file) {
  std::string text(static_cast<std::size_t>(::lseek(file.get(), 0, SEEK_END)), '\0');
  fuzz::Require(::pread(file.get(), text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()), "the output can be read");
  return text;
}

std::vector<Json> Messages(const std::string& stream) {
  std::vector<Json> messages;
  korvel::lsp::FrameParser parser;
  parser.Append(stream);
  while (const auto text = parser.Next()) {
    fuzz::Require(Json::accept(*text), "a message of the server is JSON");
    messages.push_back(Json::parse(*text));
  }
  fuzz::Require(parser.IsBetweenMessages(), "the server writes whole messages");
  return messages;
}

// How often each id is answered.
std::map<Json, int> Answers(const std::string& output) {
  std::map<Json, int> answers;
  for (const Json& message : Messages(output)) {
    fuzz::Require(message.is_object() && message.value("jsonrpc", "") == "2.0", "a message is one of the protocol");
    if (message.contains("method")) continue;
    fuzz::Require(message.contains("result") != message.contains("error"), "an answer is a result or an error");
    ++answers[message.at("id")];
  }
  return answers;
}

// The ids of requests among the messages, up to the one with which the server ends.
std::map<Json, int> Requests(const std::vector<std::string>& messages) {
  std::map<Json, int> requests;
  for (const std::string& text : messages) {
    try {
      const Json message = korvel::lsp::ParseMessage(text);
      if (!message.is_object()) continue;
      const Json method = message.value("method", Json());
      const Json id = message.value("id", Json());
      if (method == "exit" && id.is_null()) break;
      const bool is_answer = !method.is_string() && (message.contains("result") || message.contains("error"));
      if (!is_answer && (id.is_string() || id.is_number_integer())) ++requests[id];
    } catch (const korvel::lsp::RequestError&) {
      // Its answer has no id.
    }
  }
  return requests;
}

// The output; `is_cut` if the stream is not the protocol.
std::string Serve(std::string_view stream, bool& is_cut) {
  static const korvel::lsp::Options options{
      .baselines = [](const korvel::Project*) { return std::vector<std::string>{Place().Baseline()}; }, .uses_projects = false};
  const korvel::FileDescriptor input = FileWith(stream);
  const korvel::FileDescriptor output = FileWith("");
  const std::filesystem::path directory = std::filesystem::current_path();
  try {
    korvel::lsp::Serve(input.get(), output.get(), options);
  } catch (const korvel::lsp::FrameError&) {
    is_cut = true;
  }
  std::filesystem::current_path(directory);  // the server changes it
  return ContentsOf(output);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  bool is_cut = false;
  if (bytes.starts_with("Content-Length")) {
    Answers(Serve(bytes, is_cut));
    return 0;
  }
  std::vector<std::string> lines;
  std::string stream;
  for (fuzz::Input input(data, size); !input.IsEmpty();) {
    stream += korvel::lsp::Framed(lines.emplace_back(Place().Located(input.Line())));
  }
  const std::map<Json, int> answers = Answers(Serve(stream, is_cut));
  fuzz::Require(!is_cut, "what has headers is the protocol");
  for (const auto& [id, number] : Requests(lines)) {
    fuzz::Require(answers.contains(id) && answers.at(id) == number, "each request is answered once");
  }
  return 0;
}
