// CommandSet: the program's commands as CLI11 subcommands. Parsing only
// records which command was chosen (its options land in variables the
// command's action captured); the action runs after the whole line has been
// read, so global options are in effect and a usage error never leaves work
// half done.
#pragma once

#include <functional>
#include <string>

namespace CLI {
class App;
}

namespace quillmont {

class CommandSet {
 public:
  using Action = std::function<void()>;

  explicit CommandSet(CLI::App& root) : root_(root) {}
  CommandSet(const CommandSet&) = delete;
  CommandSet& operator=(const CommandSet&) = delete;

  CLI::App& root() { return root_; }

  /// A subcommand of `parent` whose `action` runs when it is the command
  /// given. A command that has subcommands of its own runs its action only
  /// when none of them was given.
  CLI::App* add(CLI::App& parent, const std::string& name, const std::string& description, Action action);
  /// A subcommand that only groups others; one of them must be given.
  CLI::App* addGroup(CLI::App& parent, const std::string& name, const std::string& description);

  /// The action of the command given on the line, or `fallback` when none was.
  Action chosen(Action fallback) const { return chosen_ ? chosen_ : std::move(fallback); }

 private:
  CLI::App& root_;
  Action chosen_;
};

}  // namespace quillmont
