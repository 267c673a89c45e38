// The process-wide table of read-only data: blocks such as direction numbers that copies of a stream share. It is the only
// mutable data that streams have in common.
#include "rng/shared_data.h"



#include "platform/time_stamp.h"
#include "service/service.h"

extern "C" {

nax_shared_data_entry _GlobRODataTable[nax::rng::kSharedDataCapacity] = {};
int32_t _GlobRODataTableCount = 0;
int32_t _STO_GLOB_RO_DATA_TABLE_LOCKER_1 = 0;

void _stoGlobRODataTableLock(void) {
    int32_t unlocked = 0;
    while (!__atomic_compare_exchange_n(&_STO_GLOB_RO_DATA_TABLE_LOCKER_1, &unlocked, 1, false, __ATOMIC_ACQUIRE,
                                        __ATOMIC_RELAXED)) {
        unlocked = 0;
    }
}

void _stoGlobRODataTableUnLock(void) { __atomic_store_n(&_STO_GLOB_RO_DATA_TABLE_LOCKER_1, 0, __ATOMIC_RELEASE); }

}  // extern "C"

namespace nax::rng {
namespace {

class TableLock {
public:
    TableLock() { _stoGlobRODataTableLock(); }
    ~TableLock() { _stoGlobRODataTableUnLock(); }
    TableLock(const TableLock&) = delete;
    TableLock& operator=(const TableLock&) = delete;
};

// The functions below are called under the lock.

SharedDataEntry* find_entry(const uint64_t* glob_id, int from = 0) {
    for (int i = from; i < _GlobRODataTableCount; ++i) {
        SharedDataEntry& entry = _GlobRODataTable[i];
        if (entry.Id0 == glob_id[0] && entry.Id1 == glob_id[1]) return &entry;
    }
    return nullptr;
}

SharedDataEntry* append_entry(const uint64_t* glob_id, void* data, int32_t size) {
    SharedDataEntry& entry = _GlobRODataTable[_GlobRODataTableCount++];
    entry = {glob_id[0], glob_id[1], 1, size, data};
    return &entry;
}

bool fits(const SharedDataEntry& entry, const Chunk& node, UnknownSize unknown) {
    return entry.Size == node.Size || (entry.Size == 0 && unknown == UnknownSize::kTrusted);
}

void refer_to(SharedDataEntry& entry, Chunk* node) {
    ++entry.RefCount;
    node->Data = entry.Data;
}

// The last entry moves into the freed slot: the table's order has no meaning.
void drop_entry(SharedDataEntry* entry) {
    if (entry->Data != nullptr) nax_serv_deallocate(entry->Data);
    *entry = _GlobRODataTable[--_GlobRODataTableCount];
    _GlobRODataTable[_GlobRODataTableCount] = {};
}

}  // namespace

void share_node_data(Chunk* node, UnknownSize unknown) {
    const TableLock lock;
    SharedDataEntry* const entry = find_entry(node->GlobId);
    if (entry != nullptr && fits(*entry, *node, unknown)) {
        refer_to(*entry, node);
    } else if (entry == nullptr && _GlobRODataTableCount < kSharedDataLimitForChunks) {
        append_entry(node->GlobId, node->Data, node->Size);
    } else {
        node->GlobId[0] = node->GlobId[1] = 0;
    }
}

void release_node(Chunk* node) {
    const bool shared =
        has_identity(node->GlobId) && __stoUnregisterGlobRODataReference(node->GlobId) == STO_STATUS_OK;
    if (!shared && node->Data != nullptr) nax_serv_deallocate(node->Data);
    nax_serv_deallocate(node);
}

}  // namespace nax::rng

using namespace nax::rng;

extern "C" {

int __stoFindGlobRODataTableEntry(nax_shared_data_entry** entry, const uint64_t* glob_id) {
    if (glob_id == nullptr || !has_identity(glob_id)) return STO_STATUS_GLOB_NOT_FOUND;
    const TableLock lock;
    SharedDataEntry* const found = find_entry(glob_id);
    if (found == nullptr) return STO_STATUS_GLOB_NOT_FOUND;
    *entry = found;
    return STO_STATUS_OK;
}

int __stoCreateGlobRODataTableEntry(nax_shared_data_entry** entry, const uint64_t* glob_id, void* data) {
    const TableLock lock;
    if (_GlobRODataTableCount >= kSharedDataCapacity) return STO_STATUS_GLOB_FULL;
    *entry = append_entry(glob_id, data, 0);
    return STO_STATUS_OK;
}

int __stoRegisterGlobRODataReference(nax_stream_chunk* node, const uint64_t* glob_id) {
    const TableLock lock;
    SharedDataEntry* const entry = find_entry(glob_id);
    if (entry == nullptr || !fits(*entry, *node, UnknownSize::kTrusted)) return STO_STATUS_GLOB_NOT_FOUND;
    refer_to(*entry, node);
    return STO_STATUS_OK;
}

int __stoUnregisterGlobRODataReference(const uint64_t* glob_id) {
    const TableLock lock;
    int status = STO_STATUS_GLOB_NOT_FOUND;
    int index = 0;
    while (SharedDataEntry* const entry = find_entry(glob_id, index)) {
        status = STO_STATUS_OK;
        index = static_cast<int>(entry - _GlobRODataTable);
        // A dropped entry's slot holds another one now, which is looked at in turn.
        if (--entry->RefCount == 0) {
            drop_entry(entry);
        } else {
            ++index;
        }
    }
    return status;
}

int __stoGenerateNewGlobalRODataTableEntryId(uint64_t* glob_id, uint64_t value) {
    glob_id[0] = nax::platform::time_stamp();
    glob_id[1] = value;
    if (!has_identity(glob_id)) return STO_STATUS_OK;
    SharedDataEntry* entry = nullptr;
    while (__stoFindGlobRODataTableEntry(&entry, glob_id) == STO_STATUS_OK) glob_id[0] = nax::platform::time_stamp();
    return STO_STATUS_OK;
}

}  // extern "C"
