// Pages about the lengths of fields. They are checked only where the servers' version is known.
#include "rule_docs/rule_book_parts.h"

namespace korvel {
namespace {

constexpr char kTable[] = R"(<entry name="uid" type="uint32"/>
<primarykey entries="uid"/>)";
constexpr char kTooLong[] = R"(<entry name="uid" type="uint32"/>
<entry name="picture" type="bytes" size="131073" version="2"/>
<primarykey entries="uid"/>)";
constexpr char kLongest[] = R"(<entry name="uid" type="uint32"/>
<entry name="picture" type="bytes" size="131072" version="2"/>
<primarykey entries="uid"/>)";
constexpr char kListed[] = R"(<entry name="uid" type="uint32"/>
<entry name="picture" type="bytes" size="200000"/>
<primarykey entries="uid"/>)";
constexpr char kListedGrown[] = R"(<entry name="uid" type="uint32"/>
<entry name="picture" type="bytes" size="300000"/>
<primarykey entries="uid"/>)";
constexpr char kListedAndMore[] = R"(<entry name="uid" type="uint32"/>
<entry name="picture" type="bytes" size="200000"/>
<entry name="rest_of_picture" type="bytes" size="100000" version="2"/>
<primarykey entries="uid"/>)";

constexpr RulePage kPages[] = {
    {.id = "length.field-missing",
     .protects = "The size of a field that cannot be read is unknown, and it may be larger than the servers allow.",
     .allowed = "A library that gives the fields it counts.",
     .unheard =
         "In schema files every field that is counted can be read. A metadata library of a caller's own making may fail to "
         "give one."},
    {.id = "length.limit",
     .protects =
         "Servers take no field larger than their version allows: 128 KiB, from 3.29.0 on 256 KiB, from 3.39.0 on 10 MiB, all "
         "elements of a field together. Sizes of the new schema are looked at, whether they changed or not; key fields and "
         "the insides of structures are not. The text lists all the fields that are too large.",
     .allowed =
         "Smaller fields, or several of them. Newer servers: say so with --server-version. A field that is known to be larger "
         "can be let through with --whitelist.",
     .example = {.options = "--server-version 3.28.0",
                 .old_schema = {.table = kTable},
                 .new_schema = {.table = kTooLong},
                 .instead = {.table = kLongest},
                 .code = -2,
                 .answer = "ERR_ENTRY_LEN;picture|"}},
    {.id = "length.whitelist",
     .protects =
         "A field on the whitelist may be larger than the servers' version allows as a rule. When it grows further, a person "
         "has to see that the servers take it: the text lists the sizes before and after.",
     .allowed =
         "Keep the size of the whitelisted field, and put what is more into another one. Or confirm the growth by hand, with "
         "those who run the servers.",
     .codes = {-35},
     .example = {.options = "--server-version 3.28.0 --whitelist picture",
                 .old_schema = {.table = kListed},
                 .new_schema = {.table = kListedGrown},
                 .instead = {.table = kListedAndMore},
                 .code = -35,
                 .answer = "WARNING_WHITELIST:entry:picture size 200000 -> 300000 |"}},
};

}  // namespace

std::span<const RulePage> LengthPages() { return kPages; }

}  // namespace korvel
