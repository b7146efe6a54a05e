#include <malloc.h>

#include "apps/cli/command_line.h"

int main(int argc, char** argv) {
  // An export or import frees trees of millions of small pieces. Without lists of free ones, which the
  // allocator has to take apart again and again, it takes a fifth less time.
  mallopt(M_MXFAST, 0);
  return talvex::apps::RunCommandLine(argc, argv);
}
