// ShellCommands: the commands shells and the build call, hidden from help:
// `generate bash|zsh|fish|man` writes the completions or the manual page
// from the whole command tree (CommandReference), and `complete categories`
// prints the titles of the person's own categories, one a line, for the
// completions to offer (nothing when there is no store yet, which it never
// creates).
#pragma once

#include "cli/tree/CommandSet.h"

namespace quillmont::ShellCommands {

void install(CommandSet& commands);

}  // namespace quillmont::ShellCommands
