#include "runtime/tls_cell.h"

namespace nax::runtime {
namespace {

arq_error_callback set_callback(arq_error_callback callback) {
    const arq_error_callback previous = callback_cell();
    callback_cell() = callback;
    return previous;
}

}  // namespace
}  // namespace nax::runtime

using namespace nax::runtime;

extern "C" {

arq_error_callback _arqSetErrorCallBack(arq_error_callback callback) { return set_callback(callback); }
arq_error_callback nax_arq_kernel_SetErrorCallBack(arq_error_callback callback) { return set_callback(callback); }

arq_error_callback _arqGetErrorCallBack() { return callback_cell(); }
arq_error_callback nax_arq_kernel_GetErrorCallBack() { return callback_cell(); }

arq_error_callback _arqClearErrorCallBack() { return set_callback(nullptr); }
arq_error_callback nax_arq_kernel_ClearErrorCallBack() { return set_callback(nullptr); }

void _arqSetInterfInputVectorPointer(const void* whole_vector) { input_vector_cell() = whole_vector; }
void nax_arq_kernel_SetInterfInputVectorPointer(const void* whole_vector) { input_vector_cell() = whole_vector; }

}  // extern "C"
