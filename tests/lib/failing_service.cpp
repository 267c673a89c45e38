#include "tests/lib/failing_service.h"

#include <dlfcn.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <unordered_set>

#include "service/service.h"

namespace nax::testing {
namespace {

constexpr long kNever = -1;

// What one family of functions has handed out, and which request it is to refuse.
struct Ledger {
    explicit Ledger(const char* release_name) : name(release_name) {}

    const char* name;
    std::mutex mutex;
    std::unordered_set<void*> live;
    std::atomic<long> requests{0};
    std::atomic<long> refuse_at{kNever};
    std::atomic<bool> refuse_later{false};
    std::atomic<bool> refused{false};

    bool refuses_next() {
        const long number = requests.fetch_add(1);
        const long target = refuse_at.load();
        if (target == kNever || number < target || (number > target && !refuse_later)) return false;
        refused = true;
        return true;
    }
    void* note(void* block) {
        const std::lock_guard<std::mutex> hold(mutex);
        if (block != nullptr) live.insert(block);
        return block;
    }
    void forget(void* block) {
        const std::lock_guard<std::mutex> hold(mutex);
        if (block == nullptr || live.erase(block) == 1) return;
        std::fprintf(stderr, "failing_service: %s gets a block that it did not hand out\n", name);
        std::abort();
    }
    long count() {
        const std::lock_guard<std::mutex> hold(mutex);
        return static_cast<long>(live.size());
    }
};

// Never destroyed: threads may still free their cells while the program ends.
Ledger& blocks() {
    static Ledger* const ledger = new Ledger("nax_serv_deallocate");
    return *ledger;
}
Ledger& cells() {
    static Ledger* const ledger = new Ledger("nax_serv_free");
    return *ledger;
}
Ledger& ledger_of(Family family) { return family == Family::kBlocks ? blocks() : cells(); }

std::atomic<long> misaligned{0};

// A program whose every other need is met here would be linked without the library that the calls are forwarded to.
[[gnu::used]] void (*const keeps_library_needed)(int32_t*) = nax_serv_lock;

template <class Function>
Function next_definition(const char* name) {
    void* const address = dlsym(RTLD_NEXT, name);
    if (address == nullptr) {
        std::fprintf(stderr, "failing_service: no %s to forward to\n", name);
        std::abort();
    }
    return reinterpret_cast<Function>(address);
}

}  // namespace

long live_blocks() { return blocks().count(); }
long live_cells() { return cells().count(); }
long misaligned_requests() { return misaligned; }

FailAllocation::FailAllocation(long n, Family family, bool and_all_later) : family_(family) {
    Ledger& ledger = ledger_of(family);
    ledger.requests = 0;
    ledger.refused = false;
    ledger.refuse_later = and_all_later;
    ledger.refuse_at = n;
}
FailAllocation::~FailAllocation() { ledger_of(family_).refuse_at = kNever; }
bool FailAllocation::happened() const { return ledger_of(family_).refused; }
long FailAllocation::requests() const { return ledger_of(family_).requests; }

}  // namespace nax::testing

using namespace nax::testing;

extern "C" void* nax_serv_allocate(size_t size, size_t alignment) {
    static const auto real = next_definition<void* (*)(size_t, size_t)>("nax_serv_allocate");
    if (alignment != 128) ++misaligned;
    if (blocks().refuses_next()) return nullptr;
    return blocks().note(real(size, alignment));
}

extern "C" void nax_serv_deallocate(void* block) {
    static const auto real = next_definition<void (*)(void*)>("nax_serv_deallocate");
    blocks().forget(block);
    real(block);
}

extern "C" void* nax_serv_malloc(size_t size, size_t alignment) {
    static const auto real = next_definition<void* (*)(size_t, size_t)>("nax_serv_malloc");
    if (cells().refuses_next()) return nullptr;
    return cells().note(real(size, alignment));
}

extern "C" void nax_serv_free(void* block) {
    static const auto real = next_definition<void (*)(void*)>("nax_serv_free");
    cells().forget(block);
    real(block);
}
