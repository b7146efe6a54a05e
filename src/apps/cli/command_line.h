// The program `talvex`: from its arguments to its exit status.
#pragma once

namespace talvex::apps {

// Reads the arguments, runs the command that they name, and writes its answer to standard output and what
// went wrong to standard error. Returns an ExitStatus; nothing is ever thrown.
int RunCommandLine(int argc, const char* const* argv) noexcept;

}  // namespace talvex::apps
