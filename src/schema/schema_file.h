// Writes a library as a schema file.
#pragma once

#include <string>

#include "schema/input.h"

namespace korvel {

// The library as a schema file in XML; reading the text gives the same library byte for byte. Descriptions, comments and layout
// of the original schema file are not part of a library, so they are lost. Linear.
//
// Throws InputError with one line if the library cannot be written as XML: images may contain characters that XML does not have,
// duplicate names, and more that the reader of schema files refuses.
std::string SchemaFile(const Input& input);

// Gives an image the text of its schema file, marked as SchemaText::is_dump; locations in the input then refer to this text. Does
// nothing if the input has a text, or if it cannot be written as XML.
void AddDump(Input& input);

}  // namespace korvel
