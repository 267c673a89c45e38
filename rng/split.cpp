// Leapfrog and skip-ahead: making a stream a part of a family. The generator's InitStream does the work or refuses it;
// the stream is trusted.
#include "rng/registry.h"

using namespace nax::rng;

extern "C" {

int __stoLeapfrogStream(nax_stream* stream, int k, int nstreams) {
    if (nstreams < 0) return STO_STATUS_BAD_NSTREAMS;
    return properties_of(stream).InitStream(NAX_INIT_LEAPFROG, stream, nstreams, &k);
}

int __stoSkipAheadStream(nax_stream* stream, uint64_t nskip) {
    return properties_of(stream).InitStream(NAX_INIT_SKIPAHEAD, stream, 2, &nskip);
}

int __stoSkipAheadStreamEx(nax_stream* stream, int n, const uint64_t* nskip) {
    return properties_of(stream).InitStream(NAX_INIT_SKIPAHEADEX, stream, n, nskip);
}

}  // extern "C"
