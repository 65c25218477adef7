// CommandText: what a `quillmont` command prints, produced in this process
// by the command line's own code (which reads through the core), for
// windows that show the same pages as the terminal.
#pragma once

#include <QString>
#include <QStringList>

namespace quillmont::CommandText {

struct Output {
  int exitCode = 0;
  QString out;
  QString err;
};

/// Runs `quillmont <arguments>` in-process, without colour, and returns
/// what it wrote to standard output and standard error.
Output run(const QStringList& arguments);

}  // namespace quillmont::CommandText
