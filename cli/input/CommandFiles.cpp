#include "cli/input/CommandFiles.h"

#include <unistd.h>

#include <iostream>

#include "app/Refusal.h"
#include "app/files/FileTransfer.h"

namespace quillmont::CommandFiles {

bool isStandardStream(std::string_view name) { return name.empty() || name == "-"; }

std::string read(const std::string& name, std::size_t limit) {
  if (isStandardStream(name)) return FileTransfer::read(STDIN_FILENO, "standard input", limit);
  return FileTransfer::read(name, limit);
}

void write(const std::string& name, std::string_view contents) {
  if (isStandardStream(name)) {
    std::cout.write(contents.data(), static_cast<std::streamsize>(contents.size()));
    std::cout.flush();
    if (!std::cout) throw Refusal("cannot write to standard output");
    return;
  }
  FileTransfer::writeAtomically(name, contents);
}

}  // namespace quillmont::CommandFiles
