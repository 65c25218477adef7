// The completions and the manual page the build writes into share/: they
// name every command and option of the program, each shell accepts its
// script, the manual page formats without warnings, and the bash and fish
// completions really complete (run in the shells themselves).
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <CLI/CLI.hpp>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "cli/tree/CommandLine.h"
#include "cli/testing/CommandRunner.h"

namespace quillmont {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;
using ::testing::UnorderedElementsAre;
using testing::CommandRunner;

const std::filesystem::path share = QUILLMONT_GENERATED_SHARE;

// A runner for the shells and formatters, in a locale every system has.
class ToolRunner : public CommandRunner {
 public:
  ToolRunner() { setEnvironment("LC_ALL", "C.UTF-8"); }
};

// The program's commands and options, read straight from its CLI11 tree.
struct Surface {
  std::vector<std::string> paths;  // "widget show"
  std::vector<std::string> longOptions, shortOptions;
  std::vector<std::string> examples;  // indented lines of help footers
  std::vector<std::string> hidden;
};

void collect(const CLI::App& app, const std::string& path, Surface& surface) {
  for (const CLI::Option* option : app.get_options()) {
    for (const auto& name : option->get_lnames()) surface.longOptions.push_back(name);
    for (const auto& name : option->get_snames()) surface.shortOptions.push_back(name);
  }
  std::string footer = app.get_footer();
  for (std::size_t start = 0; start < footer.size();) {
    const std::size_t end = std::min(footer.find('\n', start), footer.size());
    const std::string line = footer.substr(start, end - start);
    if (line.starts_with("  quillmont ")) surface.examples.push_back(line.substr(2));
    start = end + 1;
  }
  for (const CLI::App* child : app.get_subcommands([](const CLI::App*) { return true; })) {
    const std::string childPath = path.empty() ? child->get_name() : path + " " + child->get_name();
    if (child->get_group().empty()) {
      surface.hidden.push_back(childPath);
      continue;
    }
    surface.paths.push_back(childPath);
    collect(*child, childPath, surface);
  }
}

Surface programSurface() {
  Surface surface;
  CommandLine::everyCommand([&](const CLI::App& program, const CommandSet&) { collect(program, "", surface); });
  return surface;
}

// The manual page's text with the roff escapes that matter here undone.
std::string manText() {
  std::string text = testing::readFile(share / "quillmont.1");
  for (const auto& [escape, plain] : std::vector<std::pair<std::string, std::string>>{
           {"\\-", "-"}, {"\\fB", ""}, {"\\fR", ""}, {"\\fI", ""}, {"\\&", ""}, {"\\e", "\\"}}) {
    for (std::size_t at = text.find(escape); at != std::string::npos; at = text.find(escape, at + plain.size())) {
      text.replace(at, escape.size(), plain);
    }
  }
  return text;
}

TEST(CommandReference, EveryCommandAndOptionIsInEachScriptAndTheManual) {
  const Surface surface = programSurface();
  ASSERT_THAT(surface.paths, IsSupersetOf({"widget show", "csv days", "report week", "category add"}));
  ASSERT_THAT(surface.hidden, UnorderedElementsAre("generate", "complete"));
  const std::string bash = testing::readFile(share / "quillmont.bash");
  const std::string zsh = testing::readFile(share / "_quillmont");
  const std::string fish = testing::readFile(share / "quillmont.fish");
  const std::string man = manText();

  for (const std::string& path : surface.paths) {
    for (const auto* script : {&bash, &zsh}) EXPECT_THAT(*script, HasSubstr("('" + path + "')")) << path;
    EXPECT_THAT(fish, HasSubstr("-n '__quillmont_at \\'" + path + "\\''")) << path;
    EXPECT_THAT(man, HasSubstr("\n.SS " + path + "\n")) << path;
  }
  for (const std::string& name : surface.longOptions) {
    for (const auto* script : {&bash, &zsh}) EXPECT_THAT(*script, HasSubstr("'--" + name + "'")) << name;
    EXPECT_THAT(fish, HasSubstr(" -l '" + name + "'")) << name;
    EXPECT_THAT(man, HasSubstr("--" + name)) << name;
  }
  for (const std::string& name : surface.shortOptions) {
    for (const auto* script : {&bash, &zsh}) EXPECT_THAT(*script, HasSubstr("'-" + name + "'")) << name;
    EXPECT_THAT(fish, HasSubstr(" -s '" + name + "'")) << name;
    EXPECT_THAT(man, HasSubstr("-" + name + ", --")) << name;
  }
  // The help footers' examples, and the sections a manual page has.
  EXPECT_THAT(surface.examples, Contains(HasSubstr("quillmont book")));
  for (const std::string& example : surface.examples) EXPECT_THAT(man, HasSubstr("\n" + example + "\n"));
  for (const char* section : {"NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "COMMANDS", "ENVIRONMENT", "FILES",
                              "EXIT STATUS"}) {
    EXPECT_THAT(man, HasSubstr("\n.SH " + std::string(section) + "\n"));
  }
  for (const char* variable : {"QUILLMONT_HOME", "QUILLMONT_ENTITLEMENTS", "NO_COLOR", "COLUMNS"}) {
    EXPECT_THAT(man, HasSubstr(".B " + std::string(variable) + "\n"));
  }
  // What the shells and the build call stays out of the completions and the manual.
  for (const std::string& path : surface.hidden) {
    EXPECT_THAT(bash + zsh, Not(HasSubstr("'" + path + "'")));
    EXPECT_THAT(fish, Not(HasSubstr(" -a '" + path + "'")));
    EXPECT_THAT(man, Not(HasSubstr(".SS " + path)));
  }
}

TEST(CommandReference, TheBuildWritesWhatTheProgramGenerates) {
  CommandRunner quillmont;
  for (const auto& [format, file] : std::vector<std::pair<std::string, std::string>>{
           {"bash", "quillmont.bash"}, {"zsh", "_quillmont"}, {"fish", "quillmont.fish"}, {"man", "quillmont.1"}}) {
    const auto generated = quillmont.run({"generate", format});
    EXPECT_EQ(generated.exitCode, 0) << generated.err;
    EXPECT_EQ(generated.out, testing::readFile(share / file)) << format;
  }
  EXPECT_EQ(quillmont.run({"generate", "powershell"}).exitCode, 2);
  EXPECT_THAT(quillmont.run({"--help"}).out, Not(HasSubstr("generate")));
  EXPECT_THAT(quillmont.run({"--help-all"}).out, Not(HasSubstr("complete")));
  EXPECT_FALSE(std::filesystem::exists(quillmont.home() / "data")) << "generating touched the data home";
}

// ---- each shell accepts its script ----

TEST(CommandReference, BashAcceptsItsScript) {
  ToolRunner runner;
  const auto checked = runner.runProgram("bash", {"-n", (share / "quillmont.bash").string()});
  EXPECT_EQ(checked.exitCode, 0) << checked.err;
  EXPECT_THAT(checked.err, IsEmpty());
}

TEST(CommandReference, ZshAcceptsItsScript) {
  if (!testing::findProgram("zsh")) GTEST_SKIP() << "zsh is not installed; its script was not checked";
  ToolRunner runner;
  const auto checked = runner.runProgram("zsh", {"-n", (share / "_quillmont").string()});
  EXPECT_EQ(checked.exitCode, 0) << checked.err;
  EXPECT_THAT(checked.err, IsEmpty());
}

TEST(CommandReference, FishAcceptsItsScript) {
  if (!testing::findProgram("fish")) GTEST_SKIP() << "fish is not installed; its script was not checked";
  ToolRunner runner;
  const auto checked = runner.runProgram("fish", {"--no-execute", (share / "quillmont.fish").string()});
  EXPECT_EQ(checked.exitCode, 0) << checked.err;
  EXPECT_THAT(checked.err, IsEmpty());
}

TEST(CommandReference, TheManualPageFormatsWithoutWarnings) {
  const bool groff = testing::findProgram("groff").has_value();
  const bool man = testing::findProgram("man").has_value();
  if (!groff && !man) GTEST_SKIP() << "neither groff nor man is installed; the manual page was not checked";
  ToolRunner runner;
  runner.setEnvironment("MANWIDTH", "80");
  const std::string page = (share / "quillmont.1").string();
  if (groff) {
    const auto checked = runner.runProgram("groff", {"-man", "-ww", "-z", page});
    EXPECT_EQ(checked.exitCode, 0) << checked.err;
    EXPECT_THAT(checked.err, IsEmpty());
  }
  if (man) {
    const auto shown = runner.runProgram("man", {"--warnings", "-l", page});
    EXPECT_EQ(shown.exitCode, 0) << shown.err;
    EXPECT_THAT(shown.err, IsEmpty());
    EXPECT_THAT(shown.out, HasSubstr("quillmont - a personal time bank"));
  }
}

// ---- completing for real ----

// What bash's completion offers for `words` (the last being the word under
// the cursor), split into words the way readline splits them.
std::vector<std::string> bashCompletes(const CommandRunner& runner, std::vector<std::string> words) {
  words.insert(words.begin(), QUILLMONT_BINARY);
  std::vector<std::string> arguments{
      "-c",
      "source \"$0\" && COMP_WORDS=(\"$@\") && COMP_CWORD=$(($# - 1)) && _quillmont && "
      "printf '%s\\n' \"${COMPREPLY[@]}\"",
      (share / "quillmont.bash").string()};
  arguments.insert(arguments.end(), words.begin(), words.end());
  const auto result = runner.runProgram("bash", arguments);
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_THAT(result.err, IsEmpty());
  std::vector<std::string> offered;
  for (std::size_t start = 0; start < result.out.size();) {
    const std::size_t end = result.out.find('\n', start);
    if (end > start) offered.push_back(result.out.substr(start, end - start));
    start = end + 1;
  }
  return offered;
}

TEST(BashCompletion, OffersCommandsOptionsAndTheirValues) {
  ToolRunner runner;
  EXPECT_THAT(bashCompletes(runner, {"rep"}), UnorderedElementsAre("report"));
  EXPECT_THAT(bashCompletes(runner, {"wid"}), UnorderedElementsAre("widget"));
  EXPECT_THAT(bashCompletes(runner, {"gen"}), IsEmpty());  // hidden
  EXPECT_THAT(bashCompletes(runner, {"widget", ""}), UnorderedElementsAre("show", "press", "info"));
  EXPECT_THAT(bashCompletes(runner, {"report", ""}), UnorderedElementsAre("week", "month", "year"));
  EXPECT_THAT(bashCompletes(runner, {"widget", "show", "--size", ""}), UnorderedElementsAre("small", "medium"));
  EXPECT_THAT(bashCompletes(runner, {"widget", "show", "--size", "small", "--format", "w"}),
              UnorderedElementsAre("waybar"));
  EXPECT_THAT(bashCompletes(runner, {"widget", "show", "--size", "=", "m"}), UnorderedElementsAre("medium"));
  EXPECT_THAT(bashCompletes(runner, {"widget", "press", ""}), UnorderedElementsAre("add", "subtract"));
  EXPECT_THAT(bashCompletes(runner, {"csv", "days", "--period", ""}), UnorderedElementsAre("week", "month", "year"));
  EXPECT_THAT(bashCompletes(runner, {"kinds", "appointment", "long"}), UnorderedElementsAre("longLunch"));
  // A command's own options, not those of its neighbours.
  const auto options = bashCompletes(runner, {"csv", "days", "--"});
  EXPECT_THAT(options, IsSupersetOf({"--period", "--date", "--from", "--to", "--output", "--help"}));
  EXPECT_THAT(options, Not(Contains("--size")));
  // An option's value is not taken for a command.
  EXPECT_THAT(bashCompletes(runner, {"--data-home", "report", "wid"}), UnorderedElementsAre("widget"));
  EXPECT_THAT(bashCompletes(runner, {"--data-home", "widget", ""}), AllOf(Contains("report"), Not(Contains("show"))));
  // Readline splits links at the colon and replaces only what follows it.
  EXPECT_THAT(bashCompletes(runner, {"open", ""}),
              UnorderedElementsAre("quillmont://overview", "quillmont://history", "quillmont://reports",
                                   "quillmont://settings"));
  EXPECT_THAT(bashCompletes(runner, {"open", "quillmont", ":", "//r"}), UnorderedElementsAre("//reports"));
}

TEST(BashCompletion, OffersKindsAndThePersonsOwnCategories) {
  ToolRunner runner;
  const auto kinds = bashCompletes(runner, {"book", "30", "--category", ""});
  EXPECT_THAT(kinds, IsSupersetOf({"manual", "appointment", "holiday", "sickLeave"}));
  EXPECT_FALSE(std::filesystem::exists(runner.home() / "data")) << "completing created the data home";

  ASSERT_EQ(runner.run({"category", "add", "Evening class"}).exitCode, 0);
  ASSERT_EQ(runner.run({"category", "add", "Gym"}).exitCode, 0);
  EXPECT_THAT(bashCompletes(runner, {"book", "--category", ""}), IsSupersetOf({"Evening\\ class", "Gym", "manual"}));
  EXPECT_THAT(bashCompletes(runner, {"book", "-c", "Ev"}), UnorderedElementsAre("Evening\\ class"));

  // The data home named on the line is the one asked.
  const auto elsewhere = (runner.home() / "elsewhere").string();
  ASSERT_EQ(runner.run({"--data-home", elsewhere, "category", "add", "Choir"}).exitCode, 0);
  EXPECT_THAT(bashCompletes(runner, {"--data-home", elsewhere, "book", "-c", ""}),
              AllOf(Contains("Choir"), Not(Contains("Gym"))));
}

TEST(CompleteCategories, PrintsTitlesOneALineAndNeverCreatesAStore) {
  CommandRunner quillmont;
  const auto none = quillmont.run({"complete", "categories"});
  EXPECT_EQ(none.exitCode, 0) << none.err;
  EXPECT_THAT(none.out, IsEmpty());
  EXPECT_THAT(none.err, IsEmpty());
  EXPECT_FALSE(std::filesystem::exists(quillmont.home() / "data")) << "asking created the data home";

  ASSERT_EQ(quillmont.run({"category", "add", "Evening  class "}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"category", "add", "Gym"}).exitCode, 0);
  EXPECT_EQ(quillmont.run({"complete", "categories"}).out, "Evening class\nGym\n");
}

// zsh completes only inside its line editor, so its builtins are stood in
// for by functions that print what the completion hands them.
TEST(ZshCompletion, OffersCommandsOptionsAndTheirValues) {
  if (!testing::findProgram("zsh")) GTEST_SKIP() << "zsh is not installed; its completion was not run";
  ToolRunner runner;
  ASSERT_EQ(runner.run({"category", "add", "Gym"}).exitCode, 0);
  const auto completes = [&](const std::string& line) {
    const auto result = runner.runProgram(
        "zsh", {"-fc",
                "compdef() { :; }; compset() { :; }; compadd() { print -rl -- \"${reply[@]}\"; }; "
                "_describe() { print -rl -- \"${(@)${(P)4}%%:*}\"; }; _files() { print -r -- \"(files $*)\"; }; "
                "source \"$0\"; words=(${(z)1}); [[ $1 == *' ' ]] && words+=(''); CURRENT=${#words}; _quillmont",
                (share / "_quillmont").string(), std::string(QUILLMONT_BINARY) + " " + line});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_THAT(result.err, IsEmpty());
    std::vector<std::string> offered;
    for (std::size_t start = 0; start < result.out.size();) {
      const std::size_t end = result.out.find('\n', start);
      offered.push_back(result.out.substr(start, end - start));
      start = end + 1;
    }
    return offered;
  };
  EXPECT_THAT(completes("widget "), UnorderedElementsAre("show", "press", "info"));
  EXPECT_THAT(completes("--data-home elsewhere report "), UnorderedElementsAre("week", "month", "year"));
  EXPECT_THAT(completes("widget show --size "), UnorderedElementsAre("small", "medium"));
  EXPECT_THAT(completes("widget press "), UnorderedElementsAre("add", "subtract"));
  EXPECT_THAT(completes("book --category "), IsSupersetOf({"Gym", "appointment"}));
  EXPECT_THAT(completes("csv days -"), IsSupersetOf({"--period", "--output", "-o"}));
  EXPECT_THAT(completes("export "), UnorderedElementsAre("(files )"));
}

TEST(FishCompletion, OffersCommandsOptionsAndTheirValues) {
  if (!testing::findProgram("fish")) GTEST_SKIP() << "fish is not installed; its completion was not run";
  ToolRunner runner;
  const char* path = std::getenv("PATH");
  runner.setEnvironment("PATH", std::filesystem::path(QUILLMONT_BINARY).parent_path().string() + ":" +
                                    (path != nullptr ? path : "/usr/bin:/bin"));
  ASSERT_EQ(runner.run({"category", "add", "Gym"}).exitCode, 0);
  // The first word of each candidate `complete -C` lists (a tab precedes its description).
  const auto completes = [&](const std::string& line) {
    const auto result = runner.runProgram(
        "fish", {"--no-config", "-c", "source $argv[1]; complete -C $argv[2]", (share / "quillmont.fish").string(),
                 "quillmont " + line});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    std::vector<std::string> offered;
    for (std::size_t start = 0; start < result.out.size();) {
      const std::size_t end = result.out.find('\n', start);
      offered.push_back(result.out.substr(start, std::min(result.out.find('\t', start), end) - start));
      start = end + 1;
    }
    return offered;
  };
  EXPECT_THAT(completes("widget "), UnorderedElementsAre("show", "press", "info"));
  EXPECT_THAT(completes("widget show --size "), UnorderedElementsAre("small", "medium"));
  EXPECT_THAT(completes("widget press "), UnorderedElementsAre("add", "subtract"));
  EXPECT_THAT(completes("book --category "), IsSupersetOf({"Gym", "appointment"}));
  EXPECT_THAT(completes("csv days --per"), UnorderedElementsAre("--period"));
}

}  // namespace
}  // namespace quillmont
