// The two pointer arrays that a task owns: function data and coefficients.
#pragma once

#include "fit/task.h"

namespace nax::fit {

// Replaces the task's function pointers, all derived from `base` by the stored ny and yhint. False when memory is
// short; the task then has none.
template <class T>
bool set_functions(Task& task, const T* base);

// The same for coefficients, by s_type and the storage hint given.
template <class T>
bool set_coefficients(Task& task, T* base, int64_t hint);

// Frees both arrays.
void free_pointers(Task& task);

// Room for `ny` entries in an array that was made for fewer; new entries are null.
bool grow_functions(Task& task);
bool grow_coefficients(Task& task);

}  // namespace nax::fit
