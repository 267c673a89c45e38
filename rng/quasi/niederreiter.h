// NIEDERREITER: where its points stand.
#pragma once

#include "rng/quasi/quasi_state.h"
#include "rng/quasi/user_parameters.h"

namespace nax::rng {

struct Niederreiter {
    using State = NiederreiterState;
    static constexpr ChunkId kChunks[] = {ChunkId::kNiederreiterDirections};

    static QuasiRequest request(int n, const uint32_t* params);
    static int fill(const QuasiRequest& wanted, const uint32_t* params, uint32_t* rows);
    static int add_chunks(Stream* stream, int n, const uint32_t* params, uint32_t dimension);

    static bool chunks_hold(const Stream* stream, uint64_t dimension) {
        return rng::chunks_hold(stream, kChunks[0], dimension * kDirectionRow * sizeof(uint32_t));
    }
    static bool own_points(const Stream* stream, PointSet& points) {
        uint32_t* const rows = static_cast<uint32_t*>(find_chunk(stream, kChunks[0]));
        if (rows != nullptr) points = points_by_dimension(rows);
        return rows != nullptr;
    }
};

}  // namespace nax::rng
