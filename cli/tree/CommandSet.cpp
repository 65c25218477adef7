#include "cli/tree/CommandSet.h"

#include <CLI/CLI.hpp>

namespace quillmont {

CLI::App* CommandSet::add(CLI::App& parent, const std::string& name, const std::string& description, Action action) {
  CLI::App* command = parent.add_subcommand(name, description);
  command->group("Commands");
  // Subcommands' callbacks run before their parent's, so a chosen
  // subcommand has already claimed the slot when the parent's runs.
  command->callback([this, action = std::move(action)] {
    if (!chosen_) chosen_ = action;
  });
  return command;
}

CLI::App* CommandSet::addGroup(CLI::App& parent, const std::string& name, const std::string& description) {
  CLI::App* group = parent.add_subcommand(name, description);
  group->group("Commands");
  group->require_subcommand(1);
  return group;
}

CLI::Option* CommandSet::oneOf(CLI::Option* option, const std::vector<std::string>& words) {
  option->check(CLI::IsMember(words));
  return offer(option, {words, false});
}

CLI::Option* CommandSet::offer(CLI::Option* option, Values values) {
  offered_[option] = std::move(values);
  return option;
}

const CommandSet::Values* CommandSet::offered(const CLI::Option* option) const {
  const auto found = offered_.find(option);
  return found == offered_.end() ? nullptr : &found->second;
}

}  // namespace quillmont
