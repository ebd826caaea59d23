// The grammar of schema files, for editors.
#pragma once

#include <string>

#include "grammar/pattern.h"

namespace grammar {

// The grammar, made from the table that the reader uses (qmx_xml/schema_form.h). It accepts every file that the reader accepts.
Grammar SchemaGrammar();

// The grammar in the XML form (.rng) and in the compact form (.rnc). REQUIRES: names, values and documentation are ASCII, and
// contain no markup, quotes or line ends.
std::string ToRng(const Grammar& grammar);
std::string ToRnc(const Grammar& grammar);

}  // namespace grammar
