#pragma once

namespace Dov {

// The priority of a task: a higher value runs first, tasks of equal priority run in the
// order they were armed. All tasks of the multicast logic use the value 3.
using TaskPriority = unsigned;

inline constexpr TaskPriority kTaskPriorityMax = 15;
inline constexpr TaskPriority kTaskPriorityDefault = 3;

}  // namespace Dov
