#include <malloc.h>

#include "cli/tree/CommandLine.h"

int main(int argc, char** argv) {
  // Buffers of up to a few megabytes (the rows and work intervals of a long
  // report) come from the heap, where memory freed as a buffer grows is used
  // again, instead of fresh mappings that fault in page by page and are
  // returned at every free. The heap keeps at most 8 MB it no longer uses,
  // which matters only to `sync --watch`, the one long-running command.
  mallopt(M_MMAP_THRESHOLD, 4 << 20);
  mallopt(M_TRIM_THRESHOLD, 8 << 20);
  return quillmont::CommandLine::run(argc, argv);
}
