// OpenCommand: `open URL` shows the screen a deep link names
// (quillmont://overview, history, reports, settings), as the desktop's link
// handler asks. A link that names no screen is a usage error.
#pragma once

#include "cli/tree/CommandSet.h"

namespace quillmont::OpenCommand {

void install(CommandSet& commands);

}  // namespace quillmont::OpenCommand
