// CommandReference: the shell completions (bash, zsh, fish) and the manual
// page quillmont(1), written from the program's own command tree, so neither
// can name a command or an option the program does not have, nor miss one.
//
// `describe` reads the CLI11 tree once into a plain outline (hidden commands
// left out); each writer turns the outline into its document. The scripts
// carry the outline as data (the commands below each command, its options,
// which take a value, what to offer for it) and one small walker per shell
// that follows the words typed so far through it. The person's own
// categories are not in the tree: the scripts ask `quillmont complete
// categories` for them while completing.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
}

namespace quillmont {
class CommandSet;
}

namespace quillmont::CommandReference {

/// What a shell offers for a value.
struct Values {
  std::vector<std::string> words;
  bool categories = false;   ///< and the person's own categories
  bool files = false;        ///< file names (a value named FILE)
  bool directories = false;  ///< folder names (a value named DIR)
};

/// An option (`names` like "--size", "-s") or an argument (no names).
struct Parameter {
  std::vector<std::string> names;
  std::string valueName;  ///< "SIZE", an argument's name; empty for a flag
  std::string description;
  bool required = false;
  bool repeats = false;  ///< an argument that takes any number of words
  bool help = false;     ///< --help or --help-all, which every command has
  Values values;
};

struct Command {
  std::vector<std::string> path;  ///< {} for the program itself, {"widget", "show"}
  std::string description;
  std::string footer;  ///< its own, not the one it shows of the program's
  bool needsCommand = false;  ///< a group: one of `commands` must follow
  std::vector<std::string> commands;
  std::vector<std::pair<std::string, std::string>> commandDescriptions;
  std::vector<Parameter> options;    ///< its own, help included
  std::vector<Parameter> arguments;  ///< in order
  /// The options that take a value here: its own and those it passes on to
  /// the commands above it (the program's --data-home is valid everywhere).
  std::vector<Parameter> valueOptions;
};

/// Every visible command, the program first, each before those below it.
struct Tree {
  std::vector<Command> commands;
};

Tree describe(const CLI::App& program, const CommandSet& commands);

/// "widget show" for {"widget", "show"}; "" for the program.
std::string pathText(const std::vector<std::string>& path);

std::string bash(const Tree& tree);
std::string zsh(const Tree& tree);
std::string fish(const Tree& tree);
/// quillmont(1) in roff (man macros).
std::string manPage(const Tree& tree, std::string_view version);

}  // namespace quillmont::CommandReference
