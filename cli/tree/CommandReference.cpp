#include "cli/tree/CommandReference.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <sstream>
#include <string>

#include <CLI/CLI.hpp>

#include "cli/tree/CommandSet.h"
#include "core/persistence/AppConstants.h"
#include "core/persistence/QuillmontPersistence.h"

namespace quillmont::CommandReference {
namespace {

// ---- reading the tree ----

Parameter parameter(const CLI::Option& option, const CommandSet& commands) {
  Parameter result;
  for (const std::string& name : option.get_lnames()) result.names.push_back("--" + name);
  for (const std::string& name : option.get_snames()) result.names.push_back("-" + name);
  if (result.names.empty()) {
    result.valueName = option.get_single_name();
  } else if (option.get_expected_max() > 0 && option.get_type_size_max() > 0) {  // not a flag
    const std::string typeName = option.get_type_name();  // "SIZE:{small,medium}" with a check
    result.valueName = typeName.substr(0, typeName.find(':'));
    if (result.valueName.empty()) result.valueName = "VALUE";
  }
  result.description = option.get_description();
  result.required = option.get_required();
  result.repeats = result.names.empty() && option.get_expected_max() > 1;
  if (const CommandSet::Values* offered = commands.offered(&option)) {
    result.values.words = offered->words;
    result.values.categories = offered->categories;
  }
  result.values.files = result.valueName == "FILE";
  result.values.directories = result.valueName == "DIR";
  return result;
}

bool hidden(const CLI::App& command) { return command.get_group().empty(); }

void describeCommand(const CLI::App& app, const CommandSet& commands, std::vector<std::string> path,
                     const std::vector<Parameter>& passedOn, Tree& tree) {
  Command command;
  command.path = path;
  command.description = app.get_description();
  command.footer = app.get_footer();
  // Commands show the program's footer unless they have their own.
  if (!path.empty() && command.footer == tree.commands.front().footer) command.footer.clear();
  command.needsCommand = app.get_require_subcommand_min() > 0;
  for (const CLI::Option* option : app.get_options()) {
    Parameter described = parameter(*option, commands);
    described.help = option == app.get_help_ptr() || option == app.get_help_all_ptr();
    (described.names.empty() ? command.arguments : command.options).push_back(std::move(described));
  }
  for (const Parameter& option : command.options) {
    if (!option.valueName.empty()) command.valueOptions.push_back(option);
  }
  if (app.get_fallthrough()) {
    command.valueOptions.insert(command.valueOptions.end(), passedOn.begin(), passedOn.end());
  }
  const auto children = app.get_subcommands([](const CLI::App* child) { return !hidden(*child); });
  for (const CLI::App* child : children) {
    command.commands.push_back(child->get_name());
    command.commandDescriptions.emplace_back(child->get_name(), child->get_description());
  }
  const std::vector<Parameter> valueOptions = command.valueOptions;
  tree.commands.push_back(std::move(command));
  for (const CLI::App* child : children) {
    std::vector<std::string> childPath = path;
    childPath.push_back(child->get_name());
    describeCommand(*child, commands, std::move(childPath), valueOptions, tree);
  }
}

std::string firstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

std::string joined(const std::vector<std::string>& words, std::string_view separator) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : std::string(separator)) + word;
  return text;
}

// ---- bash and zsh: the outline as shell functions ----

// A word in single quotes for bash, zsh and POSIX shells.
std::string shellQuoted(std::string_view text) {
  std::string result = "'";
  for (const char c : text) result += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return result + "'";
}

std::string quotedList(const std::vector<std::string>& words) {
  std::vector<std::string> list;
  for (const std::string& word : words) list.push_back(shellQuoted(word));
  return joined(list, " ");
}

// The key under which the walker looks an option or argument up:
// "widget show:--size", "widget press:#0" (the first argument).
std::string key(const Command& command, const std::string& name) { return pathText(command.path) + ":" + name; }

// One arm of a `case`: the patterns (each quoted; `open` ends a pattern with
// a `*`) and the commands.
struct Arm {
  std::vector<std::string> patterns;
  std::string body;
};

std::string caseFunction(std::string_view name, std::string_view comment, std::string_view subject,
                         const std::vector<Arm>& arms, std::string_view otherwise) {
  std::ostringstream out;
  out << "# " << comment << "\n" << name << "() {\n  case " << subject << " in\n";
  for (const Arm& arm : arms) out << "    (" << joined(arm.patterns, "|") << ") " << arm.body << " ;;\n";
  out << "    (*) " << otherwise << " ;;\n  esac\n}\n\n";
  return out.str();
}

std::string valuesBody(const Values& values) {
  std::string mode = values.files ? "files" : values.directories ? "directories" : values.categories ? "categories" : "";
  return "reply=(" + quotedList(values.words) + ") mode=" + (mode.empty() ? "''" : mode);
}

// The functions both bash and zsh scripts use: the commands below a command,
// its options, whether an option takes a value, and what to offer for one.
std::string outlineFunctions(const Tree& tree) {
  std::vector<Arm> commandArms, optionArms, valueArms, repeatingArms;
  std::vector<std::string> takesValue;
  for (const Command& command : tree.commands) {
    const std::string path = shellQuoted(pathText(command.path));
    if (!command.commands.empty()) commandArms.push_back({{path}, "reply=(" + quotedList(command.commands) + ")"});
    std::vector<std::string> options;
    for (const Parameter& option : command.options) options.insert(options.end(), option.names.begin(), option.names.end());
    optionArms.push_back({{path}, "reply=(" + quotedList(options) + ")"});
    for (const Parameter& option : command.valueOptions) {
      std::vector<std::string> patterns;
      for (const std::string& name : option.names) patterns.push_back(shellQuoted(key(command, name)));
      takesValue.insert(takesValue.end(), patterns.begin(), patterns.end());
      valueArms.push_back({patterns, valuesBody(option.values)});
    }
    for (std::size_t index = 0; index < command.arguments.size(); ++index) {
      const Parameter& argument = command.arguments[index];
      const std::string pattern = shellQuoted(key(command, "#" + (argument.repeats ? std::string() : std::to_string(index))));
      if (argument.repeats) {
        repeatingArms.push_back({{pattern + "*"}, valuesBody(argument.values)});
      } else {
        valueArms.push_back({{pattern}, valuesBody(argument.values)});
      }
    }
  }
  valueArms.insert(valueArms.end(), repeatingArms.begin(), repeatingArms.end());
  return caseFunction("_quillmont_commands", "The commands below the command $1 (\"\" for the program).", "$1",
                      commandArms, "reply=()") +
         caseFunction("_quillmont_options", "The options of the command $1.", "$1", optionArms, "reply=()") +
         caseFunction("_quillmont_takes_value", "Whether option $2 of the command $1 takes a value.", "$1:$2",
                      {{takesValue, "return 0"}}, "return 1") +
         caseFunction("_quillmont_values",
                      "What to offer for option $2 of the command $1, or for its argument #N: words in reply, and in "
                      "mode files, directories or categories (the person's own, asked of the program).",
                      "$1:$2", valueArms, "reply=() mode=''");
}

constexpr std::string_view bashWalker = R"BASH(_quillmont() {
  # Readline splits words at : and = (quillmont://overview, --size=small);
  # join them again, and keep in mind that it replaces only what follows the
  # last of those.
  local -a words=()
  local k joined=0 word
  for ((k = 0; k <= COMP_CWORD; k++)); do
    word=${COMP_WORDS[k]}
    if ((k > 0)) && [[ $word == [:=] || $joined == 1 ]]; then
      words[${#words[@]} - 1]+=$word
    else
      words+=("$word")
    fi
    [[ $word == [:=] ]] && joined=1 || joined=0
  done
  local cword=$((${#words[@]} - 1))
  local cur=${words[cword]} path='' mode='' home='' option='' before='' i arguments=0
  local -a reply=()
  COMPREPLY=()
  for ((i = 1; i < cword; i++)); do
    word=${words[i]}
    case $word in
      -*=* | --) ;;
      -*)
        if _quillmont_takes_value "$path" "$word"; then
          [[ $word == --data-home ]] && home=${words[i + 1]}
          ((i++))
        fi
        ;;
      *)
        _quillmont_commands "$path"
        if ((arguments == 0)) && [[ " ${reply[*]} " == *" $word "* ]]; then
          path=${path:+$path }$word
        else
          ((arguments++))
        fi
        ;;
    esac
  done
  local typed=$cur
  if [[ $cur == -*=* ]]; then
    option=${cur%%=*} before=$option= typed=${cur#*=}
  elif ((cword > 1)); then
    option=${words[cword - 1]}
  fi
  if [[ $option == -* ]] && _quillmont_takes_value "$path" "$option"; then
    _quillmont_values "$path" "$option"
  elif [[ $cur == -* ]]; then
    _quillmont_options "$path"
  else
    _quillmont_values "$path" "#$arguments"
    if ((arguments == 0)); then
      local -a offered=("${reply[@]}")
      _quillmont_commands "$path"
      reply+=("${offered[@]}")
    fi
  fi
  case $mode in
    files | directories)
      compopt -o filenames 2>/dev/null
      local flag=-f
      [[ $mode == directories ]] && flag=-d
      local IFS=$'\n'
      COMPREPLY=($(compgen $flag -- "$typed"))
      return 0
      ;;
    categories)
      local title
      while IFS= read -r title; do
        reply+=("$title")
      done < <("${words[0]}" ${home:+--data-home "$home"} complete categories 2>/dev/null)
      ;;
  esac
  local kept=${cur%"${cur##*[:=]}"} candidate
  for candidate in "${reply[@]}"; do
    [[ $candidate == "$typed"* ]] || continue
    candidate=$before$candidate
    candidate=${candidate#"$kept"}
    [[ -n $candidate ]] || continue
    printf -v candidate %q "$candidate"
    COMPREPLY+=("$candidate")
  done
  return 0
}

complete -F _quillmont quillmont
)BASH";

constexpr std::string_view zshWalker = R"ZSH(_quillmont() {
  local command_path='' word mode='' home='' option='' cur=${words[CURRENT]}
  local -a reply offered described
  integer i arguments=0 found=1
  for ((i = 2; i < CURRENT; i++)); do
    word=${words[i]}
    case $word in
      (-*=*|--) ;;
      (-*)
        if _quillmont_takes_value "$command_path" "$word"; then
          [[ $word == --data-home ]] && home=${words[i+1]}
          ((i++))
        fi ;;
      (*)
        _quillmont_commands "$command_path"
        if ((arguments == 0 && ${reply[(Ie)$word]})); then
          command_path=${command_path:+$command_path }$word
        else
          ((arguments++))
        fi ;;
    esac
  done
  if [[ $cur == -*=* ]]; then
    option=${cur%%=*}
    compset -P '*='
  elif ((CURRENT > 2)); then
    option=${words[CURRENT-1]}
  fi
  if [[ $option == -* ]] && _quillmont_takes_value "$command_path" "$option"; then
    _quillmont_values "$command_path" "$option"
  elif [[ $cur == -* ]]; then
    _quillmont_option_descriptions "$command_path"
    described=("${reply[@]}")
    _describe -t options option described
    return
  else
    _quillmont_values "$command_path" "#$arguments"
    if ((arguments == 0)); then
      offered=("${reply[@]}")
      _quillmont_command_descriptions "$command_path"
      described=("${reply[@]}")
      ((${#described})) && _describe -t commands command described && found=0
      reply=("${offered[@]}")
    fi
  fi
  case $mode in
    (files) _files; return ;;
    (directories) _files -/; return ;;
    (categories)
      reply+=("${(@f)$(${words[1]} ${home:+--data-home} ${home:+$home} complete categories 2>/dev/null)}") ;;
  esac
  reply=(${reply:#})
  ((${#reply})) && compadd -a reply && found=0
  return found
}

if [[ $funcstack[1] == _quillmont ]]; then
  _quillmont "$@"
else
  compdef _quillmont quillmont
fi
)ZSH";

// "name:description" as zsh's _describe reads it (colons in the name escaped).
std::string described(const std::string& name, const std::string& description) {
  std::string escaped;
  for (const char c : name) escaped += c == ':' ? std::string("\\:") : std::string(1, c);
  return shellQuoted(escaped + ":" + firstLine(description));
}

// ---- fish ----

std::string fishQuoted(std::string_view text) {
  std::string result = "'";
  for (const char c : text) {
    if (c == '\\' || c == '\'') result += '\\';
    result += c;
  }
  return result + "'";
}

std::string fishCondition(const Command& command) {
  return fishQuoted("__quillmont_at " + fishQuoted(pathText(command.path)));
}

// The -a/-F/-x part of a `complete` line for a value.
std::string fishValues(const Values& values) {
  if (values.files) return " -r -F";
  if (values.directories) return " -x -a " + fishQuoted("(__fish_complete_directories)");
  std::vector<std::string> words;
  for (const std::string& word : values.words) words.push_back(fishQuoted(word));
  if (values.categories) words.emplace_back("(__quillmont_categories)");
  return words.empty() ? " -x" : " -x -a " + fishQuoted(joined(words, " "));
}

constexpr std::string_view fishWalker = R"FISH(# The command the words before the cursor name ("" for the program, "widget show").
function __quillmont_path
    set -l tokens (commandline -opc)
    set -e tokens[1]
    set -l path ''
    set -l arguments 0
    set -l skip 0
    for token in $tokens
        if test $skip = 1
            set skip 0
            continue
        end
        switch $token
            case '-*=*' --
            case '-*'
                __quillmont_takes_value "$path" $token; and set skip 1
            case '*'
                if test $arguments = 0; and contains -- $token (__quillmont_commands "$path")
                    if test -z "$path"
                        set path $token
                    else
                        set path "$path $token"
                    end
                else
                    set arguments (math $arguments + 1)
                end
        end
    end
    echo $path
end

function __quillmont_at --argument-names wanted
    set -l current (__quillmont_path)
    test "$current" = "$wanted"
end

# The person's own categories, from the store the line names.
function __quillmont_categories
    set -l tokens (commandline -opc)
    set -l arguments complete categories
    set -l index (contains -i -- --data-home $tokens)
    and test $index -lt (count $tokens)
    and set arguments --data-home $tokens[(math $index + 1)] $arguments
    command $tokens[1] $arguments 2>/dev/null
end

)FISH";

// ---- roff ----

// Text for roff: backslashes and hyphen-minus escaped, characters outside
// ASCII named by their code points, so the page reads the same in any
// locale.
std::string roff(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size();) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte < 0x80) {
      if (text[i] == '\\') {
        result += "\\e";
      } else if (text[i] == '-') {
        result += "\\-";
      } else {
        result += text[i];
      }
      ++i;
      continue;
    }
    const std::size_t length = byte >= 0xf0 ? 4 : byte >= 0xe0 ? 3 : 2;
    std::uint32_t code = byte & (length == 4 ? 0x07u : length == 3 ? 0x0fu : 0x1fu);
    for (std::size_t k = 1; k < length && i + k < text.size(); ++k) {
      code = (code << 6) | (static_cast<unsigned char>(text[i + k]) & 0x3fu);
    }
    char name[16];
    std::snprintf(name, sizeof name, "\\[u%04X]", static_cast<unsigned>(code));
    result += name;
    i += length;
  }
  return result;
}

// A line of running text: one that starts with a period or an apostrophe
// would be read as a request.
std::string roffLine(std::string_view text) {
  const std::string escaped = roff(text);
  return (escaped.starts_with('.') || escaped.starts_with('\'') ? "\\&" : "") + escaped + "\n";
}

// A path that may break after any of its slashes.
std::string roffPath(std::string_view path) {
  std::string result;
  for (const char c : roff(path)) result += c == '/' ? std::string("/\\:") : std::string(1, c);
  return result;
}

std::string optionLabel(const Parameter& option) {
  std::vector<std::string> names;
  for (auto name = option.names.rbegin(); name != option.names.rend(); ++name) {
    names.push_back("\\fB" + roff(*name) + "\\fR");  // short names first
  }
  std::string label = joined(names, ", ");
  if (!option.valueName.empty()) label += " \\fI" + roff(option.valueName) + "\\fR";
  return label;
}

std::string synopsis(const Command& command) {
  std::string line = ".B " + roff("quillmont" + std::string(command.path.empty() ? "" : " ") + pathText(command.path)) + "\n";
  std::vector<std::string> parts;
  if (std::any_of(command.options.begin(), command.options.end(), [](const Parameter& option) { return !option.help; })) {
    parts.push_back("[\\fIOPTIONS\\fR]");
  }
  for (const Parameter& argument : command.arguments) {
    const std::string name = "\\fI" + roff(argument.valueName) + "\\fR" + (argument.repeats ? "\\ ..." : "");
    parts.push_back(argument.required ? name : "[" + name + "]");
  }
  if (!command.commands.empty()) parts.push_back(command.needsCommand ? "\\fICOMMAND\\fR" : "[\\fICOMMAND\\fR]");
  if (!parts.empty()) line += joined(parts, " ") + "\n";
  return line;
}

// Help footers are lines of text, an indented line being an example.
std::string footerText(const std::string& footer) {
  std::string out = ".PP\n";
  std::istringstream lines(footer);
  bool example = false;
  for (std::string line; std::getline(lines, line);) {
    const bool indented = line.starts_with(' ');
    if (indented != example) out += indented ? ".PP\n.RS 4\n.nf\n" : ".fi\n.RE\n.PP\n";
    example = indented;
    if (line.empty()) {
      out += example ? "\n" : ".PP\n";
      continue;
    }
    out += roffLine(indented ? line.substr(line.find_first_not_of(' ')) : line);
  }
  if (example) out += ".fi\n.RE\n";
  return out;
}

std::string parameters(const Command& command) {
  std::string out;
  for (const Parameter& argument : command.arguments) {
    out += ".TP\n\\fI" + roff(argument.valueName) + "\\fR\n" + roffLine(argument.description);
  }
  for (const Parameter& option : command.options) {
    // Every command's help options are said once, in the program's.
    if (option.help && !command.path.empty()) continue;
    out += ".TP\n" + optionLabel(option) + "\n" + roffLine(option.description);
  }
  return out;
}

}  // namespace

std::string pathText(const std::vector<std::string>& path) { return joined(path, " "); }

Tree describe(const CLI::App& program, const CommandSet& commands) {
  Tree tree;
  describeCommand(program, commands, {}, {}, tree);
  return tree;
}

std::string bash(const Tree& tree) {
  return "# bash completion for quillmont, written by `quillmont generate bash` from its commands.\n"
         "# shellcheck disable=SC2207\n\n" +
         outlineFunctions(tree) + std::string(bashWalker);
}

std::string zsh(const Tree& tree) {
  std::vector<Arm> commandArms, optionArms;
  for (const Command& command : tree.commands) {
    const std::string path = shellQuoted(pathText(command.path));
    std::vector<std::string> entries;
    for (const auto& [name, description] : command.commandDescriptions) entries.push_back(described(name, description));
    if (!entries.empty()) commandArms.push_back({{path}, "reply=(" + joined(entries, " ") + ")"});
    entries.clear();
    for (const Parameter& option : command.options) {
      for (const std::string& name : option.names) entries.push_back(described(name, option.description));
    }
    optionArms.push_back({{path}, "reply=(" + joined(entries, " ") + ")"});
  }
  return "#compdef quillmont\n# zsh completion for quillmont, written by `quillmont generate zsh` from its commands.\n\n" +
         outlineFunctions(tree) +
         caseFunction("_quillmont_command_descriptions", "The commands below the command $1, as name:description.",
                      "$1", commandArms, "reply=()") +
         caseFunction("_quillmont_option_descriptions", "The options of the command $1, as name:description.", "$1",
                      optionArms, "reply=()") +
         std::string(zshWalker);
}

std::string fish(const Tree& tree) {
  std::ostringstream out;
  out << "# fish completion for quillmont, written by `quillmont generate fish` from its commands.\n\n"
      << "# The commands below the command $path (\"\" for the program).\n"
      << "function __quillmont_commands --argument-names path\n    switch $path\n";
  for (const Command& command : tree.commands) {
    if (command.commands.empty()) continue;
    std::vector<std::string> names;
    for (const std::string& name : command.commands) names.push_back(fishQuoted(name));
    out << "        case " << fishQuoted(pathText(command.path)) << "\n            printf '%s\\n' "
        << joined(names, " ") << "\n";
  }
  out << "    end\nend\n\n# Whether option $option of the command $path takes a value.\n"
      << "function __quillmont_takes_value --argument-names path option\n    switch \"$path:$option\"\n        case";
  for (const Command& command : tree.commands) {
    for (const Parameter& option : command.valueOptions) {
      for (const std::string& name : option.names) out << " " << fishQuoted(key(command, name));
    }
  }
  out << "\n            return 0\n    end\n    return 1\nend\n\n" << fishWalker << "complete -c quillmont -f\n";
  for (const Command& command : tree.commands) {
    const std::string condition = fishCondition(command);
    for (const auto& [name, description] : command.commandDescriptions) {
      out << "complete -c quillmont -n " << condition << " -a " << fishQuoted(name) << " -d "
          << fishQuoted(firstLine(description)) << "\n";
    }
    for (const Parameter& option : command.options) {
      out << "complete -c quillmont -n " << condition;
      for (const std::string& name : option.names) {
        out << (name.starts_with("--") ? " -l " + fishQuoted(name.substr(2)) : " -s " + fishQuoted(name.substr(1)));
      }
      if (!option.valueName.empty()) out << fishValues(option.values);
      out << " -d " << fishQuoted(firstLine(option.description)) << "\n";
    }
    for (const Parameter& argument : command.arguments) {
      const std::string values = fishValues(argument.values);
      if (values == " -x") continue;  // nothing to offer
      out << "complete -c quillmont -n " << condition << (values == " -r -F" ? " -F" : values.substr(3)) << " -d "
          << fishQuoted(argument.valueName + ": " + firstLine(argument.description)) << "\n";
    }
  }
  return out.str();
}

std::string manPage(const Tree& tree, std::string_view version) {
  const Command& program = tree.commands.front();
  std::ostringstream out;
  out << ".\\\" quillmont(1), written by `quillmont generate man` from its commands.\n"
      << ".TH QUILLMONT 1 \"\" \"quillmont " << roff(version) << "\" \"User Commands\"\n"
      << ".\\\" Option names and paths read best unhyphenated, and ragged lines need no stretching.\n"
      << ".nh\n.ad l\n.SH NAME\n";
  // "Quillmont: a personal time bank ..." names the program, then says what it is.
  std::string summary = firstLine(program.description);
  if (const auto colon = summary.find(": "); colon != std::string::npos) summary = summary.substr(colon + 2);
  if (summary.ends_with('.')) summary.pop_back();
  out << "quillmont \\- " << roff(summary) << "\n.SH SYNOPSIS\n" << synopsis(program) << ".SH DESCRIPTION\n";
  std::istringstream description(program.description);
  for (std::string line; std::getline(description, line);) out << roffLine(line);
  // The footer's first paragraph says how durations, days and times are typed;
  // the rest has sections of its own below.
  const std::string typing = program.footer.substr(0, program.footer.find("\n\n"));
  out << ".PP\n";
  std::istringstream typingLines(typing);
  for (std::string line; std::getline(typingLines, line);) out << roffLine(line);
  out << ".PP\nData goes to standard output, messages to standard error. Every command has \\fB\\-\\-help\\fR.\n"
      << ".SH OPTIONS\n" << parameters(program) << ".SH COMMANDS\n";
  for (const Command& command : tree.commands) {
    if (command.path.empty()) continue;
    out << ".SS " << roff(pathText(command.path)) << "\n" << synopsis(command) << ".PP\n";
    std::istringstream lines(command.description);
    for (std::string line; std::getline(lines, line);) out << roffLine(line);
    if (!command.commands.empty()) {
      out << ".PP\nCommands: " << roff(joined(command.commands, ", ")) << ".\n";
    }
    out << parameters(command);
    if (!command.footer.empty()) out << footerText(command.footer);
  }
  const std::string group(AppConstants::appGroupIdentifier);
  const std::string store = std::string(QuillmontPersistence::storeName) + ".store";
  out << R"(.SH ENVIRONMENT
.TP
.B QUILLMONT_HOME
The folder for Quillmont's data instead of \fI$XDG_DATA_HOME/quillmont\fR (\fB\-\-data\-home\fR sets it).
.TP
.B QUILLMONT_ENTITLEMENTS
A JSON file that replaces the program's own entitlements, for tests.
If it names a file that cannot be read, every command stops with an error rather than use another store.
.TP
.B NO_COLOR
Set to a value that is not empty to turn colour off (so does \fBTERM=dumb\fR).
Output that is not a terminal is never coloured.
.TP
.B COLUMNS
The width of tables and charts when standard output is not a terminal.
.SH FILES
Quillmont keeps its data in \fI$XDG_DATA_HOME/quillmont\fR (by default \fI~/.local/share/quillmont\fR), or in
the folder \fBQUILLMONT_HOME\fR or \fB\-\-data\-home\fR names; below, \fIDATA\fR.
\fBquillmont doctor\fR prints where everything is.
.TP
.I )" << roffPath("DATA/" + group + "/" + store)
      << R"(
The record store, one SQLite file, shared by every Quillmont program whose entitlements grant the application
group. Its journal (the same name followed by \fB\-journal\fR) lies beside it only while a save is
written, or after a save the disk refused, which the next command takes back; between commands the file
alone is the whole store.
.TP
.I )" << roffPath("DATA/" + group + "/Preferences/" + std::string(AppConstants::widgetSnapshotKey))
      << R"(
The figures the widget shows, rewritten by every command that changes one of them.
.TP
.I DATA/widget\-center/reload
The signal that tells running widgets to redraw.
.TP
.I DATA/<program>/
The folder of a program whose entitlements do not grant the group.
.TP
.I DATA/quillmont\-widget/Preferences/
Where each window of the desktop widget stood.
.SH EXIT STATUS
.TP
.B 0
Success.
.TP
.B 1
The operation failed or was refused (a refusal, the store, an archive).
.TP
.B 2
A usage error: an unknown command or option, a bad duration, day or link.
)";
  return out.str();
}

}  // namespace quillmont::CommandReference
