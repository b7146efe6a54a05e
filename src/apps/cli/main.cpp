#include "apps/cli/command_line.h"

int main(int argc, char** argv) { return talvex::apps::RunCommandLine(argc, argv); }
