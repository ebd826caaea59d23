// The style and the script of HTML reports, embedded when the program is built: src/report/render/html holds them.
#pragma once

#include <string_view>

namespace korvel {

struct Asset {
  std::string_view text;
  std::string_view hash;  // "sha256-...", as a Content-Security-Policy says it
};

extern const Asset kPageStyle;
extern const Asset kPageScript;

}  // namespace korvel
