// The two votes on the caller's transaction.
#pragma once

namespace talvex::Lib_MTS {

// Votes to keep the work. Does nothing outside a transaction.
void MTS_SetComplete();

// Votes to undo the work; one such vote decides. Does nothing outside a transaction.
void MTS_SetAbort();

}  // namespace talvex::Lib_MTS
