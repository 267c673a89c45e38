// The statistics task record, its codes, and typed access to what its pointers lead to.
#pragma once

#include <cstddef>
#include <cstdint>

#include "nax/statistics.h"

using nax_ss_cleanup = int32_t (*)(nax_ss_task* task);

// One record for both precisions. Nearly all fields are pointers to the caller's arrays: integers of the task's width
// and reals of its precision. The record owns `stream_state`, `work_vector` and the table of cleanups alone.
struct nax_ss_task {
    uint32_t wide_integers;  // 0: the caller's integers are 32 bits wide, else 64
    uint32_t task_kind;      // always kTaskKind
    uint32_t is_double;      // 1 double, 0 single
#define NAX_SS_INTEGERS(id, field, name, status, content) const void* field;
#define NAX_SS_REALS(id, field, name, status, content) void* field;
#define NAX_SS_PRIVATE(type, field) type field;
#include "stats/parameters.def"
#undef NAX_SS_INTEGERS
#undef NAX_SS_REALS
#undef NAX_SS_PRIVATE
};

namespace nax::stats {

using Task = ::nax_ss_task;

// The list of parameters agrees with the public header.
#define NAX_SS_INTEGERS(id, field, name, status, content) static_assert(NAX_SS_##name == (id), content);
#define NAX_SS_REALS NAX_SS_INTEGERS
#define NAX_SS_PRIVATE(type, field)
#include "stats/parameters.def"
#undef NAX_SS_INTEGERS
#undef NAX_SS_REALS
#undef NAX_SS_PRIVATE

inline constexpr uint32_t kTaskKind = 2;

// Bytes of a record, at least: layers above may copy that many.
inline constexpr std::size_t kRecordBytes = sizeof(Task) > 744 ? sizeof(Task) : 744;

// The caller's integers, of either width.
struct Integers {
    const void* base;
    bool wide;
    explicit operator bool() const { return base != nullptr; }
    int64_t operator[](int64_t i) const {
        return wide ? static_cast<const int64_t*>(base)[i] : static_cast<const int32_t*>(base)[i];
    }
};
inline Integers integers(const Task& task, const void* field) { return {field, task.wide_integers != 0}; }
// A field that holds one integer; not null.
inline int64_t integer(const Task& task, const void* field) { return integers(task, field)[0]; }
// The same with a value for null.
inline int64_t integer_or(const Task& task, const void* field, int64_t missing) {
    return field == nullptr ? missing : integer(task, field);
}
template <class T>
T* reals(void* field) {
    return static_cast<T*>(field);
}

// A task of the library's own over wide integers, from zero: a copy of the caller's record would share what that owns.
template <class T>
Task private_task() {
    Task task{};
    task.wide_integers = 1;
    task.task_kind = kTaskKind;
    task.is_double = sizeof(T) == sizeof(double);
    return task;
}

// The mask of selected variables: only the low half of a wide integer counts.
struct VariableMask {
    const uint32_t* words;  // null selects all
    int64_t stride;
    bool operator[](int64_t j) const { return words == nullptr || words[j * stride] != 0; }
    explicit operator bool() const { return words != nullptr; }
};
inline VariableMask variable_mask(const Task& task) {
    return {static_cast<const uint32_t*>(task.variable_mask), task.wide_integers != 0 ? 2 : 1};
}

// Storage of an observation matrix; with one variable both layouts are that of the rows.
inline constexpr int64_t kRows = NAX_SS_STORAGE_ROWS;
inline constexpr int64_t kColumns = NAX_SS_STORAGE_COLUMNS;
// Codes as bit masks: rows before columns.
constexpr bool is_storage(int64_t code) { return (code & (kRows | kColumns)) != 0; }
constexpr bool is_rows(int64_t code, int64_t p) { return (code & kRows) != 0 || p == 1; }
// Where the code must be one of the two numbers.
constexpr bool is_exact_storage(int64_t code) { return code == kRows || code == kColumns; }

// Registers a function that deletion calls with the task, once for each time it was registered. False when memory is
// short; the table is then as before.
bool add_cleanup(Task& task, nax_ss_cleanup callback);

}  // namespace nax::stats
