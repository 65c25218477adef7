#include "desktop/CommandText.h"

#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "cli/CommandLine.h"

namespace quillmont::CommandText {

Output run(const QStringList& arguments) {
  std::vector<std::string> words{"quillmont"};
  for (const QString& argument : arguments) words.push_back(argument.toStdString());
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);

  ::setenv("NO_COLOR", "1", 1);  // plain text for a window
  std::ostringstream out;
  std::ostringstream err;
  std::streambuf* const previousOut = std::cout.rdbuf(out.rdbuf());
  std::streambuf* const previousErr = std::cerr.rdbuf(err.rdbuf());
  Output result;
  try {
    result.exitCode = CommandLine::run(static_cast<int>(words.size()), argv.data());
  } catch (...) {
    result.exitCode = 1;
  }
  std::cout.rdbuf(previousOut);
  std::cerr.rdbuf(previousErr);
  std::cout.clear();
  result.out = QString::fromStdString(out.str());
  result.err = QString::fromStdString(err.str());
  return result;
}

}  // namespace quillmont::CommandText
