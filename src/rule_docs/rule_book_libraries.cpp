// Pages about the two libraries as a whole: their versions, their protocols, and whether the table is in them.
#include "rule_docs/rule_book_parts.h"

namespace korvel {
namespace {

constexpr char kTable[] = R"(<entry name="uid" id="1" type="uint32"/>
<entry name="zone" id="2" type="uint32"/>
<primarykey entries="uid"/>)";

constexpr char kOtherTable[] = R"(<meta name="purchases">
  <entry name="uid" id="1" type="uint32"/>
  <entry name="zone" id="2" type="uint32"/>
  <primarykey entries="uid"/>
</meta>)";

constexpr RulePage kPages[] = {
    {.id = "library.tlv-to-qmx",
     .protects =
         "TLV records carry the ids of their fields, packed records nothing but the fields one behind the other. A library "
         "in the record format has no reading for records that were written in TLV.",
     .allowed = "Keep the library in TLV. The other way is open: a table of the record format may get a TLV library.",
     .example = {.old_schema = {.table = kTable, .protocol = "TLV"},
                 .new_schema = {.table = kTable},
                 .instead = {.table = kTable, .protocol = "TLV"},
                 .code = -1,
                 .answer = "Table can not be modified from TLV to QMX! table:'orders'"}},
    {.id = "library.version",
     .protects = "Versions say which of two libraries is the newer one, and each field says in which version it came. A library "
                 "that goes back in number has probably been mixed up with an older file; and fields that are added later could "
                 "bear versions that were used before.",
     .allowed = "Raise the version with every change. The same version passes.",
     .example = {.old_schema = {.table = kTable, .version = 5},
                 .new_schema = {.table = kTable, .version = 4},
                 .instead = {.table = kTable, .version = 6},
                 .code = -1,
                 .answer = "LibVersion invalid, newVersion 4 < oldVersion 5"}},
    {.id = "library.table",
     .protects = "A table whose schema is gone has records that nobody can read. A table that only the new library has was never "
                 "there, and there is nothing that it could have changed from. Names are compared byte for byte: a renamed table "
                 "is gone, too.",
     .allowed = "Keep the table under its name. Another name is another table, which is created and filled, not changed.",
     .example = {.options = "--table orders",
                 .old_schema = {.table = kTable},
                 .new_schema = {.structures = kOtherTable},
                 .instead = {.table = kTable},
                 .code = -2,
                 .answer = "Get meta info failed, please check the table name ! table:'orders'"}},
    {.id = "library.no-version",
     .protects =
         "A field that is added must be newer than the old library. Without the old library's version that cannot be told.",
     .allowed = "An old library with a version of 0 or above.",
     .unheard =
         "Versions in schema files start at 0. A program that calls CheckTableMetaCompatible with a metadata library of its "
         "own making finds the text in its log, and only there. The whole check returns the same code without a text."},
    {.id = "library.no-source-version",
     .protects =
         "A field that is added must be newer than the library it is added to. Without that library's version it cannot be "
         "told.",
     .allowed = "A source library with a version of 0 or above.",
     .unheard =
         "Versions in schema files start at 0. A program that calls CompareValue with a metadata library of its own making "
         "finds the text in its log, and only there."},
    {.id = "library.protocols",
     .protects =
         "The records of a table that was created in TLV carry the ids of their fields. Its fields are judged by the rules "
         "of TLV, which need a TLV library on both sides; where one is in the record format no rule fits, and a change "
         "that no rule has looked at is not let through.",
     .allowed = "TLV libraries on both sides, for a table that was created in TLV. If it was not, say so: --created-as qmx.",
     .example = {.options = "--created-as tlv",
                 .old_schema = {.table = kTable},
                 .new_schema = {.table = kTable, .protocol = "TLV"},
                 .code = -2,
                 .answer =
                     "Table can not be modified from version:'QMX' to version:'TLV',init_qmx_version:'TLV'!  table:'orders'"}},
};

}  // namespace

std::span<const RulePage> LibraryPages() { return kPages; }

}  // namespace korvel
