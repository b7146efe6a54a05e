// What talvex-sheet gives up before it reads anything.
#pragma once

namespace talvex::sheet {

// From here on the process, whatever a damaged file makes of it, gets no new privileges, opens no file for
// writing, makes, changes and removes none, starts no program and no process, and opens no connection: such
// calls fail. Threads of its own and descriptors that are open already are not concerned, and files can be
// read as the user may read them. Two parts of the system see to it: filters of calls and, where the kernel
// has them, rules for files (Landlock). Raises Refusal when the system has no filters.
void EnterCage();

}  // namespace talvex::sheet
