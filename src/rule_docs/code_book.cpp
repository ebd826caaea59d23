// What the result codes mean. Which rules a code is returned with follows from their pages. Held by
// tests/report/rule_book_test.cpp.
#include <algorithm>
#include <array>

#include "rule_docs/rule_book.h"

namespace korvel {
namespace {

// By the number, sign turned. Of the codes that the checker never returns, what their names say in the numbering that the
// programs of the store share.
constexpr std::array<const char*, kResultCodeCount> kMeanings = {
    "Success: the change is allowed, or the two sides fit.",
    "The question is wrong, or what it is about is of the wrong kind: an argument is missing or unknown, the library goes back "
    "in version or from TLV to the record format, or the kind of the table changed. The whole check returns it without a text "
    "where field lengths are to be checked and there is no log category.",
    "What is needed cannot be had: the table is missing, no rule fits the protocols, or the attributes of the new side cannot be "
    "understood; or fields are larger than the servers allow. The whole check returns it without a text where the old library "
    "has no version.",
    "A field changed in a way that stored records do not stand: it is gone, or its id, size, type, count, structure or attribute "
    "changed.",
    "The primary key changed. Of the rule on kinds of tables: the type of the table changed.",
    "The splittable key changed. Of the rule on kinds of tables: the length of the list was reduced or is not the server's.",
    "The indexes changed, or a list table has one. Of the rule on kinds of tables: the number of sort fields changed.",
    "A field is not where it was looked for. Callers see it from the rule on kinds of tables alone, where a new field cannot be "
    "read; of keys and indexes the codes of the rules that look stand for it.",
    "The version of a kept field changed, that of an added one is not above the old library's, or kept fields changed places. Of "
    "the rule on kinds of tables: a new field has no name.",
    "The name of a field is longer than 31 bytes. Of the rule on kinds of tables: an old field cannot be read.",
    "By its name, a table's name is too long. The rule on kinds of tables returns it where an old field has no name.",
    "By its name, a table's name is empty. The rule on kinds of tables returns it where the attribute of a sort field changed.",
    "By its name, a table's name begins with a digit.",
    "By its name, a table's name has a character that names may not have.",
    "By its name, there is such a table already.",
    "By its name, a table has no primary key. The rule on kinds of tables and `sortlist` return it where attributes were "
    "removed, the former also where the sort rule changed.",
    "By its name, a field's type is not allowed. The rule on kinds of tables returns it where the data protocol changed.",
    "The name of a field begins with a digit.",
    "The name of a field has a byte other than letters, digits and underscore.",
    "The name of a field is empty.",
    "By its name, a field of the primary key must be a required one.",
    "By its name, a field of the primary key must have a single value.",
    "By its name, the primary key was to be changed.",
    "By its name, a required field was to be removed.",
    "By its name, a field was to be renamed.",
    "By its name, the type of a field was to be changed.",
    "By its name, the label of a field was to be changed.",
    "By its name, a schema cannot be read.",
    "By its name, the schema of one table cannot be read.",
    "By its name, the columns of an index must be fields of the primary key.",
    "By its name, structures are nested too deep.",
    "By its name, the primary keys have another number of fields.",
    "By its name, the primary keys have other fields.",
    "The two structures have another number of fields.",
    "The two structures have other fields: one is missing, or its type, count or size differs.",
    "Fields on the whitelist grew. The text lists their sizes, for a person to confirm.",
    "By its name, a count stands without a refer property.",
    "By its name, a key field is at fault.",
    "By its name, the sort key was to be changed.",
    "By its name, a table has no cipher suite for its fields.",
    "By its name, a table has no cipher suite for its records.",
    "By its name, a table has no checksum of its cipher.",
    "By its name, the type of an encrypted field is not allowed.",
    "By its name, an encrypted field is missing.",
    "By its name, an encrypted message is malformed.",
    "By its name, the settings of encryption were to be changed.",
    "The table is defined in the old way, without attributes. CheckTable tells the checker so; the checker itself goes on.",
    "By its name, the sharding key was to be changed.",
    "By its name, an index was to be changed.",
    "By its name, a table that is defined in the new way has an error.",
    "The attributes of a table cannot be understood. CheckTable tells the checker so; the checker itself returns -1 for the old "
    "side and -2 for the new one.",
    "By its name, a field's name stands twice.",
};

bool Returns(const RefusalRow& row, int code) {
  const std::vector<int> codes = CodesOf(*FindPage(row.id));
  return std::find(codes.begin(), codes.end(), code) != codes.end();
}

}  // namespace

CodePage FindCode(int code) {
  CodePage page{code, kMeanings[static_cast<std::size_t>(-code)], {}, code == 0};
  for (const RefusalRow* row : AllRefusals()) {
    if (Returns(*row, code)) page.rules.push_back(row);
  }
  page.returned = page.returned || !page.rules.empty();
  return page;
}

}  // namespace korvel
