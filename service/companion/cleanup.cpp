// Pairs of a function and its context, to be called when the layer is unloaded.
#include <cstdlib>

#include "service/service.h"

namespace {

struct Pair {
    void (*function)(void*);
    void* context;
    Pair* earlier;
};

int32_t pairs_lock = 0;
Pair* latest_pair = nullptr;

// The library registers four keys; room for these is static, so that key creation never depends on memory.
constexpr int kStaticPairs = 16;
Pair first_pairs[kStaticPairs];
int first_pairs_used = 0;

Pair* new_pair() {
    if (first_pairs_used < kStaticPairs) return &first_pairs[first_pairs_used++];
    return static_cast<Pair*>(std::malloc(sizeof(Pair)));
}

void delete_pair(Pair* pair) {
    if (pair < first_pairs || pair >= first_pairs + kStaticPairs) std::free(pair);
}

Pair* take_latest_pair() {
    nax_serv_lock(&pairs_lock);
    Pair* const pair = latest_pair;
    if (pair != nullptr) latest_pair = pair->earlier;
    nax_serv_unlock(&pairs_lock);
    return pair;
}

// Each pair leaves the list before its function runs, outside the lock: a cleanup may register another.
__attribute__((destructor)) void run_cleanups() {
    while (Pair* const pair = take_latest_pair()) {
        pair->function(pair->context);
        delete_pair(pair);
    }
}

}  // namespace

// Without memory for a pair beyond the static ones it is dropped: what it would have undone ends with the process.
extern "C" void nax_serv_core_register_cleanup(void (*function)(void*), void* context) {
    if (function == nullptr) return;
    nax_serv_lock(&pairs_lock);
    Pair* const pair = new_pair();
    if (pair != nullptr) {
        *pair = {function, context, latest_pair};
        latest_pair = pair;
    }
    nax_serv_unlock(&pairs_lock);
}
