// CommandLine: the `quillmont` program: reads the arguments, runs the
// command they name and answers the process's exit status: 0 on success, 1
// when the operation failed (a refusal, the store, an archive), 2 for usage
// errors (unknown options, bad durations or days, unknown links).
#pragma once

namespace quillmont::CommandLine {

int run(int argc, char** argv);

}  // namespace quillmont::CommandLine
