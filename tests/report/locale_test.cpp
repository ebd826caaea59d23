// Reports in programs that set a locale with another decimal point and other rules for upper and lower case. The tool sets no
// locale, but a store that links the checker may.
#include <gtest/gtest.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <locale>
#include <string>

#include "report/checked.h"
#include "report/render/render.h"

namespace report_test {
namespace {

// Some changes in every format.
std::string AllReports() {
  std::string all;
  for (const std::string proposal : {"v7.xml", "v7-wider-key.xml", "v7-several-changes.xml"}) {
    const CheckedReport checked = CheckExample({"locale", "examples/shop/v6.xml", "examples/shop/" + proposal});
    for (const korvel::Format& format : korvel::Formats()) all += format.Render(checked.report, false);
  }
  return all;
}

class OddNumbers : public std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\1"; }
};

TEST(Locale, OfStreamsHasNoEffect) {
  const std::string wanted = AllReports();
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new OddNumbers));
  const std::string reports = AllReports();
  std::locale::global(before);
  EXPECT_EQ(reports, wanted);
}

// Makes a locale in a temporary directory, which needs no root. False if the system lacks localedef or the sources.
bool MakeLocale(const std::string& directory, const std::string& name) {
  const std::string make =
      "localedef --no-archive -i " + name + " -f UTF-8 '" + directory + "/" + name + ".UTF-8' >'" + directory + "/log' 2>&1";
  return std::system(make.c_str()) == 0;
}

TEST(Locale, OfTheCLibraryHasNoEffect) {
  std::string directory = testing::TempDir() + "locales-XXXXXX";
  ASSERT_NE(::mkdtemp(directory.data()), nullptr);
  const std::string wanted = AllReports();
  int tried = 0;
  for (const std::string name : {"de_DE", "tr_TR"}) {
    if (!MakeLocale(directory, name)) continue;
    ::setenv("LOCPATH", directory.c_str(), 1);
    const bool is_set = std::setlocale(LC_ALL, (name + ".UTF-8").c_str()) != nullptr;
    const std::string reports = AllReports();
    std::setlocale(LC_ALL, "C");
    ::unsetenv("LOCPATH");
    EXPECT_TRUE(is_set) << name;
    EXPECT_EQ(reports, wanted) << name;
    ++tried;
  }
  std::filesystem::remove_all(directory);
  if (tried == 0) GTEST_SKIP() << "localedef or the locale sources are missing";
}

}  // namespace
}  // namespace report_test
