// Helpers for changes of libraries: find what to change; remove or rename a field together with all references to it.
#pragma once

#include <string>

#include "model/random.h"
#include "model/schema_values.h"

namespace model {

using IsWanted = bool (*)(const FieldDecl& field, const MetaDecl& meta);

MetaDecl* Table(LibraryDecl& library);                     // "t"; null if there is none
MetaDecl* Inside(LibraryDecl& library, Random& random);    // a structure inside "t", at any depth; null if there is none
MetaDecl* Anything(LibraryDecl& library, Random& random);  // mostly "t"

// A random field of the meta for which is_wanted is true; null if there is none, or no meta.
FieldDecl* AnyField(MetaDecl* meta, Random& random, IsWanted is_wanted);

bool IsAny(const FieldDecl& field, const MetaDecl& meta);
bool IsKey(const FieldDecl& field, const MetaDecl& meta);
bool IsFree(const FieldDecl& field, const MetaDecl& meta);  // nothing refers to it
bool HasSize(const FieldDecl& field, const MetaDecl& meta);
bool IsSortField(const FieldDecl& field, const MetaDecl& meta);

// Names are passed by value: they may belong to the edited object.
void RemoveField(std::string name, MetaDecl& meta);
void RenameField(std::string name, const std::string& to, MetaDecl& meta);
void RenameMeta(std::string name, const std::string& to, LibraryDecl& library);

}  // namespace model
