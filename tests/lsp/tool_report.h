// What the program reports about a file, in the form of the server's diagnostics.
#pragma once

#include <string>
#include <vector>

#include "client.h"

namespace lsp_test {

// Problems that a check shows in one file: "LINE:CHARACTER[-LINE:CHARACTER] SEVERITY RULE FINGERPRINT MESSAGE", sorted. Lines and
// characters are those of the protocol. A fault has no end.
using Problems = std::vector<std::string>;

// Those of a list of diagnostics.
Problems ProblemsOf(const Json& diagnostics);

// Those of a SARIF report of `korvelcheck check` about `file`, which has this text. What the report shows elsewhere is at the
// begin.
Problems ProblemsOfReport(const Json& sarif, const std::string& file, const std::string& text);

// Calls the program in this process, whose working directory must be that of the call. Returns its standard output.
std::string CallProgram(const std::vector<std::string>& arguments);

}  // namespace lsp_test
