// The generator that a digital sequence makes. A sequence is a struct of
//   State, kChunks                                             payload; ids of the chunks of its user form
//   QuasiRequest request(n, params)                            what the seeding words ask for
//   int fill(request, params, rows)                            direction numbers by dimension; STO_STATUS_BAD_ARGUMENT
//   int add_chunks(stream, n, params, dimension)               the user form beyond the payload's dimensions
//   bool chunks_hold(stream, dimension)                        whether all such chunks are long enough
//   bool own_points(stream, points)                            true if the chunks are there, which makes the user form
#pragma once

#include "rng/generator.h"
#include "rng/quasi/quasi_state.h"
#include "rng/quasi/user_parameters.h"
#include "rng/shared_data.h"

namespace nax::rng {

// The points of a stream; false if a chunk is missing.
template <class Sequence>
bool find_points(Stream* stream, PointSet& points, bool& user) {
    auto& state = payload<typename Sequence::State>(stream);
    points = default_points(state);
    user = stream->chunks != nullptr && Sequence::own_points(stream, points);
    return user || state.place.dimension <= Sequence::State::kDimensions;
}

template <class Sequence>
struct QuasiGenerator {
    using State = typename Sequence::State;
    static State& state(Stream* stream) { return payload<State>(stream); }

    // Direction numbers into the payload.
    static int fill_payload(Stream* stream, QuasiRequest wanted, const uint32_t* params) {
        wanted.dimension = std::min<uint32_t>(wanted.dimension, State::kDimensions);
        const int status = Sequence::fill(wanted, params, state(stream).directions[0]);
        if (status < 0) return status;
        start_points(state(stream).directions[0], static_cast<int>(wanted.dimension), state(stream).bit_rows[0],
                     default_points(state(stream)));
        return STO_STATUS_OK;
    }
    static int seed(Stream* stream, int n, const uint32_t* params) {
        for (const ChunkId id : Sequence::kChunks) drop_chunks(stream, id);
        const QuasiRequest wanted = Sequence::request(n, params);
        state(stream) = {};
        state(stream).place.counter = 1;
        state(stream).place.dimension = wanted.dimension;
        state(stream).place.selected = -1;
        if (wanted.dimension <= State::kDimensions) return fill_payload(stream, wanted, params);
        return Sequence::add_chunks(stream, n, params, wanted.dimension);
    }
    static int leapfrog(Stream* stream, uint32_t k, int nstreams) {
        return select_coordinate(state(stream).place, k, nstreams);
    }
    static int skip_ahead(Stream* stream, int n, uint64_t count) {
        if (n < 1) return STO_STATUS_NO_SKIPAHEAD;
        PointSet points{};
        bool user = false;
        if (!find_points<Sequence>(stream, points, user)) return STO_STATUS_NO_MEMORY;
        return skip_points(state(stream).place, points, count);
    }
    static bool valid(const Stream* stream) {
        const QuasiPlace& place = payload<State>(stream).place;
        PointSet points{};
        const bool user = Sequence::own_points(stream, points);
        return place.dimension >= 1 && place.position < place.dimension && place.selected >= -1 &&
               static_cast<int64_t>(place.selected) < static_cast<int64_t>(place.dimension) &&
               (user ? Sequence::chunks_hold(stream, place.dimension) : place.dimension <= State::kDimensions);
    }
};

}  // namespace nax::rng
