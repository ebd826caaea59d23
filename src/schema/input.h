// Loads schemas from schema files and images, and writes them as schema files. The first bytes decide which of the two a file is.
#pragma once

#include <string>

#include "schema/file_bytes.h"
#include "schema/source.h"

namespace korvel {

using Input = Source;

// What becomes of the texts of schema files.
enum class Texts {
  kWhenNeeded,  // a large file is read again when its text is needed first: see FileText
  kShown        // all are in memory, and an image gets the text of its schema file (AddDump)
};

// Size in bytes from which on the text of a regular file is not kept.
inline constexpr std::size_t kLargeText = std::size_t{256} << 10;

// The schema in the bytes of a file; `name` is used in messages. Keeps the text. Throws InputError as LoadFile.
Input LoadBytes(const std::string& name, Bytes bytes, Texts texts = Texts::kWhenNeeded);

// The schema in the file at a path, "-" for standard input. Throws InputError with every error of the
// file: one line if it cannot be read, was written to meanwhile or is larger than qmx::kMaxFileBytes; one line "FILE: error:
// WHAT" for a refused image; "FILE:LINE:COLUMN: error: WHAT" for each error of a schema file. Linear. Threads may load different
// files at once.
Input LoadFile(const std::string& path, Texts texts = Texts::kWhenNeeded);

// The library as a schema file in XML; reading the text gives the same library byte for byte. Descriptions, comments and layout
// of the original schema file are not part of a library, so they are lost. Linear.
//
// Throws InputError with one line if the library cannot be written as XML: images may contain characters that XML does not have,
// duplicate names, and more that the reader of schema files refuses.
std::string SchemaFile(const Input& input);

// The library as an image. Throws InputError with one line if it is too large for an image, or has contents that readers of
// images refuse. Linear.
std::string ImageOf(const Input& input);

// Gives an image the text of its schema file, marked as SchemaText::is_dump; locations in the input then refer to this text. Does
// nothing if the input has a text, or if it cannot be written as XML.
void AddDump(Input& input);

}  // namespace korvel
