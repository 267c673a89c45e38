#include "runtime/tls_cell.h"

namespace nax::runtime {
namespace {

int32_t set_status(int32_t status) {
    const int32_t previous = status_cell();
    status_cell() = status;
    return previous;
}

}  // namespace
}  // namespace nax::runtime

using namespace nax::runtime;

extern "C" {

int32_t _arqSetErrStatus(int32_t status) { return set_status(status); }
int32_t nax_arq_kernel_SetErrStatus(int32_t status) { return set_status(status); }

int32_t _arqGetErrStatus() { return status_cell(); }
int32_t nax_arq_kernel_GetErrStatus() { return status_cell(); }

int32_t _arqClearErrStatus() { return set_status(ARQ_STATUS_SUCCESS); }
int32_t nax_arq_kernel_ClearErrStatus() { return set_status(ARQ_STATUS_SUCCESS); }

}  // extern "C"
