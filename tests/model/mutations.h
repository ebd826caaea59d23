// Changes of a library, each with a label and, if it is known, the expected verdict of the main check.
#pragma once

#include <span>

#include "model/random.h"
#include "model/rules.h"
#include "model/schema_values.h"

namespace model {

// The verdict if the change is the only one of a valid library: the text of the refusal, kSucceeded if it is allowed, kEnd if
// that depends on the library.
struct Mutation {
  const char* label;
  TextId record;  // both libraries in the record format, in which the table was created
  TextId tlv;     // both libraries in TLV, in which the table was created
  // False if the change does not apply to the library. REQUIRES: it has a table "t".
  bool (*apply)(LibraryDecl& library, Random& random);
};

std::span<const Mutation> FieldMutations();  // changes of fields of the table and its structures
std::span<const Mutation> TableMutations();  // changes of keys, indexes, attributes and the library
std::span<const Mutation> OddMutations();    // changes that no schema file can express, or that make an invalid library

// Applies a random one. Returns its label; null if it did not apply.
const char* ApplyAny(std::span<const Mutation> mutations, LibraryDecl& library, Random& random);

}  // namespace model
