// Changes of a library, each with a label and, where it is known when the change is made, what the full check must say to it.
#pragma once

#include <span>

#include "model/random.h"
#include "model/rules.h"
#include "model/schema_values.h"

namespace model {

// What a sound library's change comes to when it is the only one: the text that refuses it, kSucceeded where it is allowed, and
// kEnd where that depends.
struct Mutation {
  const char* label;
  Said record;  // both libraries in the record format, as the table was created
  Said tlv;     // the same in the other
  // False where the library has nothing that can be changed so. REQUIRES: it has a table "t".
  bool (*apply)(LibraryDecl& library, Random& random);
};

std::span<const Mutation> FieldMutations();  // of what the table and its structures hold
std::span<const Mutation> TableMutations();  // of keys, indexes, attributes and the library
std::span<const Mutation> OddMutations();    // to what no schema file says, or no store should hold

// One of them, by chance. Its label; null where it did not apply.
const char* ApplyAny(std::span<const Mutation> mutations, LibraryDecl& library, Random& random);

}  // namespace model
