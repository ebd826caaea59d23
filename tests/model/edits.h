// What changes of libraries have in common: finding what to change, and taking a field out or renaming it with all that names it.
#pragma once

#include <string>

#include "model/random.h"
#include "model/schema_values.h"

namespace model {

using IsWanted = bool (*)(const FieldDecl& field, const MetaDecl& meta);

MetaDecl* Table(LibraryDecl& library);                     // "t"; null if there is none
MetaDecl* Inside(LibraryDecl& library, Random& random);    // a structure that "t" holds, at any depth; null if there is none
MetaDecl* Anything(LibraryDecl& library, Random& random);  // mostly "t"

// A field of the meta that is wanted, by chance; null if there is none, or no meta.
FieldDecl* AnyField(MetaDecl* meta, Random& random, IsWanted is_wanted);

bool IsAny(const FieldDecl& field, const MetaDecl& meta);
bool IsKey(const FieldDecl& field, const MetaDecl& meta);
bool IsFree(const FieldDecl& field, const MetaDecl& meta);  // nothing names it
bool HasSize(const FieldDecl& field, const MetaDecl& meta);
bool IsSortField(const FieldDecl& field, const MetaDecl& meta);

// Names are copied: they may be those of what is edited.
void RemoveField(std::string name, MetaDecl& meta);
void RenameField(std::string name, const std::string& to, MetaDecl& meta);
void RenameMeta(std::string name, const std::string& to, LibraryDecl& library);

}  // namespace model
