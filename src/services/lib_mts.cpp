#include "services/lib_mts.h"

#include "automation/transaction_context.h"

namespace talvex::Lib_MTS {

void MTS_SetComplete() {
  if (auto* const context = automation::TransactionContext::Current()) context->SetComplete();
}

void MTS_SetAbort() {
  if (auto* const context = automation::TransactionContext::Current()) context->SetAbort();
}

}  // namespace talvex::Lib_MTS
