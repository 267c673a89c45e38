// SOBOL: where its points stand.
#pragma once

#include "rng/quasi/quasi_state.h"
#include "rng/quasi/user_parameters.h"

namespace nax::rng {

struct Sobol {
    using State = SobolState;
    static constexpr ChunkId kChunks[] = {ChunkId::kSobolWork, ChunkId::kSobolDirections};

    static QuasiRequest request(int n, const uint32_t* params);
    static int fill(const QuasiRequest& wanted, const uint32_t* params, uint32_t* rows);
    static int add_chunks(Stream* stream, int n, const uint32_t* params, uint32_t dimension);

    static bool chunks_hold(const Stream* stream, uint64_t dimension) {
        return rng::chunks_hold(stream, ChunkId::kSobolDirections, dimension * kDirectionRow * sizeof(uint32_t)) &&
               rng::chunks_hold(stream, ChunkId::kSobolWork, work_words(dimension) * sizeof(uint32_t));
    }
    static bool own_points(const Stream* stream, PointSet& points) {
        uint32_t* const work = static_cast<uint32_t*>(find_chunk(stream, ChunkId::kSobolWork));
        if (work == nullptr || find_chunk(stream, ChunkId::kSobolDirections) == nullptr) return false;
        points = points_in_work(work, static_cast<int>(payload<State>(stream).place.dimension));
        return true;
    }
};

}  // namespace nax::rng
