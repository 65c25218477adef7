// CommandFiles: the documents a command reads or writes, named as people
// type them: "-" (or no name, where a command allows it) is standard input
// or standard output, any other name a file (read whole, written
// atomically: see FileTransfer). Failures throw Refusal naming the file.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillmont::CommandFiles {

bool isStandardStream(std::string_view name);

/// The whole file, or all of standard input for "-", up to `limit` bytes.
std::string read(const std::string& name, std::size_t limit);
/// The document to standard output for "" or "-", else atomically to the file.
void write(const std::string& name, std::string_view contents);

}  // namespace quillmont::CommandFiles
