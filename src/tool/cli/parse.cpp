// Reads arguments with CLI11, which only this file includes. Tested by tests/tool/usage_test.cpp.
#include "tool/cli/arguments.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cstdint>
#include <memory>
#include <string_view>

#include "base/did_you_mean.h"
#include "base/text.h"

namespace korvel::tool {
namespace {

// Shows what an option takes. Which options it needs or excludes, its description says.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_option_opts(const CLI::Option* option) const override {
    const bool repeated = option->get_expected_max() == CLI::detail::expected_max_vector_size;
    const std::string value = option->get_items_expected_max() == 0 ? "" : option->get_type_name();
    return (value.empty() ? "" : " " + value) + (repeated ? " ..." : "") + (option->get_required() ? " REQUIRED" : "");
  }
};

void Set(const Argument& argument, const std::string& value) {
  const std::string allowed = argument.set(value);
  if (allowed.empty()) return;
  throw CLI::ValidationError(argument.Names().back(), Quote(value) + " is not allowed; allowed: " + allowed);
}

CLI::Option* AddTo(CLI::App& app, const Argument& argument) {
  if (argument.IsOption() && argument.value.empty()) {
    return app.add_flag_function(
        argument.names,
        [&argument](std::int64_t count) {
          if (count > 0) Set(argument, "");
        },
        argument.description);
  }
  if (!argument.is_repeated) {
    return app.add_option_function<std::string>(
        argument.names, [&argument](const std::string& value) { Set(argument, value); }, argument.description);
  }
  const auto set_all = [&argument](const std::vector<std::string>& values) {
    for (const std::string& value : values) Set(argument, value);
  };
  CLI::Option* const list = app.add_option_function<std::vector<std::string>>(argument.names, set_all, argument.description);
  // One value for each time that the option is given; what follows is positional.
  if (argument.IsOption()) list->expected(1)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)->allow_extra_args(false);
  return list;
}

void Declare(CLI::App& app, const Argument& argument) {
  CLI::Option* const option = AddTo(app, argument);
  const bool is_flag = argument.IsOption() && argument.value.empty();
  if (!is_flag) option->type_name(argument.IsOption() ? argument.value : "");
  if (argument.is_required) option->required();
  if (argument.needs != nullptr) option->needs(app.get_option(argument.needs));
  if (argument.excludes != nullptr) option->excludes(app.get_option(argument.excludes));
}

// Whether a word may be an option: paths do not begin in this way.
bool LooksLikeOption(std::string_view word) { return word.size() > 1 && word.front() == '-'; }

// Declaring options takes longer than checking a small file, so a call without options declares none, unless one is required.
void DeclareAll(CLI::App& app, const std::vector<Argument>& arguments, const std::vector<std::string>& words) {
  const bool has_options = std::ranges::any_of(words, LooksLikeOption) ||
                           std::ranges::any_of(arguments, [](const Argument& one) { return one.IsOption() && one.is_required; });
  for (const Argument& argument : arguments) {
    if (has_options || !argument.IsOption()) Declare(app, argument);
  }
}

std::string SimilarOption(const CLI::App& app, const std::string& word) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return DidYouMean(word, std::vector<std::string_view>(names.begin(), names.end()));
}

// The message for words that fit no argument; empty if there are none. An unknown option comes first: it may be why the other
// words do not fit.
std::string DescribeLeftOver(const CLI::App& app) {
  const std::vector<std::string> left = app.remaining();
  const auto found = std::ranges::find_if(left, LooksLikeOption);
  if (found == left.end()) return left.empty() ? "" : "unexpected argument " + Quote(left.front());
  const std::string name = found->substr(0, found->find('='));
  return "unknown option " + Quote(name) + SimilarOption(app, name);
}

std::string Describe(const CLI::App& app, const CLI::ParseError& error) {
  if (std::string left_over = DescribeLeftOver(app); !left_over.empty()) return left_over;
  const std::string text = error.what();
  const std::size_t too_often = text.find(": At Most 1 required");
  return too_often == std::string::npos ? text : text.substr(0, too_often) + " is given more than once; allowed: once";
}

}  // namespace

std::optional<std::string> Parse(const CommandTitle& command, const ArgumentList& arguments,
                                 const std::vector<std::string>& words) {
  CLI::App app(command.summary, std::string("korvelcheck ") + command.name);
  app.formatter(std::make_shared<HelpFormatter>());
  app.set_help_flag(kHelpNames, kHelpDescription);
  DeclareAll(app, arguments.all(), words);
  try {
    app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
  } catch (const CLI::CallForHelp&) {
    return app.help();
  } catch (const CLI::ParseError& error) {
    throw UsageError{Describe(app, error)};
  }
  return std::nullopt;
}

}  // namespace korvel::tool
