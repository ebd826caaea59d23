# Writes a source file that holds the pages of docs/rules.
#
#   cmake -DDIRECTORY=docs/rules -DOUTPUT=rule_doc_files.cpp -P cmake/EmbedRuleDocs.cmake
#
# README.md, the index, is left out: the program writes it.

function(as_literal name result)
  file(READ "${DIRECTORY}/${name}" text)
  set(${result} "{\"${name}\", R\"page(${text})page\"}" PARENT_SCOPE)
endfunction()

file(GLOB names RELATIVE "${DIRECTORY}" "${DIRECTORY}/*.md")
list(SORT names)
list(REMOVE_ITEM names README.md result-codes.md)
set(rules "")
foreach(name IN LISTS names)
  as_literal("${name}" literal)
  string(APPEND rules "    ${literal},\n")
endforeach()
as_literal(result-codes.md codes)
file(WRITE "${OUTPUT}" "// Written by cmake/EmbedRuleDocs.cmake from docs/rules.
#include \"rule_docs/rule_doc_files.h\"

namespace korvel {
namespace {

constexpr RuleDocFile kRules[] = {
${rules}};
constexpr RuleDocFile kResultCodes${codes};

}  // namespace

std::span<const RuleDocFile> RuleDocFiles() { return kRules; }

const RuleDocFile& ResultCodesFile() { return kResultCodes; }

}  // namespace korvel
")
