// The texts of the versions of a file, for a page that compares any two of them. Each different line is stored once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace korvel {

class VersionTexts {
 public:
  // Lines of all versions together; a version that exceeds it has no text.
  static constexpr std::size_t kMaxLines = 1'000'000;

  // Adds the text of the version at `version`.
  void Add(std::size_t version, std::string_view text);

  const std::vector<std::string>& lines() const { return lines_; }
  // The positions in lines() of the lines of each version; empty for a version without a text.
  const std::map<std::size_t, std::vector<std::uint32_t>>& texts() const { return texts_; }

 private:
  std::vector<std::string> lines_;
  std::map<std::string, std::uint32_t, std::less<>> ids_;
  std::map<std::size_t, std::vector<std::uint32_t>> texts_;
  std::size_t count_ = 0;
};

}  // namespace korvel
