// Writes schema files.
#pragma once

#include <string>

#include "schema/input.h"

namespace korvel {

// The input's library as a schema file in XML, which read again gives the same library byte for byte. Descriptions, comments and
// layout of a schema file are not part of its library: they are gone.
//
// Throws InputError with one line for a library that no schema file can say: images may hold characters that XML has not, names
// that stand twice, and more that the reader of schema files refuses.
std::string SchemaFile(const Input& input);

// Gives an image the text of its schema file, whose places are then those of the input. Nothing happens to an input that has a
// text, and to an image that no schema file can say.
void AddDump(Input& input);

}  // namespace korvel
