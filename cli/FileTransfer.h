// FileTransfer: the command line's reading and writing of whole documents
// (archives, CSV). "-" (or no name) means standard input or output. Files are
// written atomically: the text goes to a temporary file beside the target,
// is flushed to disk and then renamed over it, so a target is never left
// half written. Failures throw CommandFailure naming the file.
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
