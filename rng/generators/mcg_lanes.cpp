#include "rng/generators/mcg_lanes.h"

#include "rng/generators/mcg.h"
#include "rng/registry.h"
#include "service/block.h"

using namespace nax;
using namespace nax::rng;

namespace {

constexpr EngineProperty engine_property(uint32_t index, float single_scale, double double_scale) {
    EngineProperty property{};
    property.index[0] = index;
    for (float& scale : property.single_scale) scale = single_scale;
    for (double& scale : property.double_scale) scale = double_scale;
    return property;
}

template <class Mcg>
int restore(Stream* stream, LaneBlock& block) {
    if (block.engine != Mcg::kEngine) return STO_STATUS_FILE_READ;
    block.lanes[0] = Mcg::reduce(block.lanes[0]);
    build_lanes<Mcg>(block, block.lanes[0], payload<typename Mcg::State>(stream).a, true);
    return STO_STATUS_OK;
}

}  // namespace

// For MCG31 the two scales differ deliberately: 2^-31 in single precision, the reciprocal of the modulus in double.
constinit const EngineProperty nax_sto_sub_kernel_vrng_coreavx512_engine_property[2] = {
    engine_property(0, 0x1p-31f, 0x1.00000002p-31),
    engine_property(1, 0x1p-59f, 0x1p-59),
};

namespace nax::rng {

LaneBlock* add_lanes(Stream* stream, uint32_t engine) {
    service::Block<LaneBlock> block;
    if (!block.allocate(1)) return nullptr;
    block[0] = LaneBlock{};
    block[0].engine = engine;
    const uint32_t id = static_cast<uint32_t>(ChunkId::kLanes);
    if (__stoAddChunk(stream, id, nullptr, block.get(), sizeof(LaneBlock)) != STO_STATUS_OK) return nullptr;
    return block.detach();
}

// The rows of the two generators have the same numbers in both tables.
int restore_lanes(Stream* stream) {
    constexpr int kMcg31Row = 0, kMcg59Row = 3;
    LaneBlock& block = *find_lanes(stream);
    switch (place_of(stream->brng).row) {
        case kMcg31Row: return restore<Mcg31>(stream, block);
        case kMcg59Row: return restore<Mcg59>(stream, block);
        default: return STO_STATUS_OK;
    }
}

}  // namespace nax::rng
