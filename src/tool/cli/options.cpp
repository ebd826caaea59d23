// Command lines, through CLI11, which is seen only here. Held by tests/tool/usage_test.cpp.
#include "tool/cli/options.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <memory>
#include <string_view>

#include "base/did_you_mean.h"
#include "base/input_error.h"
#include "base/one_line.h"
#include "base/quote.h"
#include "schema/setting_values.h"
#include "tool/cli/command.h"
#include "tool/cli/usage.h"

namespace korvel::tool {
namespace {

constexpr NamedCode kLogFormats[] = {{"text", static_cast<int>(vesk::LineFormat::kText)},
                                     {"json", static_cast<int>(vesk::LineFormat::kJson)}};
constexpr NamedCode kLogLevels[] = {{"error", VESK_PRIORITY_ERROR}, {"warn", VESK_PRIORITY_WARN}, {"info", VESK_PRIORITY_INFO}};

// Help names what an option takes. What it needs or excludes its description says.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_option_opts(const CLI::Option* option) const override {
    const bool repeated = option->get_expected_max() == CLI::detail::expected_max_vector_size;
    const std::string value = option->get_items_expected_max() == 0 ? "" : option->get_type_name();
    return (value.empty() ? "" : " " + value) + (repeated ? " ..." : "") + (option->get_required() ? " REQUIRED" : "");
  }
};

[[noreturn]] void RefuseValue(const std::string& option, const std::string& value, const std::string& allowed) {
  throw CLI::ValidationError(option, Quote(value) + " is not allowed; allowed: " + allowed);
}

// An option that takes one of several words; `set` gets the word's code.
template <class Set>
CLI::Option* AddChoice(CLI::App& app, const std::string& option, std::span<const NamedCode> choices,
                       const std::string& description, Set set) {
  const auto take = [option, choices, set](const std::string& value) {
    const std::optional<int> code = CodeOf(choices, value);
    if (!code) RefuseValue(option, value, NamesOf(choices));
    set(*code);
  };
  return app.add_option_function<std::string>(option, take, description)->type_name(NamesOf(choices));
}

void AddSettings(CLI::App& app, Settings& given) {
  AddChoice(app, "--type", kTableTypes, "kind of the table; default: as the old schema's attributes say, else generic",
            [&given](int code) { given.type = code; });
  const auto take_version = [&given](const std::string& value) {
    if (!IsVersion(value)) RefuseValue("--server-version", value, kAllowedVersion);
    given.server_version = value;
  };
  app.add_option_function<std::string>("--server-version", take_version,
                                       "oldest server that runs the table; without it field lengths are not checked")
      ->type_name("VERSION");
  app.add_option("--whitelist", given.whitelist, "fields that may exceed the length limit, joined by ';'")->type_name("A;B");
  const auto take_list_num = [&given](const std::string& value) {
    given.list_num = ParseCount(value);
    if (!given.list_num) RefuseValue("--list-num", value, kAllowedListNum);
  };
  app.add_option_function<std::string>("--list-num", take_list_num,
                                       "list length on the server; default: as the old schema's attributes say, else 0")
      ->type_name("N");
}

void AddWaiverOptions(CLI::App& app, Options& options) {
  app.add_option("--reason", options.reason, "why the finding may pass")->type_name("TEXT")->required();
  app.add_option("--until", options.until, "the last day on which it may, like 2027-01-31")->type_name("DAY")->required();
  app.add_option("--project", options.project_file,
                 "project file; default: korvelcheck.toml here or in the nearest directory above, else a new one here")
      ->type_name("FILE");
}

void AddProjectOptions(CLI::App& app, Options& options) {
  CLI::Option* const named = app.add_option("--project", options.project_file,
                                            "project file; default: korvelcheck.toml here or in the nearest directory above")
                                 ->type_name("FILE");
  app.add_flag("--no-project", options.no_project, "use no project file")->excludes(named);
}

void AddMaxFindings(CLI::App& app, std::size_t& max_findings) {
  const auto take = [&max_findings](const std::string& value) {
    const std::optional<int> count = ParseCount(value);
    if (count.value_or(0) == 0) RefuseValue("--max-findings", value, "1 to 2147483647");
    max_findings = static_cast<std::size_t>(*count);
  };
  app.add_option_function<std::string>("--max-findings", take,
                                       "stop at so many refused changes of a table; default: " + std::to_string(max_findings))
      ->type_name("N");
}

void AddTableOptions(CLI::App& app, const Command& command, Options& options) {
  if ((command.options & kTableOption) != 0) {
    app.add_option("--table", options.tables, "compare this table only; may be given again; default: all")
        ->type_name("NAME")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->allow_extra_args(false);
  }
  if ((command.options & kDstTableOption) != 0) {
    app.add_option("--dst-table", options.dst_table, "the table's name in DST, for one --table; default: the same")
        ->type_name("NAME")
        ->needs("--table");
  }
  if ((command.options & kCreatedAsOption) != 0) {
    AddChoice(app, "--created-as", kProtocols, "protocol the table was created in; default: as the first schema says, else qmx",
              [&options](int code) { options.given.created_as = code; });
  }
  if ((command.options & kSettingOptions) != 0) AddSettings(app, options.given);
  if ((command.options & kAgainstOption) != 0) {
    app.add_option("--against", options.against, "compare the project's schema files with those of a commit or directory")
        ->type_name("git:REV|DIR");
    app.add_flag("--allow-new", options.allow_new, "let the call pass where all tables are new and none can be compared");
  }
  if (UsesProject(command)) AddProjectOptions(app, options);
  if ((command.options & kFindingsOption) != 0) AddMaxFindings(app, options.max_findings);
}

void AddOutput(CLI::App& app, const Command& command, Options& options) {
  const bool needed = (command.options & kNeedsOutput) != 0;
  app.add_option("-o,--output", options.output,
                 std::string("write to FILE, whole or not at all; '-'") + (needed ? "" : " or default") + ": standard output")
      ->type_name("FILE")
      ->required(needed);
}

std::vector<NamedCode> FormatChoices() {
  std::vector<NamedCode> choices;
  for (const Format& format : Formats()) choices.push_back({format.name, static_cast<int>(choices.size())});
  return choices;
}

std::vector<NamedCode> RuleDocFormatChoices() {
  std::vector<NamedCode> choices;
  for (const RuleDocFormat* format : RuleDocFormats()) choices.push_back({format->name, static_cast<int>(choices.size())});
  return choices;
}

void AddRuleDocOptions(CLI::App& app, const Command& command, Options& options) {
  static const std::vector<NamedCode> formats = RuleDocFormatChoices();  // the option keeps looking at them
  if ((command.options & kRuleDocOption) != 0) {
    AddChoice(app, "--format", formats, "form of the page; default: text",
              [&options](int code) { options.rule_doc_format = RuleDocFormats()[static_cast<std::size_t>(code)]; });
  }
  if ((command.options & kCodesOption) != 0) app.add_flag("--codes", options.codes, "list the result codes, not the rules");
}

void AddReportOptions(CLI::App& app, Options& options, vesk::LogSettings& log) {
  static const std::vector<NamedCode> formats = FormatChoices();  // the option keeps looking at them
  AddChoice(app, "--format", formats, "form of the report; default: text",
            [&options](int code) { options.format = &Formats()[static_cast<std::size_t>(code)]; });
  const auto take_log = [&options, &log](const std::string& value) {
    options.log.emplace();
    if (value != "-") log.file = value;
  };
  CLI::Option* const log_option =
      app.add_option_function<std::string>("--log", take_log, "append the checker's log to FILE; '-': standard error")
          ->type_name("FILE");
  AddChoice(app, "--log-format", kLogFormats, "form of log lines, with --log; default: text", [&log](int code) {
    log.format = static_cast<vesk::LineFormat>(code);
  })->needs(log_option);
  AddChoice(app, "--log-level", kLogLevels, "least grave level to log, with --log; default: info", [&log](int code) {
    log.least_grave = code;
  })->needs(log_option);
}

void AddSuggestOptions(CLI::App& app, const Command& command, Options& options) {
  if ((command.options & kSuggestOptions) == 0) return;
  CLI::Option* const file = app.add_flag("--file", options.whole_file, "the whole suggested schema file");
  app.add_flag_function(
         "--diff", [](std::int64_t) {}, "unified difference from NEW to it; the default")
      ->excludes(file);
}

void AddTextOrJson(CLI::App& app, Options& options) {
  static constexpr NamedCode kForms[] = {{"text", 0}, {"json", 1}};
  AddChoice(app, "--format", kForms, "form of the output; default: text", [&options](int code) { options.json = code == 1; });
}

// Whether a word may be an option, and no path.
bool IsOption(std::string_view argument) { return argument.size() > 1 && argument.front() == '-'; }

void AddInputs(CLI::App& app, const Command& command, Options& options) {
  constexpr char kWhat[] = "schema file or image; '-': standard input";
  if (command.first.argument == nullptr) return;
  if ((command.options & kTakesWord) != 0) {
    app.add_option(command.first.argument, options.word, command.first.role)->required()->type_name("");
    return;
  }
  if ((command.options & kAgainstOption) != 0) {
    app.add_option("FILES", options.inputs, "OLD and NEW, schema files or images; with --against, files and directories")
        ->type_name("");
    return;
  }
  if ((command.options & kManyInputs) != 0) {
    app.add_option(command.first.argument, options.inputs, "schema files or images; '-': standard input")
        ->required()
        ->type_name("");
    return;
  }
  const bool pair = command.second.argument != nullptr;
  options.inputs.resize(pair ? 2 : 1);
  app.add_option(command.first.argument, options.inputs[0], kWhat)->required()->type_name("");
  const bool optional = (command.options & kSecondIsOptional) != 0;
  if (pair) app.add_option(command.second.argument, options.inputs[1], kWhat)->required(!optional)->type_name("");
}

std::string LikeOption(const CLI::App& app, const std::string& word) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return DidYouMean(word, std::vector<std::string_view>(names.begin(), names.end()));
}

// What to say about arguments that fit no option; empty if there are none. An unknown option explains more than what it hides.
std::string AboutLeftOver(const CLI::App& app) {
  const std::vector<std::string> left = app.remaining();
  const auto found = std::find_if(left.begin(), left.end(), IsOption);
  if (found == left.end()) return left.empty() ? "" : "unexpected argument " + Quote(left.front());
  const std::string name = found->substr(0, found->find('='));
  return "unknown option " + Quote(name) + LikeOption(app, name);
}

// Without --against there are two files, or none where a project says what to compare with.
void RequirePair(const Command& command, const Options& options) {
  if (options.against) return;
  if (options.inputs.size() == 1) RefuseUsage(command, std::string(command.second.argument) + " is required");
  if (options.inputs.size() > 2) RefuseUsage(command, "unexpected argument " + Quote(options.inputs[2]));
}

std::string TextResult(const CLI::ParseError& error) {
  const std::string text = error.what();
  const std::size_t too_often = text.find(": At Most 1 required");
  return too_often == std::string::npos ? text : text.substr(0, too_often) + " is given more than once; allowed: once";
}

void Parse(CLI::App& app, const Command& command, const std::vector<std::string>& arguments) {
  try {
    app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::CallForHelp&) {
    throw;
  } catch (const CLI::ParseError& error) {
    const std::string left_over = AboutLeftOver(app);
    RefuseUsage(command, left_over.empty() ? TextResult(error) : left_over);
  }
}

void AddOptions(CLI::App& app, const Command& command, Options& options, vesk::LogSettings& log) {
  AddTableOptions(app, command, options);
  if ((command.options & kHistoryOption) != 0) {
    app.add_flag("--git", options.git_history, "VERSION is a path: all commits that changed the file, oldest first");
  }
  if ((command.options & kWaiverOptions) != 0) AddWaiverOptions(app, options);
  AddOutput(app, command, options);
  AddRuleDocOptions(app, command, options);
  AddSuggestOptions(app, command, options);
  if (command.run != nullptr) AddReportOptions(app, options, log);
  if ((command.options & kTextOrJson) != 0) AddTextOrJson(app, options);
}

Argument Described(const CLI::Option& option) {
  Argument argument;
  for (const std::string& name : option.get_snames()) argument.names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) argument.names.push_back("--" + name);
  argument.is_option = !argument.names.empty();
  if (!argument.is_option) argument.names.push_back(option.get_name(true));
  if (option.get_items_expected_max() != 0) argument.value = option.get_type_name();
  argument.description = option.get_description();
  argument.is_required = option.get_required();
  argument.is_repeated =
      option.get_items_expected_max() > 1 || option.get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
  return argument;
}

}  // namespace

std::vector<Argument> ArgumentsOf(const Command& command) {
  Options options;
  vesk::LogSettings log;
  CLI::App app;
  AddInputs(app, command, options);
  AddOptions(app, command, options, log);
  std::vector<Argument> arguments;
  for (const CLI::Option* option : app.get_options()) arguments.push_back(Described(*option));
  return arguments;
}

void RefuseUsage(const Command& command, const std::string& what) {
  const std::string name = command.name;
  throw InputError{{ToolMessage(name + ": " + OneLine(what)), "Try 'korvelcheck " + name + " --help'."}};
}

std::optional<Options> ParseOptions(const Command& command, const std::vector<std::string>& arguments, std::string& help) {
  Options options;
  vesk::LogSettings log;
  log.least_grave = VESK_PRIORITY_INFO;
  CLI::App app(command.summary, std::string("korvelcheck ") + command.name);
  app.formatter(std::make_shared<HelpFormatter>());
  AddInputs(app, command, options);
  // Declaring them takes longer than reading a small file: a call without options does without, unless one is needed.
  if ((command.options & (kNeedsOutput | kWaiverOptions)) != 0 || std::any_of(arguments.begin(), arguments.end(), IsOption)) {
    AddOptions(app, command, options, log);
  }
  try {
    Parse(app, command, arguments);
  } catch (const CLI::CallForHelp&) {
    help = app.help();
    return std::nullopt;
  }
  if ((command.options & kAgainstOption) != 0) RequirePair(command, options);
  const bool may_lack_second = (command.options & kSecondIsOptional) != 0;
  if (may_lack_second && app.get_option(command.second.argument)->empty()) options.inputs.pop_back();
  if (options.dst_table && options.tables.size() != 1) RefuseUsage(command, "--dst-table goes with one --table");
  if (std::count(options.inputs.begin(), options.inputs.end(), "-") > 1) {
    RefuseUsage(command, "'-' (standard input) is given twice; allowed: once");
  }
  if (options.output == "-") options.output.reset();
  if (options.log) options.log = log;
  return options;
}

std::optional<Project> ProjectOf(const Options& options) {
  if (options.no_project) return std::nullopt;
  const std::optional<std::string> path = options.project_file ? options.project_file : FindProjectFile();
  if (!path) return std::nullopt;
  return ReadProject(*path);
}

}  // namespace korvel::tool
