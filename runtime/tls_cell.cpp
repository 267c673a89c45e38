#include "runtime/tls_cell.h"

#include <cstring>

#include "service/service.h"

namespace nax::runtime {

nax_tls_key Mode_key = {};
nax_tls_key ErrStatus_key = {};
nax_tls_key CallBack_key = {};
nax_tls_key InputVecorPointer_key = {};

namespace {

constexpr size_t kCellAlignment = 64;
constexpr int kExitNoCell = 3;

// The flag is set after key and destructor, and read before them: who sees it sees them.
void make_key(nax_tls_key& record, void (*cleanup)(void*)) {
    nax_serv_lock(&record.lock);
    if (!key_exists(record)) {
        pthread_key_t key;
        if (pthread_key_create(&key, cleanup) == 0) {
            record.key = key;
            record.destructor = cleanup;
            __atomic_store_n(&record.flags, record.flags | kKeyExists, __ATOMIC_RELEASE);
            nax_serv_core_register_cleanup(nax_tls_destroy, &record);
        }
    }
    nax_serv_unlock(&record.lock);
}

}  // namespace

[[gnu::cold, gnu::noinline]] void* make_tls_cell(nax_tls_key& record, void (*cleanup)(void*), size_t size) {
    if (!key_exists(record)) make_key(record, cleanup);
    const bool exists = key_exists(record);
    if (exists)
        if (void* const cell = pthread_getspecific(record.key)) return cell;
    void* const cell = nax_serv_malloc(size, kCellAlignment);
    if (cell == nullptr) nax_serv_exit(kExitNoCell);
    std::memset(cell, 0, size);
    if (exists) pthread_setspecific(record.key, cell);
    return cell;
}

}  // namespace nax::runtime

using namespace nax::runtime;

extern "C" void nax_tls_destroy(void* key_record) {
    nax_tls_key& record = *static_cast<nax_tls_key*>(key_record);
    if (!key_exists(record)) return;
    __atomic_store_n(&record.flags, 0, __ATOMIC_RELEASE);
    pthread_key_delete(record.key);
}

extern "C" void Mode_cleanup(void* cell) { nax_serv_free(cell); }
extern "C" void ErrStatus_cleanup(void* cell) { nax_serv_free(cell); }
extern "C" void CallBack_cleanup(void* cell) { nax_serv_free(cell); }
extern "C" void InputVecorPointer_cleanup(void* cell) { nax_serv_free(cell); }
