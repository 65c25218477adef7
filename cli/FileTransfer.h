// FileTransfer: the command line's reading and writing of whole documents
// (archives, CSV). "-" (or no name) means standard input or output. Files are
// written atomically: the text goes to an anonymous file in the target's
// folder, is flushed to disk, and only then gets a name and is renamed over
// the target, so a target is never left half written and a killed write
// leaves nothing behind. New files are private to the user (0600); a file
// replaced keeps its permissions. Failures throw CommandFailure naming the file.
#pragma once

#include <string>
#include <string_view>

namespace quillmont::FileTransfer {

bool isStandardStream(std::string_view name);

/// The whole file, or all of standard input for "-".
std::string read(const std::string& name);
/// The document to standard output for "" or "-", else atomically to the file.
void write(const std::string& name, std::string_view contents);
void writeAtomically(const std::string& path, std::string_view contents);

}  // namespace quillmont::FileTransfer
