// A git repository with a project of one schema file, and a client of the server.
#pragma once

#include <filesystem>
#include <string>

#include "../tool/git_repository.h"
#include "base/uri.h"
#include "client.h"

namespace lsp_test {

class ServerTest : public tool_test::GitTest {
 protected:
  ServerTest() : directory_(std::filesystem::current_path()) {
    Write("korvelcheck.toml", kProject);
    Write("shop.xml", kShop);
    Commit("Add shop");
  }
  ~ServerTest() override { std::filesystem::current_path(directory_); }

  static constexpr char kProject[] = "[schemas]\npaths = [\"*.xml\"]\nagainst = [\"git:HEAD\"]\n";
  // A waiver of the smaller price, for the end of the project file.
  static constexpr char kExpired[] =
      "[[waivers]]\nrule = \"field.size\"\ntable = \"items\"\nentry = \"price\"\nreason = \"no records yet\"\nuntil = "
      "\"2020-01-31\"\n";
  static constexpr char kShop[] =
      "<metalib name=\"shop\" version=\"1\">\n"
      "  <meta name=\"items\">\n"
      "    <entry name=\"sku\" type=\"uint32\"/>\n"
      "    <entry name=\"price\" type=\"int64\"/>\n"
      "    <primarykey entries=\"sku\"/>\n"
      "  </meta>\n"
      "</metalib>\n";

  std::string Uri(const std::string& file) const { return korvel::UriOf(PathOf(file).string()); }

  static std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    return text.replace(text.find(from), from.size(), to);
  }
  // The shop with a smaller price, which the checker refuses.
  static std::string SmallPrice() { return Replaced(kShop, "int64", "int32"); }

 private:
  std::filesystem::path directory_;
};

}  // namespace lsp_test
