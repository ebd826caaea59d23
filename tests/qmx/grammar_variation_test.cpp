// Tests that the grammar docs/qmx.rng refuses a file if and only if the reader finds a fault that a grammar can express. The
// files are all variations of a library by one element, one attribute or one value; the table of the reader says which.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qmx/grammar_verdict.h"
#include "qmx/qmx_xml.h"
#include "qmx_xml/schema_form.h"

namespace {

using qmx::Attribute;
using qmx::AttributeForm;

struct Element {
  std::string name;
  std::vector<std::pair<std::string, std::string>> attributes = {};
  std::vector<Element> children = {};
  std::string text = {};
};

Element Library(const std::string& protocol) {
  return {
      "metalib",
      {{"name", "m"}, {"version", "1"}, {"protocol", protocol}, {"desc", "d"}},
      {{"meta", {{"name", "u"}, {"kind", "union"}, {"desc", "d"}}, {{"entry", {{"name", "x"}, {"type", "int8"}, {"id", "1"}}}}},
       {"meta",
        {{"name", "t"}, {"kind", "structure"}, {"customattr", "c"}},
        {{"primarykey", {{"entries", "a"}, {"desc", "d"}}},
         {"entry", {{"name", "a"}, {"type", "int32"}, {"id", "1"}, {"version", "1"}, {"desc", "d"}}},
         {"entry",
          {{"name", "b"}, {"type", "string"}, {"id", "2"}, {"size", "5"}, {"count", "3"}, {"refer", "a"}, {"customattr2", "c"}}},
         {"splittablekey", {{"entries", "a"}, {"desc", "d"}}},
         {"entry", {{"name", "c"}, {"type", "u"}, {"id", "3"}}},
         {"index", {{"name", "i"}, {"desc", "d"}}, {{"column", {{"entry", "a"}, {"desc", "true"}}}}}}}}};
}

std::string ToXml(const Element& element) {
  std::string xml = "<" + element.name;
  for (const auto& [name, value] : element.attributes) xml += " " + name + "='" + value + "'";
  xml += ">" + element.text;
  for (const Element& child : element.children) xml += ToXml(child);
  return xml + "</" + element.name + ">";
}

std::vector<Element*> AllElements(Element& element) {
  std::vector<Element*> all = {&element};
  for (Element& child : element.children) std::ranges::copy(AllElements(child), std::back_inserter(all));
  return all;
}

std::vector<std::string> NumbersFor(const AttributeForm& form) {
  std::vector<std::string> values = {"", " 1", "1 ", "+1", "-1", "-0", "0x1", "1e3", "1.0", "one", "007", "18446744073709551616"};
  for (const std::uint64_t value : {form.lowest, form.highest, form.highest + 1}) values.push_back(std::to_string(value));
  if (form.lowest > 0) values.push_back(std::to_string(form.lowest - 1));
  return values;
}

std::vector<std::string> ValuesFor(const AttributeForm& form) {
  if (form.form == qmx::ValueForm::kNumber) return NumbersFor(form);
  std::vector<std::string> values = {"", " ", "x", "a b", "&#9;&#10;", "&lt;\u8868"};
  for (const qmx::ChoiceForm& choice : form.choices) {
    values.insert(values.end(), {std::string(choice.value), " " + std::string(choice.value), std::string(choice.value) + "x"});
  }
  if (form.id == Attribute::kType) {
    for (const qmx::SimpleType& type : qmx::SimpleTypes()) {
      values.insert(values.end(), {std::string(type.name), std::string(type.name) + " ", std::string(type.name) + "0"});
    }
  }
  return values;
}

// Calls `take` with each variation of the library.
class Variations {
 public:
  Variations(const Element& library, std::function<void(const Element&)> take) : library_(library), take_(std::move(take)) {}

  void All() {
    take_(library_);
    Element copy = library_;
    for (std::size_t i = 0; i < AllElements(copy).size(); ++i) {
      position_ = i;
      Attributes();
      Children();
    }
  }

 private:
  // One variation: a change of the element at the current position.
  void With(const std::function<void(Element&)>& change) {
    Element copy = library_;
    change(*AllElements(copy)[position_]);
    take_(copy);
  }

  void Attributes() {
    Element copy = library_;
    const Element& element = *AllElements(copy)[position_];
    for (const AttributeForm& form : qmx::FindElement(element.name.c_str())->attributes) {
      const std::string name = form.name.text;
      With([&](Element& changed) { std::erase_if(changed.attributes, [&](const auto& one) { return one.first == name; }); });
      for (const std::string& value : ValuesFor(form)) {
        With([&](Element& changed) {
          std::erase_if(changed.attributes, [&](const auto& one) { return one.first == name; });
          changed.attributes.emplace_back(name, value);
        });
      }
    }
    for (const char* name : {"name", "version", "protocol", "kind", "customattr", "type", "id", "size", "count", "refer",
                             "customattr2", "entries", "entry", "desc", "Name", "unknown"}) {
      With([&](Element& changed) { changed.attributes.emplace_back(name, "1"); });
    }
  }

  void Children() {
    With([](Element& changed) { changed.children.clear(); });
    With([](Element& changed) { changed.text = "text"; });
    With([](Element& changed) { changed.text = " \n<!-- comment --><?instruction?>"; });
    With([](Element& changed) { changed.name += "x"; });
    With([](Element& changed) { std::ranges::reverse(changed.children); });
    Element copy = library_;
    for (const Element* other : AllElements(copy)) {
      With([&](Element& changed) { changed.children.push_back(*other); });
      With([&](Element& changed) { changed.children.insert(changed.children.begin(), *other); });
    }
  }

  Element library_;
  std::function<void(const Element&)> take_;
  std::size_t position_ = 0;
};

// Faults that a grammar cannot express.
bool IsBeyondGrammars(const qmx::ReadError& error) {
  constexpr std::array kTexts = {"allowed: unique names", "unique ids", "unknown type", "contains itself",
                                 "which is not an entry", "refers to",  "makes meta"};
  return std::ranges::any_of(kTexts, [&](const char* text) { return error.text.find(text) != std::string::npos; });
}

TEST(GrammarVariations, AreRefusedForTheSameFaults) {
  std::vector<std::string> files;
  for (const char* protocol : {"QMX", "TLV"}) {
    Variations(Library(protocol), [&](const Element& varied) { files.push_back(ToXml(varied)); }).All();
  }
  const std::vector<bool> accepted = grammar_test::GrammarAcceptsTexts(files);
  std::size_t refused = 0;
  std::size_t read = 0;
  for (std::size_t i = 0; i < files.size(); ++i) {
    const qmx::ReadResult result = qmx::ReadXml(files[i]);
    EXPECT_EQ(accepted[i], std::ranges::all_of(result.errors, IsBeyondGrammars))
        << files[i] << "\n"
        << (result.errors.empty() ? "no fault" : result.errors.front().text);
    refused += accepted[i] ? 0U : 1U;
    read += result.schema ? 1U : 0U;
  }
  EXPECT_GT(refused, 1000U);
  EXPECT_GT(read, 500U);
}

}  // namespace
