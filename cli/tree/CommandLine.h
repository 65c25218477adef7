// CommandLine: the `quillmont` program: reads the arguments, runs the
// command they name and answers the process's exit status: 0 on success, 1
// when the operation failed (a refusal, the store, an archive), 2 for usage
// errors (unknown options, bad durations or days, unknown links).
#pragma once

#include <functional>
#include <string>

namespace CLI {
class App;
}

namespace quillmont {
class CommandSet;
}

namespace quillmont::CommandLine {

int run(int argc, char** argv);

/// Calls `use` with the program's whole command tree, every family of
/// commands installed, as help shows it (for the completions and the manual
/// generated from it).
void everyCommand(const std::function<void(const CLI::App&, const CommandSet&)>& use);

/// The program's version, as `--version` says it.
std::string version();

}  // namespace quillmont::CommandLine
