// Finds the threading component, and stands in for it where it can't be had.
#include <dlfcn.h>

#include <cstdio>
#include <cstring>

#include "service/service.h"
#include "service/threads/component.h"

namespace {

int serial_limit() { return 1; }

void serial_for(int chunks, int, void* context, nax_serv_chunk_body body) {
    for (int chunk = 0; chunk < chunks; ++chunk) body(chunk, 0, 0, context);
}

void serial_loop(int64_t count, int, void* context, nax_loop_body body) {
    for (int64_t item = 0; item < count; ++item) body(item, 0, 1, context);
}

void serial_region(int, void* context, nax_region_body body) { body(0, 1, context); }

void serial_ordered(int64_t item, int thread, int threads, void* context, nax_loop_body body) {
    body(item, thread, threads, context);
}

// What a request is answered with: the component's functions or the serial ones, never a mixture.
struct Threading {
    bool pooled;
    nax_serv_threads_limit_function limit;
    nax_serv_parallel_for_function parallel_for;
    nax_threaders table;
};

constexpr Threading kSerial = {
    false, serial_limit, serial_for, {serial_loop, serial_loop, serial_region, serial_ordered, serial_limit}};

constexpr char kComponent[] = "libnax_threads.so.0";
constexpr char kLimitName[] = "nax_sto_serv_threader_get_num_threads_limit";
constexpr char kForName[] = "nax_sto_serv_threader_for";

// Next to this library first, so that an installation or a build tree is complete in itself.
void* open_component() {
    Dl_info self;
    if (dladdr(&kSerial, &self) != 0 && self.dli_fname != nullptr) {
        const char* const slash = std::strrchr(self.dli_fname, '/');
        char path[4096];
        const int directory = slash == nullptr ? 0 : static_cast<int>(slash + 1 - self.dli_fname);
        const int length = std::snprintf(path, sizeof path, "%.*s%s", directory, self.dli_fname, kComponent);
        if (directory > 0 && length < static_cast<int>(sizeof path))
            if (void* const component = dlopen(path, RTLD_NOW | RTLD_LOCAL)) return component;
    }
    return dlopen(kComponent, RTLD_NOW | RTLD_LOCAL);
}

template <class Function>
Function find(void* component, const char* name) {
    return reinterpret_cast<Function>(dlsym(component, name));
}

Threading load() {
    void* const component = open_component();
    if (component == nullptr) return kSerial;
    Threading found = {true,
                       find<nax_serv_threads_limit_function>(component, kLimitName),
                       find<nax_serv_parallel_for_function>(component, kForName),
                       {}};
    const auto fill = find<nax_threads_fill_function>(component, kFillName);
    if (found.limit == nullptr || found.parallel_for == nullptr || fill == nullptr) {
        dlclose(component);
        return kSerial;
    }
    fill(&found.table);  // The component stays open: its threads outlive any call.
    return found;
}

const Threading& threading() {
    static int32_t lock = 0;
    static bool known = false;
    static Threading found;
    if (__atomic_load_n(&known, __ATOMIC_ACQUIRE)) return found;
    nax_serv_lock(&lock);
    if (!known) {
        found = load();
        __atomic_store_n(&known, true, __ATOMIC_RELEASE);
    }
    nax_serv_unlock(&lock);
    return found;
}

}  // namespace

extern "C" void* nax_serv_load_thread_fun(const char* name) {
    if (name == nullptr) return nullptr;
    if (std::strcmp(name, kForName) == 0) return reinterpret_cast<void*>(threading().parallel_for);
    if (std::strcmp(name, kLimitName) == 0) return reinterpret_cast<void*>(threading().limit);
    return nullptr;
}

extern "C" int nax_serv_fill_threaders(nax_threaders* table) {
    if (table == nullptr) return -1;
    *table = threading().table;
    return threading().pooled ? 0 : 1;
}
