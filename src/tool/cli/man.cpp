// The manual page, made from the declarations of the commands. Tested by tests/tool/man_test.cpp.
#include "rule_docs/rule_doc_format.h"
#include "tool/cli/command.h"
#include "tool/cli/completion.h"
#include "tool/cli/option_groups.h"
#include "tool/io/exit.h"

namespace korvel::tool {
namespace {

constexpr char kHead[] =
    ".\\\" Made by `korvelcheck man`.\n"
    ".TH KORVELCHECK 1 \"" KORVEL_MANUAL_DATE "\" \"korvelcheck " KORVEL_VERSION
    "\" \"User Commands\"\n"
    ".SH NAME\n"
    "korvelcheck \\- check schema changes of the Korvel table store\n"
    ".SH SYNOPSIS\n"
    ".B korvelcheck\n"
    ".I COMMAND\n"
    "[\\fIOPTIONS\\fR]\n"
    "[\\fIFILE\\fR...]\n"
    ".br\n"
    ".B korvelcheck\n"
    "\\fB\\-\\-help\\fR | \\fB\\-\\-version\\fR\n";

constexpr char kDescription[] = R"(.SH DESCRIPTION
Before the schema of a table changes, the store must know whether records
written under the old schema stay readable and correctly keyed under the new
one.
.B korvelcheck
gets the old and the new schema and answers: allowed, or refused by which rule
and why.
.PP
A schema is the path of a schema file or of an image,
.BI git: REV : PATH
for a file of a commit, or
.B \-
for standard input, at most once in a call.
What a file is shows in its first bytes.
)";

constexpr char kEnd[] = R"(.SH EXIT STATUS
.TP
.B 0
Everything that was compared is allowed.
.TP
.B 1
At least one table is refused, and not all of its findings are waived; or a
waiver is malformed, expired or unused; or there is no suggestion.
.TP
.B 2
The question could not be asked: wrong usage, a file that cannot be read, a
schema error, nothing to compare.
.TP
.B 3
A fault: the result or the log could not be written, memory ran out, or the
program is wrong.
.SH ENVIRONMENT
.TP
.B NO_COLOR
When set and not empty, nothing is coloured.
.TP
.B TERM
When unset or
.BR dumb ,
nothing is coloured.
.TP
.B SOURCE_DATE_EPOCH
Seconds since 1970: the day by which waivers expire, in place of today.
.SH FILES
.TP
.I korvelcheck.toml
Schema files, settings and waivers of a project.
It is looked for in the working directory and in those above.
.SH EXAMPLES
Check a change of all tables:
.PP
.RS 4
.EX
korvelcheck check old.xml new.xml
.EE
.RE
.PP
Check every schema file of a directory against its last committed state:
.PP
.RS 4
.EX
korvelcheck check \-\-against git:HEAD schemas
.EE
.RE
.PP
Make of a refused schema one that is allowed:
.PP
.RS 4
.EX
korvelcheck suggest old.xml new.xml | patch \-p0
.EE
.RE
.PP
Ask what a refusal is for:
.PP
.RS 4
.EX
korvelcheck explain primary\-key.size
.EE
.RE
.SH SEE ALSO
.BR git (1),
.BR patch (1)
)";

// The text as troff shows it as it is: hyphens that can be copied, no escapes. No line of ours begins with a period.
std::string Troff(const std::string& text) {
  std::string shown;
  for (const char c : text) {
    if (c == '\\') {
      shown += "\\e";
    } else if (c == '-') {
      shown += "\\-";
    } else if (c == '\'') {
      shown += "\\(aq";
    } else {
      shown += c;
    }
  }
  return shown;
}

// The text as a sentence, in lines that fit a terminal.
std::string Sentence(std::string text) {
  if (text.front() >= 'a' && text.front() <= 'z') text.front() = static_cast<char>(text.front() - 'a' + 'A');
  return Wrapped(Troff(text) + (text.ends_with('?') ? "" : "."), 78);
}

// "FILE..." of what is no option, in the way it is typed.
std::string Typed(const Argument& argument) {
  const std::string name = argument.Names().front() + (argument.is_repeated ? "..." : "");
  return argument.is_required ? name : "[" + name + "]";
}

std::string CommandEntry(const Command& command) {
  std::string text = std::string(".TP\n\\fB") + Troff(command.name) + "\\fR";
  for (const Argument& argument : ArgumentsOf(command)) {
    if (argument.IsOption()) continue;
    text += " \\fI" + Troff(Typed(argument)) + "\\fR";
  }
  return text + "\n" + Sentence(command.summary);
}

struct OptionUse {
  Argument option;
  std::vector<std::string> commands;  // that take it
};

bool IsSame(const Argument& a, const Argument& b) {
  return std::string_view(a.names) == b.names && a.value == b.value && a.description == b.description;
}

// Every option once, in the order in which the commands have them.
std::vector<OptionUse> OptionUses() {
  std::vector<OptionUse> uses;
  for (const Command* command : Commands()) {
    for (const Argument& argument : ArgumentsOf(*command)) {
      if (!argument.IsOption()) continue;
      auto use = uses.begin();
      while (use != uses.end() && !IsSame(use->option, argument)) ++use;
      if (use == uses.end()) use = uses.insert(use, {argument, {}});
      use->commands.emplace_back(command->name);
    }
  }
  return uses;
}

std::string OptionEntry(const OptionUse& use) {
  std::string text = ".TP\n";
  for (const std::string& name : use.option.Names()) {
    text += (name == use.option.Names().front() ? "\\fB" : ", \\fB") + Troff(name) + "\\fR";
  }
  if (!use.option.value.empty()) text += " \\fI" + Troff(use.option.value) + "\\fR";
  text += "\n" + Sentence(use.option.description);
  if (use.commands.size() == Commands().size()) return text;
  return text + Sentence("of " + Join(use.commands, ", "));
}

struct ManArguments {
  OutputOption output;

  void AddTo(ArgumentList& arguments) { output.AddTo(arguments); }
};

int Run(const ManArguments& arguments) {
  std::string text = std::string(kHead) + kDescription + ".SH COMMANDS\n";
  for (const Command* command : Commands()) text += CommandEntry(*command);
  text += ".SH OPTIONS\n";
  for (const OptionUse& use : OptionUses()) text += OptionEntry(use);
  arguments.output.Write(text + kEnd);
  return kAllAllowed;
}

}  // namespace

const Command kManCommand{"man", "write the manual page, to be read with 'man -l -'", Declare<ManArguments, Run>};

}  // namespace korvel::tool
