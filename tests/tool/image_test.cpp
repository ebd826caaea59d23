// Images as inputs of every command, and the commands that convert between images and schema files.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cstdlib>
#include <fstream>
#include <regex>
#include <stop_token>
#include <thread>

#include "base/file_descriptor.h"
#include "qmx/qmx_image.h"
#include "qmx/qmx_metalib_kernel.h"
#include "tool_test.h"

namespace tool_test {
namespace {

using korvel::FileDescriptor;
using testing::AnyOf;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

class ImageTest : public ToolTest {
 protected:
  ImageTest() {
    for (const std::string name : {"old", "same", "wide"}) Compile(name + ".xml", name + ".qmb");
  }

  void Compile(const std::string& from, const std::string& to) const {
    ExpectOutcome(Korvelcheck({"compile", from, "-o", to}), 0, "", "");
  }

  void WriteImage(const std::string& file, qmx::MetalibBuilder& builder) const {
    Write(file, qmx::WriteImage(*builder.Finish().metalib));
  }
};

// The report about an image is that of the schema file, without lines and columns.
std::string WithoutPlaces(const std::string& report) {
  return std::regex_replace(std::regex_replace(report, std::regex("\\.xml:\\d+:\\d+:"), ".qmb:"), std::regex("\\.xml"), ".qmb");
}

TEST_F(ImageTest, ReportsShowOnlyTheFile) {
  ExpectOutcome(Korvelcheck({"check", "old.qmb", "same.qmb"}), 0, WithoutPlaces(kAllowedReport), "");
  ExpectVerdicts(Korvelcheck({"check", "old.qmb", "wide.qmb"}), 1, WithoutPlaces(kWideFinding));
  EXPECT_THAT(Korvelcheck({"check", "old.qmb", "wide.qmb", "--format", "json"}).out,
              HasSubstr("\"location\": {\n        \"file\": \"wide.qmb\",\n        \"line\": null,\n        \"column\": null\n"));
}

TEST_F(ImageTest, AcceptsFilesAndImagesTogether) {
  ExpectVerdicts(Korvelcheck({"check", "old.qmb", "wide.xml"}), 1, kWideFinding);
  ExpectVerdicts(Korvelcheck({"check", "old.xml", "wide.qmb"}), 1, WithoutPlaces(kWideFinding));
}

// The name does not matter: the first bytes identify an image.
TEST_F(ImageTest, RecognizesImagesByContent) {
  Write("image.xml", Read("wide.qmb"));
  Write("text.qmb", Read("old.xml"));
  const Outcome outcome = Korvelcheck({"check", "text.qmb", "image.xml"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, HasSubstr("\nimage.xml: refused [primary-key.size] "));
}

TEST_F(ImageTest, EveryCommandTakesImages) {
  for (const char* command : {"compat", "values", "same", "sortlist"}) {
    const Outcome text = Korvelcheck({command, "old.xml", "wide.xml"});
    ExpectOutcome(Korvelcheck({command, "old.qmb", "wide.qmb"}), text.exit_code, WithoutPlaces(text.out), text.err);
  }
  ExpectOutcome(Korvelcheck({"lint", "old.qmb", "wide.qmb"}), 0, WithoutPlaces(Korvelcheck({"lint", "old.xml", "wide.xml"}).out),
                "");
}

TEST_F(ImageTest, StandardInputMayBeAnImage) {
  ExpectVerdicts(Korvelcheck(Call{.arguments = {"check", "-", "wide.xml"}, .input = Read("old.qmb")}), 1, kWideFinding);
  // A part of it may have been read already: the image does not begin at the start of the file.
  ExpectVerdicts(Korvelcheck(Call{.arguments = {"check", "-", "wide.xml"},
                                  .launcher = {"/bin/sh", "-c", "read -r line; exec \"$0\" \"$@\""},
                                  .input = "QMXIMAGE is what the next line holds\n" + Read("old.qmb")}),
                 1, kWideFinding);
}

TEST_F(ImageTest, ReadsImageFromPipe) {
  ASSERT_EQ(::mkfifo(PathOf("pipe").c_str(), 0600), 0);
  const std::string image = Read("old.qmb");
  std::thread writer([&] { Write("pipe", image); });
  ExpectVerdicts(Korvelcheck({"check", "pipe", "wide.xml"}), 1, kWideFinding);
  writer.join();
}

TEST_F(ImageTest, RefusesDamagedImages) {
  const std::string image = Read("old.qmb");
  const auto damaged = [&](std::size_t offset, char value) {
    std::string bytes = image;
    bytes[offset] = value;
    return bytes;
  };
  const auto expect = [&](const std::string& bytes, const std::string& text) {
    Write("bad.qmb", bytes);
    for (const auto& [arguments, name] : {std::pair(std::vector<std::string>{"lint", "bad.qmb"}, "bad.qmb"),
                                          std::pair(std::vector<std::string>{"lint", "-"}, "<stdin>")}) {
      const Outcome outcome = Korvelcheck(Call{.arguments = arguments, .input = bytes});
      EXPECT_EQ(outcome.exit_code, 2);
      EXPECT_EQ(outcome.out, "");
      EXPECT_THAT(outcome.err, StartsWith(std::string(name) + text));
    }
  };
  std::string foreign = image;
  std::reverse(foreign.begin() + 8, foreign.begin() + 12);
  expect(damaged(0, 'X'), ":1:1: error: not XML: the file does not begin with '<'");  // not an image, so it is read as text
  expect(foreign, ": error: header: byte order at byte 8 is big-endian; allowed: little-endian, that of this machine\n");
  expect(damaged(12, 9), ": error: header: format version at byte 12 is 9; allowed: 1\n");
  expect(damaged(image.size() - 1, 'x'), ": error: header: checksum at byte 32 is ");
  expect(image.substr(0, 40), ": error: header at byte 40 is truncated; allowed: 64 bytes\n");
  expect(image.substr(0, image.size() - 1), ": error: header: block size at byte 24 is ");
  expect(image + "x", ": error: header: block size at byte 24 is ");
}

TEST_F(ImageTest, ManyTablesOfManyFilesAreLocated) {
  Write("turned.xml", Library(5, {"", Table({.name = "users"}), Table({.key_type = "uint32"})}));
  EXPECT_EQ(Verdicts(Korvelcheck({"check", "old.xml", "turned.xml"}).out),
            "verdict: refused\n"
            "turned.xml:4:1: refused: table orders: -3 ERROR_VALUE_FIELD\n"
            "turned.xml:4:52: refused [primary-key.size] the size of a primary key field changed\n"
            "  checker: The size of primarykey can't be modified! entry:'uid' metaname:'orders'\n"
            "1 table refused, 1 allowed (0 changed, 1 unchanged); 2 compared, 0 new, 0 removed; 1 finding, 0 waived\n");
  EXPECT_EQ(Korvelcheck({"lint", "turned.xml", "old.qmb", "old.xml", "-v"}).out,
            "verdict: allowed\n"
            "turned.xml:3:1: allowed: table users\nturned.xml:4:1: allowed: table orders\n"
            "old.qmb: allowed: table orders\nold.qmb: allowed: table users\n"
            "old.xml:2:1: allowed: table orders\nold.xml:3:1: allowed: table users\n"
            "0 tables refused, 6 allowed; 6 compared, 0 new, 0 removed\n");
}

// --- Large files are read at the same time ---

std::string Padding(std::size_t size) { return "<!--" + std::string(size, '.') + "-->"; }

TEST_F(ImageTest, FaultsOfLargeFilesComeInTheOrderOfThePaths) {
  Write("slow.xml", Library(5, {Padding(20'000'000), "<meta/>"}));
  Write("fast.xml", Library(5, {Padding(300'000), "<meta/>"}));
  for (int i = 0; i < 3; ++i) {
    const std::string err = Korvelcheck({"check", "slow.xml", "fast.xml"}).err;
    EXPECT_THAT(err, StartsWith("slow.xml:3:1: error: "));
    EXPECT_THAT(err, HasSubstr("\nfast.xml:3:1: error: "));
  }
}

TEST_F(ImageTest, ManyLargeFilesAreAllRead) {
  std::vector<std::string> arguments = {"lint", "-v"};
  std::string expected = "verdict: allowed\n";
  for (int i = 0; i < 9; ++i) {
    const std::string name = "large" + std::to_string(i) + ".xml";
    Write(name, Library(5, {Padding(300'000), Table()}));
    arguments.push_back(name);
    expected += name + ":3:1: allowed: table orders\n";
  }
  ExpectOutcome(Korvelcheck(arguments), 0, expected + "0 tables refused, 9 allowed; 9 compared, 0 new, 0 removed\n", "");
}

// A call may name more images than files may be open.
TEST_F(ImageTest, NoImageIsKeptOpen) {
  rlimit limit{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
  const rlimit few{32, limit.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
  std::vector<std::string> arguments = {"lint"};
  arguments.resize(101, "old.qmb");
  const Outcome outcome = Korvelcheck(arguments);
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("200 allowed; 200 compared"));
}

// The image has been read: later changes of the file do not matter.
TEST_F(ImageTest, ImageMayChangeOnceItHasBeenRead) {
  const std::string image = Read("old.qmb");
  for (const std::string& changed : {std::string(), image.substr(0, image.size() / 2), std::string(image.size(), 'Q')}) {
    Write("old.qmb", image);
    ASSERT_EQ(::mkfifo(PathOf("pipe.xml").c_str(), 0600), 0);
    std::thread writer([&] {
      std::ofstream pipe(PathOf("pipe.xml"), std::ios::binary);
      // More than a pipe can buffer: once it is written, the program has read the old schema and reads the new one.
      pipe << "<metalib name=\"mall\" version=\"5\">" << Padding(1'000'000) << std::flush;
      Write("old.qmb", changed);
      pipe << Table() << Table({.name = "users"}) << "</metalib>";
    });
    const Outcome outcome = Korvelcheck({"check", "old.qmb", "pipe.xml", "-v"});
    writer.join();
    std::filesystem::remove(PathOf("pipe.xml"));
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("allowed: table orders, 1 change"));
  }
}

// Replaces the content of a file by each of the texts in turn, without a moment in between, until it is destroyed. The time of
// the last write stays the same.
class RestlessFile {
 public:
  RestlessFile(const std::string& path, std::vector<std::string> texts)
      : writer_([=](const std::stop_token& stop) {
          const FileDescriptor file(::open(path.c_str(), O_WRONLY));
          const timespec long_ago[2] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
          for (std::size_t i = 0; !stop.stop_requested(); ++i) {
            const std::string& text = texts[i % texts.size()];
            EXPECT_EQ(::pwrite(file.get(), text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
            EXPECT_EQ(::ftruncate(file.get(), static_cast<off_t>(text.size())), 0);
            EXPECT_EQ(::futimens(file.get(), long_ago), 0);
          }
        }) {}

 private:
  std::jthread writer_;
};

// Regression: the image was mapped, so that a writer crashed the checker or changed what had been verified already.
// KORVEL_ATTEMPTS sets the number of calls.
TEST_F(ImageTest, ImageMayBeWrittenToAtAnyMoment) {
  std::vector<std::string> tables;
  for (int i = 0; i < 400; ++i) tables.push_back(Table({.name = "table_" + std::to_string(i)}));
  Write("a.xml", Library(5, tables));
  tables[0] = Table({.name = "table_0", .key_type = "uint32", .fields = "<entry name=\"more\" type=\"int8\"/>"});
  Write("b.xml", Library(5, tables));
  std::vector<std::string> images;
  std::vector<Outcome> allowed;
  for (const std::string name : {"a.xml", "b.xml"}) {
    Compile(name, "image.qmb");
    images.push_back(Read("image.qmb"));
    allowed.push_back(Korvelcheck({"check", "a.xml", "image.qmb"}));
    EXPECT_EQ(allowed.back().exit_code, name == "a.xml" ? 0 : 1);
  }
  const RestlessFile writer(PathOf("image.qmb"), images);
  const char* const attempts = std::getenv("KORVEL_ATTEMPTS");
  for (int i = attempts == nullptr ? 50 : std::stoi(attempts); i > 0; --i) {
    const Outcome outcome = Korvelcheck({"check", "a.xml", "image.qmb"});
    if (outcome.exit_code == 2) {
      ASSERT_THAT(outcome.err, MatchesRegex("(korvelcheck: )?image\\.qmb: [^\n]*\n"));
    } else {
      ASSERT_THAT(outcome.exit_code, AnyOf(0, 1)) << outcome.err;
      ASSERT_EQ(outcome.out, allowed[static_cast<std::size_t>(outcome.exit_code)].out);
    }
  }
}

// --- compile ---

TEST_F(ImageTest, CompileIsDeterministicAndAcceptsImages) {
  const std::string image = Read("old.qmb");
  ExpectOutcome(Korvelcheck({"compile", "old.xml", "-o", "-"}), 0, image, "");
  ExpectOutcome(Korvelcheck({"compile", "same.xml", "--output=-"}), 0, image, "");
  ExpectOutcome(Korvelcheck({"compile", "old.qmb", "-o", "-"}), 0, image, "");
  ExpectOutcome(Korvelcheck(Call{.arguments = {"compile", "-", "-o", "-"}, .input = Read("old.xml")}), 0, image, "");
}

TEST_F(ImageTest, DoesNotCompileUnreadableSchemas) {
  Write("bad.xml", "<metalib/>");
  Write("kept.qmb", "kept");
  const Outcome outcome = Korvelcheck({"compile", "bad.xml", "-o", "kept.qmb"});
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_THAT(outcome.err, StartsWith("bad.xml:1:1: error: "));
  EXPECT_EQ(Read("kept.qmb"), "kept");
}

TEST_F(ImageTest, DoesNotWriteImageToATerminal) {
  const Outcome outcome = Korvelcheck(Call{.arguments = {"compile", "old.xml", "-o", "-"}, .output = Stream::kTerminal});
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "korvelcheck: compile: standard output is a terminal; allowed: a file or a pipe\n");
}

TEST_F(ImageTest, DoesNotReplaceSchemaByImage) {
  ExpectInputError(Korvelcheck({"compile", "old.xml", "-o", "old.xml"}), "korvelcheck: -o old.xml would replace an input\n");
}

TEST_F(ImageTest, ImageThatCannotBeWrittenIsAnInternalError) {
  EXPECT_EQ(Korvelcheck({"compile", "old.xml", "-o", "no/image.qmb"}).exit_code, 3);
  EXPECT_EQ(Korvelcheck(Call{.arguments = {"compile", "old.xml", "-o", "-"}, .output = Stream::kFull}).exit_code, 3);
}

// --- dump ---

constexpr char kEverything[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<metalib name=\"&lt;mall&gt; &amp; &quot;co&quot;\" version=\"0\" protocol=\"TLV\">\n"
    "  <meta name=\"item\" kind=\"union\" customattr=\"\">\n"
    "    <entry name=\"a&#9;b&#10;c&#13;d\" id=\"0\" type=\"string\" size=\"32\"/>\n"
    "    <entry name=\"preis \xe2\x82\xac \xf0\x9f\x98\x80 '\" id=\"2147483647\" type=\"bytes\" size=\"1\" version=\"0\"/>\n"
    "  </meta>\n"
    "  <meta name=\"orders\" customattr=\"TableType=LIST;ListNum=1024\">\n"
    "    <index name=\"first\">\n"
    "      <column entry=\"uid\" desc=\"true\"/>\n"
    "      <column entry=\"uid\"/>\n"
    "    </index>\n"
    "    <entry name=\"uid\" id=\"1\" type=\"uint64\"/>\n"
    "    <entry name=\"n\" id=\"2\" type=\"uint8\" customattr2=\"\"/>\n"
    "    <index name=\"second\">\n"
    "      <column entry=\"n\"/>\n"
    "    </index>\n"
    "    <entry name=\"items\" id=\"3\" type=\"item\" version=\"7\" count=\"100\" refer=\"n\" customattr2=\"pii\"/>\n"
    "    <primarykey entries=\"n uid n\"/>\n"
    "    <splittablekey entries=\"uid\"/>\n"
    "    <index name=\"third\">\n"
    "      <column entry=\"items\"/>\n"
    "    </index>\n"
    "  </meta>\n"
    "</metalib>\n";

TEST_F(ImageTest, DumpCompilesToTheSameImage) {
  Write("all.xml", kEverything);
  Compile("all.xml", "all.qmb");
  for (const std::string name : {"all", "old", "wide"}) {
    ExpectOutcome(Korvelcheck({"dump", name + ".qmb", "-o", "dump.xml"}), 0, "", "");
    ExpectOutcome(Korvelcheck({"compile", "dump.xml", "-o", "-"}), 0, Read(name + ".qmb"), "");
  }
}

// Optional attributes are written only if they differ from their defaults.
TEST_F(ImageTest, DumpIsComplete) {
  Write("all.xml", kEverything);
  Outcome outcome = Korvelcheck({"dump", "all.xml"});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_EQ(outcome.err, "");
  Write("dump.xml", outcome.out);
  EXPECT_EQ(Korvelcheck({"dump", "dump.xml"}).out, outcome.out);
  for (const char* part :
       {"name=\"&lt;mall&gt; &amp; &quot;co&quot;\" version=\"0\" protocol=\"TLV\"", " kind=\"union\" customattr=\"\"",
        "\"a&#9;b&#10;c&#13;d\"", " desc=\"true\"", " refer=\"n\" customattr2=\"pii\"", "\"n uid n\""}) {
    EXPECT_THAT(outcome.out, HasSubstr(part));
  }
  EXPECT_THAT(outcome.out, HasSubstr("    <entry name=\"uid\" id=\"1\" type=\"uint64\"/>\n"));
}

TEST_F(ImageTest, DumpHasNoDescriptions) {
  Write("desc.xml",
        "<metalib name=\"m\" version=\"1\" desc=\"x\"><!-- x --><meta name=\"a\" desc=\"x\">"
        "<entry name=\"b\" type=\"int8\" desc=\"x\"/></meta></metalib>");
  ExpectOutcome(Korvelcheck({"dump", "desc.xml"}), 0,
                "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<metalib name=\"m\" version=\"1\">\n  <meta name=\"a\">\n"
                "    <entry name=\"b\" type=\"int8\"/>\n  </meta>\n</metalib>\n",
                "");
}

TEST_F(ImageTest, ReportsImageThatCannotBeWrittenAsXml) {
  const std::string start = "odd.qmb: error: cannot be written as XML: ";
  const auto expect = [&](const qmx::EntryDecl& entry, const std::string& text, bool is_key = false) {
    qmx::MetalibBuilder builder("odd", 1, qmx::Protocol::kQmx);
    builder.AddMeta("table");
    builder.AddEntry({.name = "uid", .type = "int8"});
    builder.AddEntry(entry);
    if (is_key) builder.SetPrimaryKey({entry.name});
    WriteImage("odd.qmb", builder);
    EXPECT_THAT(Korvelcheck({"lint", "odd.qmb"}).err, Not(HasSubstr("error")));
    ExpectInputError(Korvelcheck({"dump", "odd.qmb"}), start + text + "\n");
  };
  const std::string characters = "; allowed: characters of XML 1.0 in UTF-8";
  expect({.name = "a\x01z", .type = "int8"}, "'name' is 'a\\x01z'" + characters);
  expect({.name = "a\xff", .type = "int8"}, "'name' is 'a\\xff'" + characters);
  expect({.name = "a\xed\xa0\x80", .type = "int8"}, "'name' is 'a\\xed\\xa0\\x80'" + characters);
  expect({.name = "a\xef\xbf\xbf", .type = "int8"}, "'name' is 'a\xef\xbf\xbf'" + characters);
  expect({.name = "a b", .type = "int8"}, "'primarykey' names 'a b'; allowed: names without blanks", true);
  expect({.name = "", .type = "int8"}, "'primarykey' names ''; allowed: names without blanks", true);
  expect({.name = "uid", .type = "int8"}, "a second entry 'uid' in meta 'table'; allowed: unique names");
  expect({.name = "a", .type = "int8", .id = -7}, "'id' is '-7', which is not a number; allowed: 0 to 2147483647");
  expect({.name = "a", .type = "int8", .count = 0}, "'count' is '0', out of range; allowed: 1 to 2147483647");
}

// Regression: an HTML page about images showed no source on either side, even if one of the two was a schema file.
TEST_F(ImageTest, HtmlShowsTheLinesOfDump) {
  for (const char* name : {"old", "wide"}) {
    ASSERT_EQ(Korvelcheck({"compile", std::string(name) + ".xml", "-o", std::string(name) + ".qmb"}).exit_code, 0);
  }
  const std::string dump = Korvelcheck({"dump", "wide.qmb"}).out;
  const std::string before = dump.substr(0, dump.find("type=\"uint32\""));
  const std::string place = std::to_string(std::ranges::count(before, '\n') + 1) + ":" +
                            std::to_string(before.size() - before.rfind('\n') + std::string("type=\"").size());
  for (const char* old_file : {"old.qmb", "old.xml"}) {
    const Outcome page = Korvelcheck({"check", old_file, "wide.qmb", "--format", "html"});
    EXPECT_EQ(page.exit_code, 1);
    EXPECT_THAT(page.out, HasSubstr("the lines are the output of <code>korvelcheck dump</code>"));
    EXPECT_THAT(page.out, HasSubstr("type=&quot;<mark class=\"refused\">uint32</mark>&quot;"));
    EXPECT_THAT(page.out, HasSubstr(">wide.qmb:" + place + "</a>"));
  }
  EXPECT_THAT(Korvelcheck({"check", "old.qmb", "wide.qmb"}).out, Not(HasSubstr("wide.qmb:" + place)));
}

TEST_F(ImageTest, HtmlReportsImageThatCannotBeWrittenAsXml) {
  qmx::MetalibBuilder builder("odd", 1, qmx::Protocol::kQmx);
  builder.AddMeta("table");
  builder.AddEntry({.name = "uid", .type = "int8"});
  builder.AddEntry({.name = "a\x01z", .type = "int8"});
  builder.SetPrimaryKey({"uid"});
  WriteImage("odd.qmb", builder);
  EXPECT_THAT(Korvelcheck({"lint", "odd.qmb", "--format", "html"}).out,
              HasSubstr("No source text: <code>odd.qmb</code> is compiled"));
}

// A type with this name would mean the simple type.
TEST_F(ImageTest, ReportsStructureNamedLikeASimpleType) {
  qmx::MetalibBuilder builder("odd", 1, qmx::Protocol::kQmx);
  builder.AddMeta("int64");
  builder.AddEntry({.name = "a", .type = "int8"});
  builder.AddMeta("outer");
  builder.AddEntry({.name = "b", .type = "int8"});
  const qmx::Metalib metalib = *builder.Finish().metalib;
  LPQMXMETAENTRY entry = qmx_get_entry_by_index(qmx_get_meta_by_index(metalib.get(), 1), 0);
  entry->iType = QMX_TYPE_STRUCT;
  entry->ptrTypeMeta = qmx_get_meta_by_index(metalib.get(), 0)->ptrMeta;
  Write("odd.qmb", qmx::WriteImage(metalib));
  ExpectInputError(
      Korvelcheck({"dump", "odd.qmb"}),
      "odd.qmb: error: cannot be written as XML: reading it back gives a different library; allowed: images made by 'compile'\n");
}

}  // namespace
}  // namespace tool_test
