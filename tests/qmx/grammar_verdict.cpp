#include "qmx/grammar_verdict.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>

namespace grammar_test {
namespace {

// What xmllint prints about the files.
std::string Validate(const std::vector<std::filesystem::path>& files) {
  std::string command = std::string("'") + KORVEL_XMLLINT + "' --noout --nonet --relaxng '" + KORVEL_GRAMMAR + "'";
  for (const auto& file : files) command += " '" + file.string() + "'";
  std::FILE* const output = popen((command + " 2>&1").c_str(), "r");
  if (output == nullptr) {
    ADD_FAILURE() << "cannot run xmllint";
    return "";
  }
  std::string text;
  std::array<char, 4096> piece{};
  while (const std::size_t size = std::fread(piece.data(), 1, piece.size(), output)) text.append(piece.data(), size);
  const int status = pclose(output);
  const int code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  // 1: not well-formed, 3: not valid, 4: both, in several files. Other codes are failures of xmllint.
  EXPECT_TRUE(code == 0 || code == 1 || code == 3 || code == 4) << "xmllint ended with " << code << "\n" << text;
  return text;
}

}  // namespace

std::vector<bool> GrammarAccepts(const std::vector<std::filesystem::path>& files) {
  std::istringstream output(Validate(files));
  std::set<std::string> lines;
  for (std::string line; std::getline(output, line);) lines.insert(line);
  std::vector<bool> accepted;
  for (const auto& file : files) accepted.push_back(lines.contains(file.string() + " validates"));
  return accepted;
}

std::vector<bool> GrammarAcceptsTexts(const std::vector<std::string>& texts) {
  const auto directory = std::filesystem::temp_directory_path() / ("qmx_grammar_test_" + std::to_string(getpid()));
  std::filesystem::create_directory(directory);
  std::vector<std::filesystem::path> files;
  for (const std::string& text : texts) {
    files.push_back(directory / (std::to_string(files.size()) + ".xml"));
    std::ofstream(files.back(), std::ios::binary) << text;
  }
  const std::vector<bool> accepted = GrammarAccepts(files);
  std::filesystem::remove_all(directory);
  return accepted;
}

}  // namespace grammar_test
