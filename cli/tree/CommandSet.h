// CommandSet: the program's commands as CLI11 subcommands. Parsing only
// records which command was chosen (its options land in variables the
// command's action captured); the action runs after the whole line has been
// read, so global options are in effect and a usage error never leaves work
// half done.
//
// It also keeps what a shell should offer as the value of an option or
// argument whose values are known (a fixed set, or the person's own
// categories), for the completions generated from the tree
// (CommandReference).
#pragma once

#include <functional>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
class Option;
}

namespace quillmont {

class CommandSet {
 public:
  using Action = std::function<void()>;

  explicit CommandSet(CLI::App& root) : root_(root) {}
  CommandSet(const CommandSet&) = delete;
  CommandSet& operator=(const CommandSet&) = delete;

  CLI::App& root() { return root_; }

  /// Builds only the top-level command `name` from now on: a run needs no
  /// other, and each costs more to build than a booking's whole save. Of
  /// its subcommands, only `next` when that names one (the word that
  /// follows the command on the line).
  void buildOnly(std::string_view name, std::string_view next = {}) {
    only_ = std::string(name);
    next_ = std::string(next);
  }
  /// Whether the top-level command `name` is to be built (every one is,
  /// unless buildOnly named another).
  bool builds(std::string_view name) const { return !only_ || *only_ == name; }

  /// Which subcommands of the command being built are built.
  class Subcommands {
   public:
    bool operator()(std::string_view name) const { return only_.empty() || only_ == name; }

   private:
    friend CommandSet;
    std::string_view only_;  // empty: all
  };
  /// A command whose subcommands are `names` builds only the one given on the
  /// line, when the word after the command is among them; otherwise all.
  Subcommands subcommands(std::initializer_list<std::string_view> names) const { return among(names); }
  Subcommands subcommands(const std::vector<std::string>& names) const { return among(names); }

  /// A subcommand of `parent` whose `action` runs when it is the command
  /// given. A command that has subcommands of its own runs its action only
  /// when none of them was given.
  CLI::App* add(CLI::App& parent, const std::string& name, const std::string& description, Action action);
  /// A subcommand that only groups others; one of them must be given.
  CLI::App* addGroup(CLI::App& parent, const std::string& name, const std::string& description);

  /// The action of the command given on the line, or `fallback` when none was.
  Action chosen(Action fallback) const { return chosen_ ? chosen_ : std::move(fallback); }

  /// What a shell offers as the value of an option or argument.
  struct Values {
    std::vector<std::string> words;
    /// Also the titles of the person's own categories (read from the store
    /// when completing, through `quillmont complete categories`).
    bool categories = false;
  };
  /// `option` accepts `words` and nothing else (checked when the line is
  /// parsed), and a shell offers them.
  CLI::Option* oneOf(CLI::Option* option, const std::vector<std::string>& words);
  /// A shell offers `values` for `option`, which accepts other values too.
  CLI::Option* offer(CLI::Option* option, Values values);
  /// What a shell offers for `option`; nothing when its values are not known.
  const Values* offered(const CLI::Option* option) const;

 private:
  template <class Names>
  Subcommands among(const Names& names) const {
    Subcommands chosen;
    if (!only_) return chosen;
    for (const auto& name : names) {
      if (name == next_) chosen.only_ = next_;
    }
    return chosen;
  }

  CLI::App& root_;
  std::optional<std::string> only_;
  std::string next_;
  Action chosen_;
  std::map<const CLI::Option*, Values> offered_;
};

}  // namespace quillmont
