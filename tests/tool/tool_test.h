// Shared by the tests of the program: a directory with schema files, and running the program in it.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "process.h"

namespace tool_test {

// A schema file. The library is on line 1, each table of `tables` on a line of its own.
std::string Library(int version, const std::vector<std::string>& tables, const std::string& protocol = "QMX");

// A table on one line, of a key field `uid`, other fields and attributes.
struct TableText {
  std::string name = "orders";
  std::string attributes = {};  // text of customattr; empty = none
  std::string key_type = "uint64";
  std::string fields = {};  // entry elements
};
std::string Table(const TableText& table = {});

// The usual files: old.xml and same.xml hold orders and users, wide.xml changes the key of orders.
class ToolTest : public testing::Test {
 protected:
  ToolTest();
  ~ToolTest() override;

  void Write(const std::string& file, const std::string& text) const;
  std::string Read(const std::string& file) const;
  std::filesystem::path PathOf(const std::string& file) const { return directory_ / file; }
  // Names of all files, sorted.
  std::vector<std::string> Files() const;

  // Runs the program in the directory.
  Outcome Korvelcheck(const std::vector<std::string>& arguments) const;
  Outcome Korvelcheck(Call call) const;

  // The commands that the program's help lists.
  std::vector<std::string> CommandNames() const;

 private:
  std::filesystem::path directory_;
};

// The text reports about the usual files.
inline constexpr char kAllowedReport[] =
    "verdict: allowed\n0 tables refused, 2 allowed (0 changed, 2 unchanged); 2 compared, 0 new, 0 removed\n";
// The same for a command that does not find out which tables changed.
inline constexpr char kAllowedPairReport[] = "verdict: allowed\n0 tables refused, 2 allowed; 2 compared, 0 new, 0 removed\n";
inline constexpr char kWideReport[] =
    "verdict: refused\n"
    "wide.xml:2:1: refused [primary-key.size] the size of a primary key field changed\n"
    "  checker: The size of primarykey can't be modified! entry:'uid' metaname:'orders'\n"
    "  table orders: -3 ERROR_VALUE_FIELD\n"
    "1 table refused, 1 allowed; 2 compared, 0 new, 0 removed\n"
    "Run 'korvelcheck explain primary-key.size' for the rule.\n";
// The same for a command that checks changes one by one, as Verdicts returns it.
inline constexpr char kWideFinding[] =
    "verdict: refused\n"
    "wide.xml:2:1: refused: table orders: -3 ERROR_VALUE_FIELD\n"
    "wide.xml:2:52: refused [primary-key.size] the size of a primary key field changed\n"
    "  checker: The size of primarykey can't be modified! entry:'uid' metaname:'orders'\n"
    "1 table refused, 1 allowed (0 changed, 1 unchanged); 2 compared, 0 new, 0 removed; 1 finding, 0 waived\n";

// The lines of a text report with the verdicts and texts of the checker, without details and the hints at the end.
std::string Verdicts(const std::string& report);

// The whole outcome at once.
void ExpectOutcome(const Outcome& outcome, int exit_code, const std::string& out, const std::string& err);

// The same with only the verdicts of the report, and nothing on standard error.
void ExpectVerdicts(const Outcome& outcome, int exit_code, const std::string& verdicts);

// Exit code 2, this on standard error, nothing on standard output but a JSON report that says that the check is incomplete.
void ExpectInputError(const Outcome& outcome, const std::string& err);

}  // namespace tool_test
