#include <dlfcn.h>

#include <cstring>

#include "nax/threaders.h"
#include "service/service.h"

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

constexpr nax_threaders kSerialTable = {serial_loop, serial_loop, serial_region, serial_ordered, serial_limit};

}  // namespace

extern "C" void* nax_serv_load_thread_fun(const char* name) {
    if (name == nullptr) return nullptr;
    if (std::strcmp(name, "nax_sto_serv_threader_for") == 0) return reinterpret_cast<void*>(serial_for);
    if (std::strcmp(name, "nax_sto_serv_threader_get_num_threads_limit") == 0)
        return reinterpret_cast<void*>(serial_limit);
    return nullptr;
}

extern "C" int nax_serv_fill_threaders(nax_threaders* table) {
    if (table == nullptr) return -1;
    *table = kSerialTable;
    return 1;
}
