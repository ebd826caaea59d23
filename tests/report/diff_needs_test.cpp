// Which other edits an edit needs.
#include <gmock/gmock.h>

#include "models.h"
#include "read_source.h"

namespace report_test {
namespace {

using korvel::Difference;
using testing::ElementsAre;

std::string Table(const std::string& content) {
  return "<metalib name=\"m\" version=\"1\"><meta name=\"t\">" + content + "</meta></metalib>";
}

std::string Entry(const std::string& name, const std::string& type, const std::string& more = "") {
  return "<entry name=\"" + name + "\" type=\"" + type + "\" " + more + "/>";
}

std::vector<std::string> EditsOf(const std::string& before, const std::string& after) {
  const korvel::Source old_source = ReadSource("old.xml", Table(before));
  const korvel::Source new_source = ReadSource("new.xml", Table(after));
  return Lines(Difference(old_source, new_source, "t"));
}

constexpr char kCounted[] = "count=\"9\" refer=\"n\"";

TEST(Needs, CountedFieldNeedsItsCounter) {
  EXPECT_THAT(EditsOf(Entry("a", "int8"), Entry("a", "int8") + Entry("n", "int8") + Entry("list", "int8", kCounted)),
              ElementsAre("entry-added t.n: field n added", "entry-added t.list: field list added; needs 0"));
}

TEST(Needs, CountedFieldNeedsValidCounter) {
  EXPECT_THAT(EditsOf(Entry("n", "float", "count=\"2\"") + Entry("list", "int8", "count=\"9\""),
                      Entry("n", "int8") + Entry("list", "int8", kCounted)),
              ElementsAre("entry-type t.n: type of n: float -> int8", "entry-count t.n: count of n: 2 -> 1",
                          "entry-refer t.list: refer of list: none -> n; needs 0 1"));
  // Both can be counters: nothing is needed.
  EXPECT_THAT(
      EditsOf(Entry("n", "int16") + Entry("list", "int8", "count=\"9\""), Entry("n", "int8") + Entry("list", "int8", kCounted)),
      ElementsAre("entry-type t.n: type of n: int16 -> int8", "entry-refer t.list: refer of list: none -> n"));
}

TEST(Needs, CountedFieldNeedsCounterBeforeIt) {
  const std::string fixed = Entry("list", "int8", "count=\"9\"");
  EXPECT_THAT(
      EditsOf(fixed + Entry("a", "int8") + Entry("n", "int8"),
              Entry("n", "int8") + Entry("list", "int8", kCounted) + Entry("a", "int8")),
      ElementsAre("entry-moved t.n: field n moved to the front", "entry-refer t.list: refer of list: none -> n; needs 0"));
  EXPECT_THAT(EditsOf(Entry("a", "int8") + Entry("b", "int8") + Entry("n", "int8"),
                      Entry("n", "int8") + Entry("list", "int8", kCounted) + Entry("a", "int8") + Entry("b", "int8")),
              ElementsAre("entry-moved t.n: field n moved to the front", "entry-added t.list: field list added; needs 0"));
  // The counter is in front of the added field already: the move is not needed.
  EXPECT_THAT(EditsOf(Entry("a", "int8") + Entry("b", "int8") + Entry("n", "int8") + Entry("z", "int8"),
                      Entry("n", "int8") + Entry("a", "int8") + Entry("b", "int8") + Entry("list", "int8", kCounted) +
                          Entry("z", "int8")),
              ElementsAre("entry-moved t.n: field n moved to the front", "entry-added t.list: field list added"));
}

TEST(Needs, KeysAndIndexesNeedTheirFields) {
  const std::string keys =
      "<primarykey entries=\"a x\"/><splittablekey entries=\"y\"/><index name=\"i\"><column entry=\"y\"/></index>";
  EXPECT_THAT(EditsOf(Entry("a", "int8") + "<primarykey entries=\"a\"/><index name=\"i\"><column entry=\"a\"/></index>",
                      Entry("a", "int8") + Entry("x", "int8") + Entry("y", "int8") + keys),
              ElementsAre("entry-added t.x: field x added", "entry-added t.y: field y added",
                          "primary-key t: primary key of t: a -> a x; needs 0",
                          "splittable-key t: splittable key of t: none -> y; needs 1",
                          "index-columns t: columns of index i: a -> y; needs 1"));
}

// In a TLV library each entry has an id.
TEST(Needs, EntryWithoutIdNeedsAnotherProtocol) {
  const auto edits_of = [](const std::string& protocol, const std::string& entries, const std::string& new_protocol,
                           const std::string& new_entries) {
    const auto library = [](const std::string& of, const std::string& content) {
      return "<metalib name=\"m\" version=\"1\" protocol=\"" + of + "\"><meta name=\"t\">" + content + "</meta></metalib>";
    };
    const korvel::Source old_source = ReadSource("old.xml", library(protocol, entries));
    const korvel::Source new_source = ReadSource("new.xml", library(new_protocol, new_entries));
    return Lines(Difference(old_source, new_source, "t"));
  };
  const std::string kept = Entry("a", "int8", "id=\"1\"");
  EXPECT_THAT(edits_of("TLV", kept, "QMX", kept + Entry("b", "int8") + Entry("c", "int8", "id=\"2\"")),
              ElementsAre("library-protocol : protocol of the library: TLV -> QMX", "entry-added t.b: field b added; needs 0",
                          "entry-added t.c: field c added"));
  EXPECT_THAT(edits_of("QMX", kept + Entry("b", "int8") + Entry("c", "int8", "id=\"2\""), "TLV", kept),
              ElementsAre("library-protocol : protocol of the library: QMX -> TLV; needs 1", "entry-removed t.b: field b removed",
                          "entry-removed t.c: field c removed"));
  // Ids must be unique, too.
  EXPECT_THAT(edits_of("TLV", kept, "QMX", kept + Entry("b", "int8", "id=\"1\"")),
              ElementsAre("library-protocol : protocol of the library: TLV -> QMX", "entry-added t.b: field b added; needs 0"));
  EXPECT_THAT(edits_of("QMX", kept + Entry("b", "int8", "id=\"2\"") + Entry("c", "int8", "id=\"3\""), "TLV",
                       kept + Entry("c", "int8", "id=\"2\"")),
              ElementsAre("library-protocol : protocol of the library: QMX -> TLV; needs 1 2",
                          "entry-removed t.b: field b removed", "entry-id t.c: id of c: 3 -> 2"));
}

// An added counter needs nothing; the field that it counts needs the counter and what the counter needs.
TEST(Needs, AreTransitive) {
  const korvel::Source old_source = ReadSource("old.xml", "<metalib name=\"m\" version=\"1\" protocol=\"TLV\"><meta name=\"t\">" +
                                                              Entry("n", "int8", "id=\"1\"") + "</meta></metalib>");
  const korvel::Source new_source =
      ReadSource("new.xml", "<metalib name=\"m\" version=\"1\" protocol=\"TLV\"><meta name=\"t\">" +
                                Entry("old_n", "int8", "id=\"1\"") + Entry("n", "int8", "id=\"2\"") +
                                Entry("list", "int8", std::string("id=\"3\" ") + kCounted) + "</meta></metalib>");
  EXPECT_THAT(Lines(Difference(old_source, new_source, "t")),
              ElementsAre("entry-renamed t.n: field n renamed to old_n", "entry-added t.n: field n added; needs 0",
                          "entry-added t.list: field list added; needs 0 1"));
}

}  // namespace
}  // namespace report_test
