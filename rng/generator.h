// What a generator is to the rest of the library: a struct of static functions.
//   int seed(Stream*, int n, const uint32_t* params)                    every generator
//   int leapfrog(Stream*, uint32_t k, int nstreams)                     else STO_STATUS_NO_LEAPFROG
//   int skip_ahead(Stream*, int n, uint64_t count)                      else STO_STATUS_NO_SKIPAHEAD
//   int skip_ahead_far(Stream*, int words, const uint64_t* count)       else STO_STATUS_NO_SKIPAHEADEX
//   bool valid(const Stream*)                                           else any payload will do
// `valid` judges a payload and chunks that came from outside: it is false where drawing, skipping or copying would leave the
// memory of the stream. Any other content makes a working stream, if not the one that was saved.
#pragma once

#include "rng/registry.h"

namespace nax::rng {

template <class Generator>
int init_stream(int method, Stream* stream, int n, const void* params) {
    switch (method) {
        case NAX_INIT_STANDARD: return Generator::seed(stream, n, static_cast<const uint32_t*>(params));
        case NAX_INIT_LEAPFROG:
            if constexpr (requires { Generator::leapfrog(stream, 0u, n); }) {
                return Generator::leapfrog(stream, *static_cast<const uint32_t*>(params), n);
            }
            return STO_STATUS_NO_LEAPFROG;
        case NAX_INIT_SKIPAHEAD:
            if constexpr (requires { Generator::skip_ahead(stream, n, uint64_t{}); }) {
                return Generator::skip_ahead(stream, n, *static_cast<const uint64_t*>(params));
            }
            return STO_STATUS_NO_SKIPAHEAD;
        case NAX_INIT_SKIPAHEADEX:
            if constexpr (requires { Generator::skip_ahead_far(stream, n, static_cast<const uint64_t*>(params)); }) {
                return Generator::skip_ahead_far(stream, n, static_cast<const uint64_t*>(params));
            }
            return STO_STATUS_NO_SKIPAHEADEX;
        default: return STO_STATUS_BAD_METHOD;
    }
}

template <class Generator>
bool is_valid(const Stream* stream) {
    if constexpr (requires { Generator::valid(stream); }) return Generator::valid(stream);
    return true;
}

}  // namespace nax::rng

// Spells what the registry knows of a generator beside its output.
#define NAX_GENERATOR(name, Generator)                                                                              \
    extern "C" int __stoBRng##name##InitStream(int method, nax_stream* stream, int n, const void* params) {         \
        return nax::rng::init_stream<Generator>(method, stream, n, params);                                         \
    }                                                                                                               \
    bool nax::rng::valid_##name(const nax_stream* stream) { return nax::rng::is_valid<Generator>(stream); }

// Spells the output functions of a generator of 32-bit words, from draw(state, n, r, map) for n of at least 1.
#define NAX_WORD_OUTPUT(name, State, Scale)                                                  \
    extern "C" int __stosBRng##name(nax_stream* stream, int n, float* r, float a, float b) { \
        if (n > 0) draw(payload<State>(stream), n, r, Scale<float>(a, b));                   \
        return STO_STATUS_OK;                                                                \
    }                                                                                        \
    extern "C" int __stodBRng##name(nax_stream* stream, int n, double* r, double a, double b) { \
        if (n > 0) draw(payload<State>(stream), n, r, Scale<double>(a, b));                  \
        return STO_STATUS_OK;                                                                \
    }                                                                                        \
    extern "C" int __stoiBRng##name(nax_stream* stream, int n, void* r) {                    \
        if (n > 0) draw(payload<State>(stream), n, static_cast<uint32_t*>(r), RawWords{});   \
        return STO_STATUS_OK;                                                                \
    }
