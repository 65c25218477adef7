#include "cli/commands/ShellCommands.h"

#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "cli/tree/CommandLine.h"
#include "cli/tree/CommandReference.h"
#include "cli/input/CommandFiles.h"
#include "app/session/StoreSession.h"
#include "core/ledger/CustomAdjustmentCategoryConfiguration.h"

namespace quillmont::ShellCommands {
namespace {

struct GenerateOptions {
  std::string format;
  std::string output;
};

void generate(const GenerateOptions& options) {
  std::string document;
  CommandLine::everyCommand([&](const CLI::App& program, const CommandSet& commands) {
    const CommandReference::Tree tree = CommandReference::describe(program, commands);
    if (options.format == "bash") document = CommandReference::bash(tree);
    if (options.format == "zsh") document = CommandReference::zsh(tree);
    if (options.format == "fish") document = CommandReference::fish(tree);
    if (options.format == "man") document = CommandReference::manPage(tree, CommandLine::version());
  });
  CommandFiles::write(options.output, document);
}

// Completion runs at every Tab: a store that does not exist yet has no
// categories, and asking must not create it.
void printCategories() {
  std::error_code missing;
  if (!std::filesystem::exists(StoreSession::storePath(), missing)) return;
  StoreSession session;
  for (const auto& category : CustomAdjustmentCategoryConfiguration::categories(
           session.settings().customAdjustmentCategoriesRawValue())) {
    std::cout << category.title() << '\n';
  }
}

}  // namespace

void install(CommandSet& commands) {
  CLI::App& root = commands.root();
  auto options = std::make_shared<GenerateOptions>();
  CLI::App* generateCommand = commands.add(root, "generate", "Write the shell completions or the manual page",
                                           [options] { generate(*options); });
  generateCommand->group("");
  commands.oneOf(generateCommand->add_option("FORMAT", options->format, "bash, zsh, fish or man"),
                 {"bash", "zsh", "fish", "man"})
      ->required();
  generateCommand->add_option("--output,-o", options->output, "Write to FILE instead of standard output")
      ->type_name("FILE");

  CLI::App* complete = commands.addGroup(root, "complete", "Values the shell completions offer");
  complete->group("");
  commands.add(*complete, "categories", "The titles of your own categories, one a line", [] { printCategories(); });
}

}  // namespace quillmont::ShellCommands
