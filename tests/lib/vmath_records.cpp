#include "tests/lib/vmath_records.h"

#include <map>
#include <vector>

#include "runtime/kernel_names.h"

// All names as plain functions and arrays; call() gives them their types back.
#define NAX_CAT(a, b) NAX_CAT_(a, b)
#define NAX_CAT_(a, b) a##b
#define NAX_LA_STUB(type, name) NAX_CAT(_arq##name##_, NAX_STUB_LA_##type)
#define NAX_EP_STUB(type, name) NAX_CAT(_arq##name##_, NAX_STUB_EP_##type)
#define NAX_KERNEL(name, tag) NAX_CAT(nax_arq_kernel_##name##_, NAX_TAG_##tag)

extern "C" {
#define DECLARE(type, name, la, ha, ep)                         \
    void _arq##name();                                          \
    void _arq##name##_HA();                                     \
    void NAX_LA_STUB(type, name)();                             \
    void NAX_EP_STUB(type, name)();                             \
    extern nax::testing::Entry nax_arq_kernel_##name##_ttab[3]; \
    extern float nax_arq_kernel_##name##_ctab[4];               \
    void NAX_KERNEL(name, la)();                                \
    void NAX_KERNEL(name, ha)();                                \
    void NAX_KERNEL(name, ep)();
#define RECORD(type, function, signature, la, ha, ep, cost_la, cost_ha, cost_ep) \
    DECLARE(type, type##function, la, ha, ep)                                    \
    DECLARE(type, type##function##I, la, ha, ep)
#define PACK_RECORD(type, function, signature, la, ha, ep, cost_la, cost_ha, cost_ep) \
    DECLARE(type, type##function, la, ha, ep)
#include "runtime/records.def"
}

namespace nax::testing {
namespace {

std::vector<Record> make_records() {
    std::vector<Record> records;
    const RecordRow* row = kRecordRows;
#define ADD(type, name, strided, la, ha, ep)                                                            \
    records.push_back({row,                                                                             \
                       strided,                                                                         \
                       {_arq##name, _arq##name##_HA, NAX_LA_STUB(type, name), NAX_EP_STUB(type, name)}, \
                       nax_arq_kernel_##name##_ttab,                                                    \
                       nax_arq_kernel_##name##_ctab,                                                    \
                       {NAX_KERNEL(name, la), NAX_KERNEL(name, ha), NAX_KERNEL(name, ep)}});
#define RECORD(type, function, signature, la, ha, ep, cost_la, cost_ha, cost_ep) \
    ADD(type, type##function, false, la, ha, ep)                                 \
    ADD(type, type##function##I, true, la, ha, ep)                               \
    ++row;
#define PACK_RECORD(type, function, signature, la, ha, ep, cost_la, cost_ha, cost_ep) \
    ADD(type, type##function, false, la, ha, ep)                                      \
    ++row;
#include "runtime/records.def"
    return records;
}

template <class... T>
void invoke(Entry entry, T... arguments) {
    reinterpret_cast<void (*)(T...)>(entry)(arguments...);
}

template <class T>
struct Pair {
    T real, imag;
};

template <class Scalar>
void call_powx(const Record& record, Entry entry, const Arguments& x, Scalar b) {
    if (record.strided)
        invoke(entry, x.n, x.in[0], x.in_stride[0], b, x.out[0], x.out_stride[0]);
    else
        invoke(entry, x.n, x.in[0], b, x.out[0]);
}

template <class T>
void call_linear_frac(const Record& record, Entry entry, const Arguments& x) {
    const T s[4] = {static_cast<T>(x.linear[0]), static_cast<T>(x.linear[1]), static_cast<T>(x.linear[2]),
                    static_cast<T>(x.linear[3])};
    if (record.strided)
        invoke(entry, x.n, x.in[0], x.in_stride[0], x.in[1], x.in_stride[1], s[0], s[1], s[2], s[3], x.out[0],
               x.out_stride[0]);
    else
        invoke(entry, x.n, x.in[0], x.in[1], s[0], s[1], s[2], s[3], x.out[0]);
}

}  // namespace

std::span<const Record> all_records() {
    static const std::vector<Record> records = make_records();
    return records;
}

const Record* find_record(const std::string& name) {
    static const std::map<std::string, const Record*> by_name = [] {
        std::map<std::string, const Record*> map;
        for (const Record& record : all_records()) map[record.name()] = &record;
        return map;
    }();
    const auto found = by_name.find(name);
    return found == by_name.end() ? nullptr : found->second;
}

Shape shape_of(const Record& record) {
    const int reals = record.complex() ? 2 : 1;
    switch (record.row->signature) {
        case Signature::BINARY:
        case Signature::LINEAR_FRAC:
            return {2, 1, reals, reals};
        case Signature::TWO_RESULTS:
            return {1, 2, reals, reals};
        case Signature::TO_REAL:
            return {1, 1, 2, 1};
        case Signature::TO_COMPLEX:
            return {1, 1, 1, 2};
        default:
            return {1, 1, reals, reals};
    }
}

void call(const Record& record, Entry entry, const Arguments& x) {
    switch (record.row->signature) {
        case Signature::BINARY:
            if (record.strided)
                invoke(entry, x.n, x.in[0], x.in_stride[0], x.in[1], x.in_stride[1], x.out[0], x.out_stride[0]);
            else
                invoke(entry, x.n, x.in[0], x.in[1], x.out[0]);
            return;
        case Signature::TWO_RESULTS:
            if (record.strided)
                invoke(entry, x.n, x.in[0], x.in_stride[0], x.out[0], x.out_stride[0], x.out[1], x.out_stride[1]);
            else
                invoke(entry, x.n, x.in[0], x.out[0], x.out[1]);
            return;
        case Signature::POWX: {
            const float re = static_cast<float>(x.scalar_b[0]), im = static_cast<float>(x.scalar_b[1]);
            switch (record.type()) {
                case 's':
                    return call_powx(record, entry, x, re);
                case 'd':
                    return call_powx(record, entry, x, x.scalar_b[0]);
                case 'c':
                    return call_powx(record, entry, x, Pair<float>{re, im});
                default:
                    return call_powx(record, entry, x, Pair<double>{x.scalar_b[0], x.scalar_b[1]});
            }
        }
        case Signature::LINEAR_FRAC:
            return record.single() ? call_linear_frac<float>(record, entry, x)
                                   : call_linear_frac<double>(record, entry, x);
        default:
            if (record.strided)
                invoke(entry, x.n, x.in[0], x.in_stride[0], x.out[0], x.out_stride[0]);
            else
                invoke(entry, x.n, x.in[0], x.out[0]);
    }
}

}  // namespace nax::testing
