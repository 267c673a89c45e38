// The interpreter's loop over basic blocks, and the cache of decoded blocks.
#include <sys/mman.h>

#include <atomic>

#include "tools/interpreter/op.h"

namespace nax::emulator {
namespace {

struct Block {
    std::uint64_t start;
    std::uint64_t end;  // where execution goes on when the block doesn't end in a branch
    const Op* ops;
    std::uint32_t count;
    bool refused_by_host;  // holds an instruction that the host cannot run
    bool leave;            // an instruction for the host follows
};

constexpr std::uint64_t kTrapFlag = 0x100;
constexpr std::size_t kSlots = 1 << 18, kMaxBlocks = kSlots / 2, kMaxOps = 1 << 21, kMaxBlockLength = 256;

// Fixed pools, touched only as far as used. Blocks are shared by all threads and never change once published.
struct Cache {
    std::atomic<const Block*> slots[kSlots];
    Block blocks[kMaxBlocks];
    Op ops[kMaxOps];
    std::size_t block_count, op_count;
    std::atomic_flag lock;
};

Cache* cache() {
    static std::atomic<Cache*> instance;
    Cache* c = instance.load(std::memory_order_acquire);
    if (c) return c;
    void* p = mmap(nullptr, sizeof(Cache), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (p == MAP_FAILED) __builtin_trap();
    auto* fresh = static_cast<Cache*>(p);
    if (!instance.compare_exchange_strong(c, fresh)) {
        munmap(p, sizeof(Cache));
        return c;
    }
    return fresh;
}

std::size_t slot_of(std::uint64_t address) { return (address * 0x9E3779B97F4A7C15ull) >> 46; }

const Block* find(Cache& c, std::uint64_t address) {
    for (std::size_t i = slot_of(address);; i = (i + 1) & (kSlots - 1)) {
        const Block* b = c.slots[i].load(std::memory_order_acquire);
        if (!b || b->start == address) return b;
    }
}

void decode_block(Cache& c, std::uint64_t address, Block& b) {
    b = Block{address, address, c.ops + c.op_count, 0, false, false};
    bool ends = false;
    while (!ends && b.count < kMaxBlockLength) {
        bool refused = false;
        Op& op = c.ops[c.op_count];
        if (!decode(reinterpret_cast<const std::uint8_t*>(b.end), op, ends, refused)) {
            b.leave = true;
            break;
        }
        b.refused_by_host |= refused;
        b.end = op.next;
        ++b.count;
        ++c.op_count;
    }
}

const Block* find_or_decode(Cache& c, std::uint64_t address) {
    if (const Block* known = find(c, address)) return known;
    while (c.lock.test_and_set(std::memory_order_acquire)) _mm_pause();
    const Block* b = find(c, address);
    if (!b) {
        if (c.block_count == kMaxBlocks || c.op_count + kMaxBlockLength > kMaxOps) __builtin_trap();
        Block& fresh = c.blocks[c.block_count++];
        decode_block(c, address, fresh);
        std::size_t i = slot_of(address);
        while (c.slots[i].load(std::memory_order_relaxed)) i = (i + 1) & (kSlots - 1);
        c.slots[i].store(&fresh, std::memory_order_release);
        b = &fresh;
    }
    c.lock.clear(std::memory_order_release);
    return b;
}

}  // namespace

bool interpret(State& state) {
    // A stretch of this many instructions that the host could run costs as much as a return to it and a new trap,
    // which virtual machines make some ten microseconds.
    constexpr std::uint32_t patience = 500;
    Cache& c = *cache();
    std::uint32_t idle = 0;
    bool progress = false;
    for (;;) {
        const Block* b = find_or_decode(c, state.rip);
        if (b->count == 0) return progress;
        if (state.flags & kTrapFlag) {  // somebody follows the program step by step
            const Op& op = b->ops[0];
            state.rip = op.next;
            op.run(state, op);
            return true;
        }
        progress = true;
        state.rip = b->end;
        const Op* const end = b->ops + b->count;
        for (const Op* op = b->ops; op != end; ++op) op->run(state, *op);
        if (b->leave) return true;
        idle = b->refused_by_host ? 0 : idle + b->count;
        if (idle > patience) return true;
    }
}

}  // namespace nax::emulator
