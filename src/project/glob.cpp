// Matches paths with patterns; does not look at files. Tested by tests/tool/glob_test.cpp.
#include "project/glob.h"

#include <algorithm>
#include <cstddef>
#include <optional>

#include "base/text.h"

namespace korvel {
namespace {

constexpr std::string_view kAnyDirectories = "**";

// The names of a path, first to last.
class Parts {
 public:
  explicit Parts(std::string_view path) : rest_(path), left_(!path.empty()) {}

  bool AtEnd() const { return !left_; }
  std::string_view Front() const { return rest_.substr(0, rest_.find('/')); }
  void Skip() {
    const std::size_t end = rest_.find('/');
    left_ = end != std::string_view::npos;
    rest_ = left_ ? rest_.substr(end + 1) : std::string_view();
  }

 private:
  std::string_view rest_;
  bool left_;
};

void SkipCharacter(std::string_view& text) { text.remove_prefix(std::max<std::size_t>(Utf8Length(text), 1)); }

// Matches one name. Going back to the last '*' is enough: an earlier one could not match more.
bool MatchesName(std::string_view pattern, std::string_view name) {
  std::optional<std::string_view> behind_star;
  std::string_view star_name;
  while (!name.empty()) {
    if (!pattern.empty() && pattern.front() == '*') {
      pattern.remove_prefix(1);
      behind_star = pattern;
      star_name = name;
    } else if (!pattern.empty() && pattern.front() == '?') {
      pattern.remove_prefix(1);
      SkipCharacter(name);
    } else if (!pattern.empty() && pattern.front() == name.front()) {
      pattern.remove_prefix(1);
      name.remove_prefix(1);
    } else if (behind_star) {
      SkipCharacter(star_name);
      pattern = *behind_star;
      name = star_name;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*') == std::string_view::npos;
}

bool HasWildcard(std::string_view text) { return text.find_first_of("*?") != std::string_view::npos; }

}  // namespace

bool MatchesGlob(std::string_view pattern, std::string_view path) {
  Parts patterns(pattern);
  Parts names(path);
  std::optional<Parts> behind_any;
  Parts any_names = names;
  while (!names.AtEnd()) {
    if (!patterns.AtEnd() && patterns.Front() == kAnyDirectories) {
      patterns.Skip();
      if (patterns.AtEnd()) return true;
      behind_any = patterns;
      any_names = names;
    } else if (!patterns.AtEnd() && MatchesName(patterns.Front(), names.Front())) {
      patterns.Skip();
      names.Skip();
    } else if (behind_any) {
      any_names.Skip();
      patterns = *behind_any;
      names = any_names;
    } else {
      return false;
    }
  }
  return patterns.AtEnd();
}

std::string_view FixedDirectory(std::string_view pattern) {
  std::size_t end = 0;
  for (Parts parts(pattern); !parts.AtEnd() && !HasWildcard(parts.Front()); parts.Skip()) {
    const std::size_t next = pattern.find('/', end == 0 ? 0 : end + 1);
    if (next == std::string_view::npos) break;
    end = next;
  }
  return pattern.substr(0, end);
}

}  // namespace korvel
