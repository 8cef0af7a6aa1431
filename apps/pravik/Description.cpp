#include "apps/pravik/Description.h"

#include <algorithm>
#include <functional>
#include <map>
#include <vector>

#include "Records/PravikVersion.h"
#include "Utils/Text.h"

namespace pravik::cli {
namespace {

/// A command within others that do not want to be seen alone.
std::vector<const CLI::App*> commandsOf(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); });
}

/// The options that have names, and no places.
std::vector<const CLI::Option*> optionsOf(const CLI::App& app) {
  return app.get_options([](const CLI::Option* option) { return !option->get_positional(); });
}

bool takesValue(const CLI::Option& option) {
  return option.get_items_expected_max() > 0;
}

/// What the option can be, "table json"; empty when it can be more than can be told.
std::string choicesOf(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  return contains(type, "|") ? replacingAll(type, "|", " ") : std::string();
}

/// "-r, --recursive", in the form that `named` gives each.
template <class Named>
std::string namesOf(const CLI::Option& option, const std::string& separator, const Named& named) {
  std::vector<std::string> names;
  for (const std::string& name : option.get_snames()) names.push_back(named("-" + name));
  for (const std::string& name : option.get_lnames()) names.push_back(named("--" + name));
  return CLI::detail::join(names, separator);
}

std::string namesOf(const CLI::Option& option, const std::string& separator) {
  return namesOf(option, separator, [](const std::string& name) { return name; });
}

/// Text that troff prints as it is.
std::string literal(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    const bool startsLine = escaped.empty() || escaped.back() == '\n';
    if (startsLine && (c == '.' || c == '\'')) escaped += "\\&";
    if (c == '\\' || c == '-') escaped += '\\';
    escaped += c == '\\' ? 'e' : c;
  }
  return escaped;
}

std::string manOption(const CLI::Option& option) {
  const std::string value = takesValue(option) ? " \\fI" + literal(option.get_type_name()) + "\\fR" : "";
  const auto bold = [](const std::string& name) { return "\\fB" + literal(name) + "\\fR"; };
  return ".TP\n" + namesOf(option, ", ", bold) + value + "\n" + literal(option.get_description()) + "\n";
}

/// A text that is laid out already.
std::string manText(const std::string& text) {
  return text.empty() ? "" : ".PP\n.nf\n" + literal(text) + "\n.fi\n";
}

/// The command, what only it has, and the commands within it.
std::string manCommand(const CLI::App& command, const std::string& path, const CLI::App& app) {
  const std::string name = path + " " + command.get_name();
  std::string page = ".SS " + literal("\"" + name + "\"") + "\n" + literal(command.get_description()) + "\n";
  for (const CLI::Option* option : optionsOf(command))
    if (app.get_option_no_throw("--" + option->get_lnames().front()) == nullptr) page += manOption(*option);
  page += manText(command.get_footer());
  for (const CLI::App* inner : commandsOf(command)) page += manCommand(*inner, name, app);
  return page;
}

/// Calls a function with each command and the words that name it, " parse id-front"; with the program itself first.
void walk(const CLI::App& app, const std::string& path,
          const std::function<void(const CLI::App& command, const std::string& path)>& visit) {
  visit(app, path);
  for (const CLI::App* command : commandsOf(app)) walk(*command, path + " " + command->get_name(), visit);
}

/// The cases of a shell script's `case`: how it finds the words that name the command, what the options can be, and
/// which options and commands each command has. `complete` begins the command that offers words.
struct ShellCases {
  std::string commands, values, options, inner;

  ShellCases(const CLI::App& app, const std::string& begin, const std::string& end) {
    std::map<std::string, std::string> choices;
    walk(app, "", [&](const CLI::App& command, const std::string& path) {
      if (!path.empty()) commands += (commands.empty() ? "'" : "|'") + path + "'";
      std::string names, below;
      for (const CLI::Option* option : optionsOf(command)) {
        names += " " + namesOf(*option, " ");
        if (!choicesOf(*option).empty()) choices[namesOf(*option, "|")] = choicesOf(*option);
      }
      for (const CLI::App* other : commandsOf(command)) below += " " + other->get_name();
      options += "    '" + path + "') " + begin + names + end + " ;;\n";
      if (!below.empty()) inner += "    '" + path + "') " + begin + below + end + " ;;\n";
    });
    for (const auto& [name, words] : choices)
      values += "    " + name + ") " + begin + " " + words + end + "; return ;;\n";
  }
};

std::string quoted(const std::string& text) {
  return "'" + replacingAll(text, "'", "\\'") + "'";
}

std::string fishOption(const CLI::Option& option) {
  std::string line;
  for (const std::string& name : option.get_snames()) line += " -s " + name;
  for (const std::string& name : option.get_lnames()) line += " -l " + name;
  if (const std::string choices = choicesOf(option); !choices.empty())
    line += " -x -a " + quoted(choices);
  else if (takesValue(option))
    line += " -r";
  return line + " -d " + quoted(option.get_description());
}

}  // namespace

std::string manPage(const CLI::App& app) {
  std::string page = ".TH PRAVIK 1 \"\" \"" + literal(PravikVersion::fullDescription()) + "\"\n.SH NAME\n" +
                     literal("pravik - reads identity cards, bank cards and codes from pictures") +
                     "\n.SH SYNOPSIS\n.B pravik\n.I COMMAND\n.RI [ OPTION ]... \" [\" FILE ]...\n.SH DESCRIPTION\n" +
                     literal(app.get_description()) +
                     "\n.SH OPTIONS\nThey may stand before the command or behind it.\n";
  for (const CLI::Option* option : optionsOf(app)) page += manOption(*option);
  page += ".SH COMMANDS\n";
  for (const CLI::App* command : commandsOf(app)) page += manCommand(*command, "pravik", app);
  return page + ".SH EXAMPLES\n" + manText(app.get_footer());
}

std::string bashCompletion(const CLI::App& app) {
  const ShellCases cases(app, "COMPREPLY=($(compgen -W '", " ' -- \"$current\"))");
  return "_pravik() {\n"
         "  local current=${COMP_WORDS[COMP_CWORD]} command= i\n"
         "  COMPREPLY=()\n"
         "  for ((i = 1; i < COMP_CWORD; i++)); do\n"
         "    case \"$command ${COMP_WORDS[i]}\" in\n"
         "    " +
         cases.commands +
         ") command+=\" ${COMP_WORDS[i]}\" ;;\n"
         "    esac\n"
         "  done\n"
         "  case ${COMP_WORDS[COMP_CWORD - 1]} in\n" +
         cases.values +
         "  esac\n"
         "  if [[ $current == -* ]]; then\n"
         "    case $command in\n" +
         cases.options +
         "    esac\n"
         "  else\n"
         "    case $command in\n" +
         cases.inner +
         "    esac\n"
         "  fi\n"
         "}\n"
         "complete -o default -F _pravik pravik\n";
}

std::string zshCompletion(const CLI::App& app) {
  const ShellCases cases(app, "compadd --", "");
  return "#compdef pravik\n"
         "local command= i\n"
         "for ((i = 2; i < CURRENT; i++)); do\n"
         "  case \"$command ${words[i]}\" in\n"
         "  " +
         cases.commands +
         ") command+=\" ${words[i]}\" ;;\n"
         "  esac\n"
         "done\n"
         "case ${words[CURRENT - 1]} in\n" +
         cases.values +
         "esac\n"
         "if [[ $PREFIX == -* ]]; then\n"
         "  case $command in\n" +
         cases.options +
         "  esac\n"
         "else\n"
         "  case $command in\n" +
         cases.inner +
         "    *) _files ;;\n"
         "  esac\n"
         "fi\n";
}

std::string fishCompletion(const CLI::App& app) {
  std::string script;
  const std::string start = "complete -c pravik";
  for (const CLI::Option* option : optionsOf(app)) script += start + fishOption(*option) + "\n";
  for (const CLI::App* command : commandsOf(app)) {
    script += start + " -n __fish_use_subcommand -f -a " + command->get_name() + " -d " +
              quoted(command->get_description()) + "\n";
    const std::string within = start + " -n '__fish_seen_subcommand_from " + command->get_name() + "'";
    walk(*command, "", [&](const CLI::App& inner, const std::string& path) {
      if (!path.empty()) script += within + " -a " + inner.get_name() + " -d " + quoted(inner.get_description()) + "\n";
      for (const CLI::Option* option : optionsOf(inner))
        if (app.get_option_no_throw("--" + option->get_lnames().front()) == nullptr)
          script += within + fishOption(*option) + "\n";
    });
  }
  return script;
}

}  // namespace pravik::cli
