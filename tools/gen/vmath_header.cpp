// Writes the public headers of the vector functions from the records list and the documentation rows:
//     gen_vmath_header functions > include/nax/vmath.h
//     gen_vmath_header kernels > include/nax/vmath_kernels.h
#include <cstdio>
#include <cstring>
#include <map>
#include <set>
#include <string>

#include "runtime/kernel_names.h"
#include "runtime/records.h"

namespace {

using nax::RecordRow;
using nax::Signature;
using std::string;

struct Doc {
    const char *result, *special_values, *statuses;
};
// By function; complex types of a function that has real ones too, or has only them, stand under a name of their own.
const std::map<string, Doc> kDocs = {
#define DOC(function, result, special_values, statuses) {#function, {result, special_values, statuses}},
#define COMPLEX_DOC(function, result, special_values, statuses) \
    {#function " (complex)", {result, special_values, statuses}},
#include "tools/gen/vmath_docs.def"
};
string doc_key(const RecordRow& row) {
    const bool complex = row.has_strided && (row.type == 'c' || row.type == 'z');
    return string(row.function) + (complex ? " (complex)" : "");
}

constexpr const char* kFunctionsHead =
    R"(/* Vector mathematics: element-wise functions of arrays. Generated from the list of records; don't edit.
 *
 * Names: _arq, a type letter, the function, I for the strided form, and a suffix for the accuracy.
 *   type       s float, d double, c and z pairs of them, real part first
 *   suffix     none or _HA    high accuracy, below one unit in the last place
 *              _21 or _50     lower accuracy: about 21 bits (s, c) or 50 bits (d, z)
 *              _11 or _26     enhanced performance: about 11 bits (s, c) or 26 bits (d, z)
 *              docs/accuracy.md has the bound and the measured error of each. Where a function has one kernel for
 *              several levels, their results agree bit for bit. The mode word does not choose: a caller who wants
 *              that takes entry nax_arq_kernel_GetTTableIndex() of the function's table (nax/vmath_kernels.h).
 * Arguments: n, the number of elements; input vectors a, b; result vectors r, or r1 and r2. In the strided form each
 *   vector is followed by its stride, counted in elements (pairs for complex types): element i is a[i inca]. A stride
 *   may be negative or, for inputs, zero. n of 0 or less does nothing. A result vector may be the same as an input
 *   vector (same start, same stride); no other overlap is allowed. Pointers and n are not checked.
 * Results: each is a function of its own element's arguments alone, bit for bit, whatever n, position, stride or
 *   alignment. NaN arguments give NaN and no status unless the function's line says otherwise. Denormals count as zero
 *   if the mode word says so (nax/mode.h).
 * Statuses: an element with a status is reported as nax/error.h tells and does not stop the call: 1 outside the domain,
 *   2 pole, 3 overflow, 4 underflow.
 * Cost: linear in n. Runs on the calling thread; any number of threads may call. */
#ifndef NAX_VMATH_H
#define NAX_VMATH_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct nax_complex_s { float real, imag; } nax_complex_s;
typedef struct nax_complex_z { double real, imag; } nax_complex_z;
)";

constexpr const char* kKernelsHead =
    R"(/* Kernels and dispatch tables behind nax/vmath.h, for layers that dispatch on their own. Generated; don't edit.
 *
 * Each record is two objects side by side:
 *   nax_arq_kernel_<name>_ttab   three kernels: slot 0 lower accuracy, 1 high accuracy, 2 enhanced performance
 *   nax_arq_kernel_<name>_ctab   the cost of one element in these slots, on one scale for all functions (about 2.9 to
 *                                a nanosecond at 3.7 GHz), and four bytes of zero
 * Tables are constants. Kernel names end in the instruction set (Z0 AVX-512, L9 AVX2, E9 AVX, EX one element at a time),
 * the level and three flag letters without meaning. Arguments and results are those of the functions in nax/vmath.h;
 * kernels of the pack group take a last argument: 1 for lengths, strides, indices and masks of 32-bit integers, any
 * other value for 64-bit ones. */
#ifndef NAX_VMATH_KERNELS_H
#define NAX_VMATH_KERNELS_H

#include "nax/vmath.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef void (*nax_kernel)(void); /* to be cast to the record's signature */
)";

constexpr const char* kTail = R"(
#ifdef __cplusplus
}
#endif
#endif
)";

const char* element_type(char letter) {
    switch (letter) {
        case 's':
            return "float";
        case 'd':
            return "double";
        case 'c':
            return "nax_complex_s";
        default:
            return "nax_complex_z";
    }
}
// The type with the same precision and the other number of parts.
char real_letter(char letter) { return letter == 'c' ? 's' : letter == 'z' ? 'd' : letter; }

// A vector argument, with its stride in the strided form.
string vector_argument(const string& type, const string& name, bool input, bool strided) {
    return ", " + string(input ? "const " : "") + type + "* " + name + (strided ? ", int32_t inc" + name : "");
}

string pack_arguments(const RecordRow& row, bool kernel) {
    const string integer = kernel ? "int64_t" : "int32_t", indices = kernel ? "const void* " : "const int32_t* ";
    const string type = element_type(row.type), a = ", const " + type + "* a", y = ", " + type + "* y";
    string arguments = integer + " n" + a;
    switch (row.signature) {
        case Signature::PACK_I:
            arguments += ", " + integer + " inca" + y;
            break;
        case Signature::PACK_V:
            arguments += ", " + indices + "ia" + y;
            break;
        case Signature::PACK_M:
            arguments += ", " + indices + "ma" + y;
            break;
        case Signature::UNPACK_I:
            arguments += y + ", " + integer + " incy";
            break;
        case Signature::UNPACK_V:
            arguments += y + ", " + indices + "iy";
            break;
        default:
            arguments += y + ", " + indices + "my";
            break;
    }
    return kernel ? arguments + ", int32_t flag" : arguments;
}

string arguments(const RecordRow& row, bool strided, bool kernel) {
    if (!row.has_strided) return pack_arguments(row, kernel);
    const string type = element_type(row.type), real = element_type(real_letter(row.type));
    const string a = "int32_t n" + vector_argument(type, "a", true, strided);
    switch (row.signature) {
        case Signature::BINARY:
            return a + vector_argument(type, "b", true, strided) + vector_argument(type, "r", false, strided);
        case Signature::POWX:
            return a + ", " + type + " b" + vector_argument(type, "r", false, strided);
        case Signature::TWO_RESULTS:
            return a + vector_argument(type, "r1", false, strided) + vector_argument(type, "r2", false, strided);
        case Signature::TO_REAL:
            return a + vector_argument(real, "r", false, strided);
        case Signature::TO_COMPLEX:
            return "int32_t n" + vector_argument(real, "a", true, strided) + vector_argument(type, "r", false, strided);
        case Signature::LINEAR_FRAC:
            return a + vector_argument(type, "b", true, strided) + ", " + type + " scalea, " + type + " shifta, " +
                   type + " scaleb, " + type + " shiftb" + vector_argument(type, "r", false, strided);
        default:
            return a + vector_argument(type, "r", false, strided);
    }
}

void print_wrapped(const string& text) {
    size_t column = 0;
    for (size_t at = 0; at < text.size();) {
        size_t end = text.find(' ', at);
        if (end == string::npos) end = text.size();
        if (column + end - at > 112) {
            std::printf("\n *  ");
            column = 4;
        }
        std::printf("%s%s", at == 0 ? "" : " ", text.substr(at, end - at).c_str());
        column += end - at + 1;
        at = end + 1;
    }
}

void print_functions(const RecordRow& row, bool strided) {
    const bool narrow = row.type == 's' || row.type == 'c';
    const string name = string("_arq") + row.type + row.function + (strided ? "I" : "");
    for (const char* suffix : {"", "_HA", narrow ? "_21" : "_50", narrow ? "_11" : "_26"})
        std::printf("void %s%s(%s);\n", name.c_str(), suffix, arguments(row, strided, false).c_str());
}

void print_kernels(const RecordRow& row, bool strided) {
    const string name = string("nax_arq_kernel_") + row.type + row.function + (strided ? "I" : "");
    std::set<string> seen;
    for (const string tag : row.tags)
        if (seen.insert(tag).second)
            std::printf("void %s_%s%s(%s);\n", name.c_str(), tag.c_str(), tag.substr(2) == "EP" ? "nnn" : "ynn",
                        arguments(row, strided, true).c_str());
    std::printf("extern nax_kernel %s_ttab[3];\nextern float %s_ctab[4];\n", name.c_str(), name.c_str());
}

int missing_documentation() {
    int missing = 0;
    for (const RecordRow& row : nax::kRecordRows) {
        if (kDocs.contains(doc_key(row))) continue;
        std::fprintf(stderr, "no row for %s in tools/gen/vmath_docs.def\n", doc_key(row).c_str());
        ++missing;
    }
    return missing;
}

void print_documentation(const string& key) {
    const Doc& doc = kDocs.at(key);
    std::printf("\n/* ");
    print_wrapped(key + ": " + doc.result + ".");
    if (doc.special_values[0] != '\0') {
        std::printf("\n * ");
        print_wrapped(string("Special values: ") + doc.special_values + ". Statuses: " + doc.statuses + ".");
    }
    std::printf(" */\n");
}

}  // namespace

int main(int argc, char** argv) {
    const bool functions = argc == 2 && std::strcmp(argv[1], "functions") == 0;
    const bool kernels = argc == 2 && std::strcmp(argv[1], "kernels") == 0;
    if (!functions && !kernels) {
        std::fprintf(stderr, "usage: gen_vmath_header functions|kernels\n");
        return 2;
    }
    if (missing_documentation() != 0) return 1;
    std::fputs(functions ? kFunctionsHead : kKernelsHead, stdout);
    // The types that share a documentation row stand together, in the order in which functions appear in the list.
    std::set<string> done;
    for (const RecordRow& first : nax::kRecordRows) {
        const string key = doc_key(first);
        if (!done.insert(key).second) continue;
        if (functions)
            print_documentation(key);
        else
            std::printf("\n");
        for (const RecordRow& row : nax::kRecordRows) {
            if (doc_key(row) != key) continue;
            for (const bool strided : {false, true})
                if (!strided || row.has_strided)
                    functions ? print_functions(row, strided) : print_kernels(row, strided);
        }
    }
    std::fputs(kTail, stdout);
    return 0;
}
