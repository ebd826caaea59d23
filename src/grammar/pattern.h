// Patterns of a RELAX NG grammar, as data. write_rng.cpp and write_rnc.cpp write them in the two forms of that language.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace grammar {

struct Pattern {
  enum class Kind {
    kRef,
    kElement,
    kAttribute,
    kGroup,
    kInterleave,
    kChoice,
    kOptional,
    kZeroOrMore,
    kOneOrMore,
    kList,
    kText,
    kValue,
    kData
  };

  Kind kind = Kind::kText;
  std::string name = {};  // kRef, kElement, kAttribute; the value of kValue; the type of kData, from the library of XML Schema
  std::string doc = {};   // kElement, kAttribute, kValue; empty for no documentation
  std::vector<std::pair<std::string, std::string>> params = {};  // kData
  std::vector<Pattern> children = {};                            // of kData: the exceptions
};

struct Definition {
  std::string name;
  Pattern pattern;
};

struct Grammar {
  std::string comment;  // lines, each with a line end; contains no "--"
  std::string start;    // name of a definition
  std::vector<Definition> definitions;
};

}  // namespace grammar
