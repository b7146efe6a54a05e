// The numeric constants of the record-set interface.
#pragma once

#include <cstdint>

#include "automation/enumeration.h"

namespace talvex::platform::database {

TALVEX_ENUM(CursorLocation, std::int32_t, Server = 2, Client = 3);
TALVEX_ENUM(CursorType, std::int32_t, ForwardOnly = 0, Keyset = 1, Dynamic = 2, Static = 3);
TALVEX_ENUM(LockType, std::int32_t, Unspecified = -1, ReadOnly = 1, Pessimistic = 2, Optimistic = 3,
            BatchOptimistic = 4);
TALVEX_ENUM(ObjectState, std::int32_t, Closed = 0, Open = 1);
TALVEX_ENUM(EditMode, std::int32_t, None = 0, InProgress = 1, Add = 2);
TALVEX_ENUM(Affect, std::int32_t, Current = 1, Group = 2, All = 3);

inline constexpr std::int32_t kOptionsUnspecified = -1;
inline constexpr std::int32_t kOptionsText = 1;
inline constexpr std::int32_t kIsolationReadCommitted = 4096;

}  // namespace talvex::platform::database
