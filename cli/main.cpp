#include "cli/CommandLine.h"

int main(int argc, char** argv) { return quillmont::CommandLine::run(argc, argv); }
