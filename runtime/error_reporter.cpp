// The eight reporters: one algorithm over the way to reach an element.
#include <bit>
#include <cerrno>
#include <cstddef>

#include "runtime/mode_word.h"
#include "runtime/x87_environment.h"
#include "service/service.h"

namespace nax::runtime {
namespace {

static_assert(sizeof(arq_error_record) == 144);
static_assert(offsetof(arq_error_record, a1) == 8 && offsetof(arq_error_record, name) == 40);
static_assert(offsetof(arq_error_record, name_length) == 104 && offsetof(arq_error_record, a1_imag) == 112);

constexpr int kLongestName = 47;
constexpr uint32_t kStandardActions =
    ARQ_ERRMODE_IGNORE | ARQ_ERRMODE_ERRNO | ARQ_ERRMODE_STDERR | ARQ_ERRMODE_EXCEPT | ARQ_ERRMODE_NOERR;

// What the calling layer reports about arguments and memory has no element.
bool has_element(int32_t status) { return status != ARQ_STATUS_BAD_ARGUMENT && status != ARQ_STATUS_BAD_MEMORY; }

int errno_of(int32_t status) {
    switch (status) {
        case ARQ_STATUS_SUCCESS:
            return 0;
        case ARQ_STATUS_BAD_ARGUMENT:
            return EINVAL;
        case ARQ_STATUS_BAD_MEMORY:
            return EACCES;
        case ARQ_STATUS_DOMAIN:
            return EDOM;
        case ARQ_STATUS_SINGULARITY:
        case ARQ_STATUS_OVERFLOW:
        case ARQ_STATUS_UNDERFLOW:
            return ERANGE;
        default:
            return EFAULT;
    }
}

uint16_t x87_flag_of(int32_t status) {
    switch (status) {
        case ARQ_STATUS_DOMAIN:
            return kX87Invalid;
        case ARQ_STATUS_SINGULARITY:
            return kX87DivideByZero;
        case ARQ_STATUS_OVERFLOW:
            return kX87Overflow;
        case ARQ_STATUS_UNDERFLOW:
            return kX87Underflow;
        default:
            return 0;
    }
}

uint16_t trapped_by(uint32_t mode) {
    return static_cast<uint16_t>(
        ((mode & ARQ_TRAP_INVALID) != 0 ? kX87Invalid : 0) | ((mode & ARQ_TRAP_DIVBYZERO) != 0 ? kX87DivideByZero : 0) |
        ((mode & ARQ_TRAP_OVERFLOW) != 0 ? kX87Overflow : 0) | ((mode & ARQ_TRAP_UNDERFLOW) != 0 ? kX87Underflow : 0));
}

void print_status(const arq_error_record& record, int32_t status) {
    switch (status) {
        case ARQ_STATUS_BAD_ARGUMENT:
            nax_serv_print(1, 748, 2, record.name, record.index);
            break;
        case ARQ_STATUS_BAD_MEMORY:
            nax_serv_print(1, 749, 1, record.name);
            break;
        case ARQ_STATUS_DOMAIN:
            nax_serv_print(1, 750, 1, record.name);
            break;
        case ARQ_STATUS_SINGULARITY:
            nax_serv_print(1, 751, 1, record.name);
            break;
        case ARQ_STATUS_OVERFLOW:
            nax_serv_print(1, 752, 1, record.name);
            break;
        case ARQ_STATUS_UNDERFLOW:
            nax_serv_print(1, 753, 1, record.name);
            break;
        default:
            nax_serv_print(1, 754, 1, record.name);
            break;
    }
}

// A kernel with one argument or result passes it twice; a second one that is zero says nothing new either.
bool shows_second(double first, double second) {
    return std::bit_cast<uint64_t>(first) != std::bit_cast<uint64_t>(second) && second != 0;
}

// Real parts only, also for complex functions.
void print_values(const arq_error_record& record) {
    const bool two_inputs = shows_second(record.a1, record.a2);
    const bool two_results = shows_second(record.r1, record.r2);
    int number = two_inputs ? (two_results ? 763 : 760) : (two_results ? 757 : 755);
    const auto line = [&](double value) { nax_serv_print(1, number++, 2, record.index, value); };
    line(record.a1);
    if (two_inputs) line(record.a2);
    line(record.r1);
    if (two_results) line(record.r2);
}

void print(const arq_error_record& record, int32_t status) {
    if (status == ARQ_STATUS_SUCCESS) return;
    print_status(record, status);
    if (has_element(status)) print_values(record);
}

void take_standard_actions(const arq_error_record& record, int32_t status) {
    const uint32_t mode = get_mode();
    if ((mode & ARQ_ERRMODE_ERRNO) != 0) errno = errno_of(status);
    if ((mode & ARQ_ERRMODE_STDERR) != 0) print(record, status);
    if ((mode & ARQ_ERRMODE_EXCEPT) != 0) raise_x87(x87_flag_of(status), trapped_by(get_mode()));
}

void copy_name(arq_error_record& record, const char* name) {
    int length = 0;
    while (length < kLongestName && name[length] != '\0') {
        record.name[length] = name[length];
        ++length;
    }
    record.name[length] = '\0';
    record.name_length = length;
}

// Where the element in question stands in one of the caller's vectors; Parts is 2 for complex types.
template <int Parts, class Real>
Real* element_of(Real* vector, int32_t index, int32_t stride) {
    return vector + static_cast<ptrdiff_t>(index) * stride * Parts;
}

template <int Parts, class Real>
void read_element(const Real* element, double& real, double& imag) {
    real = static_cast<double>(element[0]);
    if constexpr (Parts == 2) imag = static_cast<double>(element[1]);
}

template <int Parts, class Real>
void write_element(Real* element, double real, double imag) {
    element[0] = static_cast<Real>(real);
    if constexpr (Parts == 2) element[1] = static_cast<Real>(imag);
}

// The caller's four vectors with their strides.
template <class Real, int Parts>
struct Vectors {
    const Real* a1;
    int32_t inca1;
    const Real* a2;
    int32_t inca2;
    Real* r1;
    int32_t incr1;
    Real* r2;
    int32_t incr2;

    // Elements between the start of the whole vector and that of this call's; the stride has no part in it.
    int32_t shift_of_index() const {
        const void* const whole = input_vector_cell();
        if (whole == nullptr) return 0;
        const auto bytes = reinterpret_cast<intptr_t>(a1) - reinterpret_cast<intptr_t>(whole);
        constexpr int shift = (sizeof(Real) == 4 ? 2 : 3) + (Parts == 2 ? 1 : 0);
        return static_cast<int32_t>(bytes >> shift);
    }
    void read(arq_error_record& record, int32_t index) const {
        read_element<Parts>(element_of<Parts>(a1, index, inca1), record.a1, record.a1_imag);
        read_element<Parts>(element_of<Parts>(a2, index, inca2), record.a2, record.a2_imag);
        read_element<Parts>(element_of<Parts>(r1, index, incr1), record.r1, record.r1_imag);
        read_element<Parts>(element_of<Parts>(r2, index, incr2), record.r2, record.r2_imag);
    }
    // The first result goes last: kernels with one result pass one vector for both.
    void write(const arq_error_record& record, int32_t index) const {
        write_element<Parts>(element_of<Parts>(r2, index, incr2), record.r2, record.r2_imag);
        write_element<Parts>(element_of<Parts>(r1, index, incr1), record.r1, record.r1_imag);
    }
};

template <class Real, int Parts>
void report(int32_t status, int32_t index, const Vectors<Real, Parts>& vectors, const char* name) {
    const uint32_t mode = get_mode();
    const uint32_t error_mode = mode & ARQ_ERRMODE_MASK;
    if (error_mode == ARQ_ERRMODE_NOERR) return;
    status_cell() = status;
    if (error_mode == ARQ_ERRMODE_IGNORE) return;

    arq_error_record record;
    record.status = status;
    record.index = index + vectors.shift_of_index();
    copy_name(record, name);
    if (has_element(status)) vectors.read(record, index);

    if ((mode & ARQ_ERRMODE_CALLBACK) != 0)
        if (const arq_error_callback callback = callback_cell())
            if (callback(&record) != 0) return;

    if ((mode & kStandardActions) != 0) take_standard_actions(record, status);
    if (has_element(status)) vectors.write(record, index);
}

}  // namespace
}  // namespace nax::runtime

using namespace nax::runtime;

extern "C" {

void nax_arq_kernel_sError(int32_t status, int32_t index, const float* a1, const float* a2, float* r1, float* r2,
                           const char* name) {
    report<float, 1>(status, index, {a1, 1, a2, 1, r1, 1, r2, 1}, name);
}
void nax_arq_kernel_dError(int32_t status, int32_t index, const double* a1, const double* a2, double* r1, double* r2,
                           const char* name) {
    report<double, 1>(status, index, {a1, 1, a2, 1, r1, 1, r2, 1}, name);
}
void nax_arq_kernel_cError(int32_t status, int32_t index, const float* a1, const float* a2, float* r1, float* r2,
                           const char* name) {
    report<float, 2>(status, index, {a1, 1, a2, 1, r1, 1, r2, 1}, name);
}
void nax_arq_kernel_zError(int32_t status, int32_t index, const double* a1, const double* a2, double* r1, double* r2,
                           const char* name) {
    report<double, 2>(status, index, {a1, 1, a2, 1, r1, 1, r2, 1}, name);
}
void nax_arq_kernel_sErrorI(int32_t status, int32_t index, const float* a1, int32_t inca1, const float* a2,
                            int32_t inca2, float* r1, int32_t incr1, float* r2, int32_t incr2, const char* name) {
    report<float, 1>(status, index, {a1, inca1, a2, inca2, r1, incr1, r2, incr2}, name);
}
void nax_arq_kernel_dErrorI(int32_t status, int32_t index, const double* a1, int32_t inca1, const double* a2,
                            int32_t inca2, double* r1, int32_t incr1, double* r2, int32_t incr2, const char* name) {
    report<double, 1>(status, index, {a1, inca1, a2, inca2, r1, incr1, r2, incr2}, name);
}
void nax_arq_kernel_cErrorI(int32_t status, int32_t index, const float* a1, int32_t inca1, const float* a2,
                            int32_t inca2, float* r1, int32_t incr1, float* r2, int32_t incr2, const char* name) {
    report<float, 2>(status, index, {a1, inca1, a2, inca2, r1, incr1, r2, incr2}, name);
}
void nax_arq_kernel_zErrorI(int32_t status, int32_t index, const double* a1, int32_t inca1, const double* a2,
                            int32_t inca2, double* r1, int32_t incr1, double* r2, int32_t incr2, const char* name) {
    report<double, 2>(status, index, {a1, inca1, a2, inca2, r1, incr1, r2, incr2}, name);
}

}  // extern "C"
