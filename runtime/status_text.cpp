// The text of every status of the system, by binary search in a generated list.
#include "nax/status.h"

namespace {

struct Row {
    int code;
    const char* text;
};
constexpr Row kRows[] = {
#include "runtime/status_texts.inc"
};

}  // namespace

extern "C" const char* nax_status_text(int status) {
    const Row* low = kRows;
    const Row* const end = kRows + sizeof(kRows) / sizeof(kRows[0]);
    for (const Row* high = end; low < high;) {
        const Row* const middle = low + (high - low) / 2;
        if (middle->code < status)
            low = middle + 1;
        else
            high = middle;
    }
    return low < end && low->code == status ? low->text : "unknown status";
}
