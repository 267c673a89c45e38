// Streams in files and memory: what comes back, what is refused, what leaks (nothing).
#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "rng/generators/mcg_lanes.h"
#include "service/service.h"
#include "tests/lib/failing_service.h"
#include "tests/rng/test_stream.h"

namespace nax::testing {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr int kChunkCountAt = 12, kBrngAt = 16, kHeaderSizeAt = 4, kPayloadSizeAt = 8, kHeader = 20, kRecordHead = 24;

// A file in memory, under a name.
class TemporaryFile {
public:
    TemporaryFile() : descriptor_(memfd_create("stream", 0)), name_("/proc/self/fd/" + std::to_string(descriptor_)) {}
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() { close(descriptor_); }
    const char* name() const { return name_.c_str(); }
    void write(const Bytes& bytes, size_t count) const {
        ASSERT_EQ(ftruncate(descriptor_, 0), 0);
        ASSERT_EQ(pwrite(descriptor_, bytes.data(), count, 0), static_cast<ssize_t>(count));
    }
    Bytes read() const {
        Bytes bytes(1 << 20);
        const ssize_t count = pread(descriptor_, bytes.data(), bytes.size(), 0);
        bytes.resize(static_cast<size_t>(std::max<ssize_t>(count, 0)));
        return bytes;
    }

private:
    int descriptor_;
    std::string name_;
};

Bytes image_of(const nax_stream* stream) {
    Bytes image(static_cast<size_t>(__stoGetStreamSize(stream)));
    EXPECT_EQ(__stoSaveStreamM(stream, image.data()), STO_STATUS_OK);
    return image;
}

template <class Field>
Field field(const Bytes& image, size_t at) {
    Field value;
    std::memcpy(&value, image.data() + at, sizeof(Field));
    return value;
}
template <class Field>
void set_field(Bytes& image, size_t at, Field value) {
    std::memcpy(image.data() + at, &value, sizeof(Field));
}

int load_file(nax_stream** stream, const TemporaryFile& file, const Bytes& bytes, size_t count) {
    file.write(bytes, count);
    return __stoLoadStreamF(stream, file.name(), -1);
}
int load_file(const TemporaryFile& file, const Bytes& bytes) {
    nax_stream* stream = nullptr;
    const int status = load_file(&stream, file, bytes, bytes.size());
    if (stream != nullptr) __stoDeleteStream(&stream);
    return status;
}

// Streams of every generator that can be made from a seed, a little way in.
std::vector<TestStream> one_of_each() {
    std::vector<TestStream> streams;
    for (int row = 0; row < 16; ++row) {
        nax_stream* stream = nullptr;
        const uint32_t seed = 3;
        const int status = __stoNewStreamEx(&stream, (row + 1) << 20, 1, &seed);
        if (stream == nullptr) continue;
        TestStream owned(stream);
        if (status != STO_STATUS_OK || row == 13) continue;      // the hardware source never repeats
        draw_doubles(owned, 5);
        streams.push_back(std::move(owned));
    }
    EXPECT_GE(streams.size(), std::size(kLinear));
    return streams;
}

TEST(Persistence, FilesAndImagesContinueIdentically) {
    const TemporaryFile file;
    for (const TestStream& origin : one_of_each()) {
        SCOPED_TRACE(::testing::Message() << std::hex << __stoGetStreamStateBrng(origin));
        for (int offset = 0; offset < 36; offset += 5) {
            ASSERT_EQ(__stoSaveStreamF(origin, file.name(), -1), STO_STATUS_OK);
            const Bytes image = image_of(origin);
            ASSERT_EQ(file.read(), image);      // one format
            nax_stream *from_file = nullptr, *from_memory = nullptr;
            ASSERT_EQ(__stoLoadStreamF(&from_file, file.name(), -1), STO_STATUS_OK);
            ASSERT_EQ(__stoLoadStreamM(&from_memory, image.data()), STO_STATUS_OK);
            const TestStream a(from_file), b(from_memory), probe = origin.copy();
            ASSERT_EQ(payload_bytes(a), payload_bytes(origin));
            const auto expected = draw_doubles(probe, 23);
            ASSERT_EQ(draw_doubles(a, 23), expected);
            ASSERT_EQ(draw_doubles(b, 23), expected);
            ASSERT_EQ(draw_words(a, 300), draw_words(probe, 300));
            draw_singles(origin, 5);
        }
    }
}

TEST(Persistence, TheImageIsLaidOutAsDocumented) {
    const TestStream stream(NAX_BRNG_MCG31, {5});
    const uint64_t id[2] = {0x1122334455667788, 0x99};
    unsigned char* const data = static_cast<unsigned char*>(nax_serv_allocate(8, 128));
    std::memcpy(data, "chunkdat", 8);
    ASSERT_EQ(__stoAddChunk(stream, 200, id, data, 8), STO_STATUS_OK);
    const Bytes image = image_of(stream);
    ASSERT_EQ(image.size(), 436u + kRecordHead + 8u);
    EXPECT_EQ(field<uint32_t>(image, 0), 0x474E5202u);
    EXPECT_EQ(field<uint32_t>(image, kHeaderSizeAt), 20u);
    EXPECT_EQ(field<uint32_t>(image, kPayloadSizeAt), 8u);
    EXPECT_EQ(field<uint32_t>(image, kChunkCountAt), 2u);
    EXPECT_EQ(field<int32_t>(image, kBrngAt), NAX_BRNG_MCG31);
    EXPECT_EQ(field<uint32_t>(image, kHeader), 5u);
    EXPECT_EQ(field<uint32_t>(image, kHeader + 4), 1132489760u);
    const size_t record = kHeader + 8;
    EXPECT_EQ(field<uint32_t>(image, record), 200u);
    EXPECT_EQ(field<uint64_t>(image, record + 4), id[0]);
    EXPECT_EQ(field<uint64_t>(image, record + 12), id[1]);
    EXPECT_EQ(field<int32_t>(image, record + 20), 8);
    EXPECT_EQ(std::memcmp(&image[record + kRecordHead], "chunkdat", 8), 0);
    EXPECT_EQ(field<uint32_t>(image, record + kRecordHead + 8), 14u);
}

TEST(Persistence, SharedChunksMeetTheirLivingBlock) {
    const long live = live_blocks();
    Bytes image;
    const uint64_t id[2] = {41, 42};
    {
        const TestStream stream(NAX_BRNG_WH, {5});
        void* const data = nax_serv_allocate(64, 128);
        std::memset(data, 1, 64);
        ASSERT_EQ(__stoAddChunk(stream, 9, id, data, 64), STO_STATUS_OK);
        image = image_of(stream);
        nax_stream* loaded = nullptr;
        ASSERT_EQ(__stoLoadStreamM(&loaded, image.data()), STO_STATUS_OK);
        const TestStream owner(loaded);
        EXPECT_EQ(__stoSearchChunk(loaded, 9), data);
    }
    EXPECT_EQ(live_blocks(), live);
    // After the last owner is gone the identity is entered anew.
    nax_stream* loaded = nullptr;
    ASSERT_EQ(__stoLoadStreamM(&loaded, image.data()), STO_STATUS_OK);
    nax_shared_data_entry* entry = nullptr;
    ASSERT_EQ(__stoFindGlobRODataTableEntry(&entry, id), STO_STATUS_OK);
    EXPECT_EQ(entry->RefCount, 1);
    __stoDeleteStream(&loaded);
    EXPECT_EQ(live_blocks(), live);
}

TEST(Persistence, LanesAreRebuiltFromTheFirstOne) {
    for (const int brng : {NAX_BRNG_MCG31, NAX_BRNG_MCG59}) {
        const TestStream stream(brng, {5});
        ASSERT_EQ(__stoLeapfrogStream(stream, 2, 7), STO_STATUS_OK);
        draw_doubles(stream, 13);
        draw_words(stream, 4);       // the payload runs ahead of the lanes
        Bytes image = image_of(stream);
        const size_t data = static_cast<size_t>(kHeader + properties(stream).StreamStateSize - 16 + kRecordHead);
        for (size_t at = data + offsetof(rng::LaneBlock, lanes) + 8; at < data + sizeof(rng::LaneBlock); ++at) image[at] = 0xA5;
        nax_stream* loaded = nullptr;
        ASSERT_EQ(__stoLoadStreamM(&loaded, image.data()), STO_STATUS_OK);
        const TestStream owner(loaded), probe = stream.copy();
        EXPECT_EQ(draw_doubles(loaded, 100), draw_doubles(probe, 100));
        // A lane block of the other generator, or of another size, is no layout that this one knows.
        set_field(image, data, field<uint32_t>(image, data) ^ 1u);
        EXPECT_EQ(__stoLoadStreamM(&loaded, image.data()), STO_STATUS_FILE_READ);
        set_field(image, data, field<uint32_t>(image, data) ^ 1u);
        set_field(image, data - 4, 376);
        EXPECT_EQ(__stoLoadStreamM(&loaded, image.data()), STO_STATUS_FILE_READ);
    }
}

// The image of a stream with further chunk records in front of its own.
struct Record {
    uint32_t id;
    uint64_t identity[2];
    Bytes data;
};
Bytes with_records(Bytes image, const std::vector<Record>& records) {
    size_t at = kHeader + field<uint32_t>(image, kPayloadSizeAt);
    set_field(image, kChunkCountAt, field<uint32_t>(image, kChunkCountAt) + static_cast<uint32_t>(records.size()));
    for (const Record& record : records) {
        Bytes bytes(kRecordHead);
        set_field(bytes, 0, record.id);
        set_field(bytes, 4, record.identity[0]);
        set_field(bytes, 12, record.identity[1]);
        set_field(bytes, 20, static_cast<uint32_t>(record.data.size()));
        bytes.insert(bytes.end(), record.data.begin(), record.data.end());
        image.insert(image.begin() + static_cast<long>(at), bytes.begin(), bytes.end());
        at += bytes.size();
    }
    return image;
}

std::vector<const nax_stream_chunk*> chunks_of(const nax_stream* stream) {
    std::vector<const nax_stream_chunk*> chunks;
    for (const nax_stream_chunk* chunk = stream->chunks; chunk != nullptr; chunk = chunk->Next) chunks.push_back(chunk);
    return chunks;
}

// Whatever identities an image claims: chunks that the library writes to are private, others share with their own size only.
TEST(Persistence, IdentitiesNeverJoinBlocksOfDifferentSizes) {
    const long live = live_blocks();
    const int32_t entries = _GlobRODataTableCount;
    for (const uint32_t id : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 10u, 13u, 14u, 500u}) {
        for (const size_t other : {size_t{0}, size_t{4}, size_t{4096}}) {
            const TestStream wh(NAX_BRNG_WH, {5});
            const int fixed = rng::chunk_size(static_cast<rng::ChunkId>(id));
            Bytes data(fixed != 0 ? static_cast<size_t>(fixed) : 640, 0x11);
            const Record joined = {id, {7, 7}, data};
            const Bytes image = with_records(image_of(wh), {{500, {7, 7}, Bytes(other, 0x22)}, joined, joined});
            nax_stream* loaded = nullptr;
            ASSERT_EQ(__stoLoadStreamM(&loaded, image.data()), STO_STATUS_OK) << id;
            const TestStream owner(loaded), copied = owner.copy();
            for (const nax_stream* stream : {static_cast<nax_stream*>(owner), static_cast<nax_stream*>(copied)}) {
                const auto chunks = chunks_of(stream);
                ASSERT_EQ(chunks.size(), 3u);
                for (const nax_stream_chunk* chunk : chunks) {
                    const size_t size = static_cast<size_t>(chunk->Size);
                    const unsigned char* const bytes = static_cast<unsigned char*>(chunk->Data);
                    EXPECT_EQ(Bytes(bytes, bytes + size), chunk->Size == static_cast<int>(other) ? Bytes(other, 0x22) : data);
                }
            }
            // Private ones are at different places.
            const auto loaded_chunks = chunks_of(owner);
            EXPECT_NE(loaded_chunks[0]->Data, loaded_chunks[1]->Data) << id;
        }
    }
    EXPECT_EQ(live_blocks(), live);
    EXPECT_EQ(_GlobRODataTableCount, entries);
}

TEST(Persistence, ReadersShareWithEntriesOfKnownSizeOnly) {
    const TestStream wh(NAX_BRNG_WH, {5}), holder(NAX_BRNG_WH, {5});
    void* const unsized = nax_serv_allocate(8, 128);
    const uint64_t unsized_id[2] = {8, 1};
    nax_shared_data_entry* entry = nullptr;
    ASSERT_EQ(__stoCreateGlobRODataTableEntry(&entry, unsized_id, unsized), STO_STATUS_OK);
    void* const sized = nax_serv_allocate(64, 128);
    std::memset(sized, 0, 64);
    const uint64_t sized_id[2] = {8, 2};
    ASSERT_EQ(__stoAddChunk(holder, 501, sized_id, sized, 64), STO_STATUS_OK);
    const Bytes image = with_records(image_of(wh), {{500, {8, 1}, Bytes(8)}, {500, {8, 2}, Bytes(64)}, {9, {8, 2}, Bytes(64)}});
    nax_stream* loaded = nullptr;
    ASSERT_EQ(__stoLoadStreamM(&loaded, image.data()), STO_STATUS_OK);
    {
        const TestStream owner(loaded);
        const auto chunks = chunks_of(owner);  // the last record is the head
        EXPECT_EQ(chunks[0]->Data, sized);
        EXPECT_EQ(chunks[1]->Data, sized);
        EXPECT_NE(chunks[2]->Data, unsized);
    }
    // What is added by hand is trusted where the size is not known, and not where it is another one.
    void* const mine = nax_serv_allocate(16, 128);
    ASSERT_EQ(__stoAddChunk(holder, 502, sized_id, mine, 16), STO_STATUS_OK);
    EXPECT_EQ(__stoSearchChunk(holder, 502), mine);
    EXPECT_EQ(__stoUnregisterGlobRODataReference(unsized_id), STO_STATUS_OK);
}

int load_status(const Bytes& image) {
    nax_stream* loaded = nullptr;
    const int status = __stoLoadStreamM(&loaded, image.data());
    if (loaded != nullptr) {
        // What is accepted works, as a copy too: there the chunks stand in the opposite order.
        const TestStream owner(loaded), copied = owner.copy();
        for (const nax_stream* stream : {static_cast<nax_stream*>(owner), static_cast<nax_stream*>(copied)}) {
            double r[700];
            EXPECT_EQ(properties(stream).dBRng(const_cast<nax_stream*>(stream), 700, r, 0, 1), STO_STATUS_OK);
            EXPECT_EQ(__stoSkipAheadStream(const_cast<nax_stream*>(stream), 1000), STO_STATUS_OK);
        }
    }
    return status;
}

// Direction tables and working blocks in chunks must hold what the dimension needs; a stream within the payload's
// dimensions that has them is of the user form too.
TEST(Persistence, QuasiRandomChunksMustHoldTheirDimension) {
    const auto direct = [](uint32_t dimension) {
        std::vector<uint32_t> params = {dimension, 1, 4};
        for (uint32_t i = 0; i < dimension * 32; ++i) params.push_back(0x80000000u >> i % 32);
        return params;
    };
    for (const int brng : {NAX_BRNG_SOBOL, NAX_BRNG_NIEDERREITER}) {
        for (const uint32_t dimension : {41u, 64u, 319u, 320u, 321u}) {
            if (brng == NAX_BRNG_NIEDERREITER && dimension < 319) continue;
            const TestStream stream(brng, direct(dimension));
            ASSERT_EQ(stream.status(), STO_STATUS_OK);
            const Bytes image = image_of(stream);
            EXPECT_EQ(load_status(image), STO_STATUS_OK);
            // One dimension more than the chunks have; in blocks of 16 that is a block more, or none.
            Bytes wider = image;
            set_field(wider, kHeader + 4, (dimension + 15) / 16 * 16 + 1);
            EXPECT_EQ(load_status(wider), STO_STATUS_BAD_IMAGE) << brng << " " << dimension;
            // A second chunk of that id, too short.
            for (const uint32_t id : {9u, 10u, 13u}) {
                const bool own = (id == 10) == (brng == NAX_BRNG_NIEDERREITER);
                const Bytes doubled = with_records(image, {{id, {0, 0}, Bytes(dimension * 132 - 4)}});
                EXPECT_EQ(load_status(doubled), own ? STO_STATUS_BAD_IMAGE : STO_STATUS_OK) << brng << " " << id;
            }
        }
        const uint32_t most = brng == NAX_BRNG_SOBOL ? 40 : 318;
        for (const uint32_t dimension : {1u, 20u, most}) {
            const Bytes image = image_of(TestStream(brng, {dimension}));
            const size_t work = (dimension + 15) / 16 * 16 * 132, table = dimension * 132;
            for (const size_t missing : {size_t{0}, size_t{4}, size_t{128}}) {
                const Bytes user = brng == NAX_BRNG_SOBOL
                                       ? with_records(image, {{9, {0, 0}, Bytes(table)}, {13, {0, 0}, Bytes(work - missing)}})
                                       : with_records(image, {{10, {0, 0}, Bytes(table - missing)}});
                EXPECT_EQ(load_status(user), missing == 0 ? STO_STATUS_OK : STO_STATUS_BAD_IMAGE) << brng << " " << missing;
            }
            Bytes more = image;
            set_field(more, kHeader + 4, most + 1);
            EXPECT_EQ(load_status(more), STO_STATUS_BAD_IMAGE);
        }
    }
}

// Streams of registered generators whose state is smaller than the header have no payload.
TEST(Persistence, RegisteredGeneratorsMayHaveNoPayload) {
    nax_brng_properties row = properties(TestStream(NAX_BRNG_WH, {5}));
    row.InitStream = [](int, nax_stream*, int, const void*) -> int { return STO_STATUS_OK; };
    const int32_t registered = NRegBrngsNew;
    for (const int size : {0, 1, 15, 16, 17, 40}) {
        row.StreamStateSize = size;
        const int brng = __stoRegisterBrng(&row);
        ASSERT_GT(brng, 0);
        const TestStream stream(brng, {1});
        const size_t payload = size > 16 ? static_cast<size_t>(size) - 16 : 0;
        const Bytes image = image_of(stream);
        EXPECT_EQ(image.size(), kHeader + payload);
        nax_stream* loaded = nullptr;
        ASSERT_EQ(__stoLoadStreamM(&loaded, image.data()), STO_STATUS_OK) << size;
        EXPECT_EQ(image_of(TestStream(loaded)), image);
        const TemporaryFile file;
        ASSERT_EQ(__stoSaveStreamF(stream, file.name(), -1), STO_STATUS_OK);
        EXPECT_EQ(file.read(), image);
        EXPECT_EQ(__stoCopyStreamState(stream.copy(), stream), STO_STATUS_OK);
    }
    NRegBrngsNew = registered;
}

TEST(Persistence, HeaderFaultsHaveTheirStatus) {
    const TestStream stream(NAX_BRNG_WH + 3, {5});
    const Bytes good = image_of(stream);
    const struct {
        const char* what;
        size_t at;
        uint32_t value;
        int file_status, memory_status;
    } cases[] = {
        {"no magic", 0, 0x12345602, STO_STATUS_BAD_FILE, STO_STATUS_BAD_IMAGE},
        {"no magic, old layout", 0, 0x12345601, STO_STATUS_BAD_FILE, STO_STATUS_BAD_IMAGE},
        {"version 3", 0, 0x474E5203, STO_STATUS_FILE_TOO_NEW, STO_STATUS_BAD_IMAGE},
        {"version 3 in the last byte", 0, 0x03474E52, STO_STATUS_FILE_TOO_NEW, STO_STATUS_BAD_IMAGE},
        {"header too short", kHeaderSizeAt, 19, STO_STATUS_BAD_FILE, STO_STATUS_BAD_IMAGE},
        {"header size of 16 bits too short", kHeaderSizeAt, 0x10013, STO_STATUS_BAD_FILE, STO_STATUS_BAD_IMAGE},
        {"payload too long", kPayloadSizeAt, 36, STO_STATUS_BAD_FILE, STO_STATUS_BAD_IMAGE},
        {"payload negative", kPayloadSizeAt, 0xFFFFFFF0, STO_STATUS_BAD_FILE, STO_STATUS_BAD_IMAGE},
        {"another generator", kBrngAt, NAX_BRNG_R250, STO_STATUS_BAD_FILE, STO_STATUS_BAD_IMAGE},
        {"no such sub-stream", kBrngAt, NAX_BRNG_WH + 273, STO_STATUS_BAD_FILE, STO_STATUS_BAD_IMAGE},
        {"no such generator", kBrngAt, 0x7000000, STO_STATUS_BAD_FILE, STO_STATUS_BAD_IMAGE},
        {"negative generator", kBrngAt, 0xFFFFFFF0, STO_STATUS_BAD_FILE, STO_STATUS_BAD_IMAGE},
    };
    const TemporaryFile file;
    const long live = live_blocks();
    for (const auto& c : cases) {
        Bytes bad = good;
        set_field(bad, c.at, c.value);
        EXPECT_EQ(load_file(file, bad), c.file_status) << c.what;
        nax_stream* loaded = stream;
        EXPECT_EQ(__stoLoadStreamM(&loaded, bad.data()), c.memory_status) << c.what;
        EXPECT_EQ(loaded, nullptr) << c.what;
    }
    // An empty row of the older table with the payload size that it would have.
    Bytes empty_row = good;
    set_field(empty_row, kBrngAt, 279u);
    for (const uint32_t payload : {0xFFFFFFF0u, 0u}) {
        set_field(empty_row, kPayloadSizeAt, payload);
        EXPECT_EQ(load_file(file, empty_row), STO_STATUS_BAD_FILE);
    }
    EXPECT_EQ(live_blocks(), live);
}

TEST(Persistence, LongerHeadersAreSkipped) {
    const TestStream stream(NAX_BRNG_WH + 3, {5});
    Bytes longer = image_of(stream);
    set_field(longer, kHeaderSizeAt, 28u);
    longer.insert(longer.begin() + kHeader, 8, 0xEE);
    const TemporaryFile file;
    nax_stream *from_file = nullptr, *from_memory = nullptr;
    ASSERT_EQ(load_file(&from_file, file, longer, longer.size()), STO_STATUS_OK);
    ASSERT_EQ(__stoLoadStreamM(&from_memory, longer.data()), STO_STATUS_OK);
    const TestStream a(from_file), b(from_memory);
    EXPECT_EQ(payload_bytes(a), payload_bytes(stream));
    EXPECT_EQ(payload_bytes(b), payload_bytes(stream));
}

// The image of a stream in one of the older forms: 16 bytes of header, records without identity in version 0.
Bytes old_image(const nax_stream* stream, uint32_t magic) {
    const Bytes image = image_of(stream);
    const uint32_t payload = field<uint32_t>(image, kPayloadSizeAt);
    Bytes old(16, 0xCC);
    set_field(old, 0, magic);
    set_field(old, 6, static_cast<uint16_t>(payload));
    set_field(old, 8, static_cast<uint16_t>(field<uint32_t>(image, kChunkCountAt)));
    set_field(old, 12, field<int32_t>(image, kBrngAt));
    old.insert(old.end(), image.begin() + kHeader, image.begin() + kHeader + payload);
    size_t at = kHeader + payload;
    while (at < image.size()) {
        const size_t size = field<uint32_t>(image, at + 20);
        const bool identity = (magic & 0xFF) != 0;
        const auto start = image.begin() + static_cast<long>(at);
        old.insert(old.end(), start, start + (identity ? 20 : 4));
        old.insert(old.end(), start + 20, start + kRecordHead + static_cast<long>(size));
        at += kRecordHead + size;
    }
    return old;
}

TEST(Persistence, OlderFormsLoad) {
    const TemporaryFile file;
    for (const uint32_t magic : {0x474E5200u, 0x474E5201u}) {
        const TestStream stream(NAX_BRNG_MCG59, {5, 6});
        draw_doubles(stream, 9);
        nax_stream* loaded = nullptr;
        const Bytes old = old_image(stream, magic);
        ASSERT_EQ(load_file(&loaded, file, old, old.size()), STO_STATUS_OK) << std::hex << magic;
        EXPECT_EQ(draw_doubles(TestStream(loaded), 40), draw_doubles(stream.copy(), 40));
        ASSERT_EQ(__stoLoadStreamM(&loaded, old.data()), STO_STATUS_OK);
        EXPECT_EQ(draw_doubles(TestStream(loaded), 40), draw_doubles(stream.copy(), 40));
    }
    // With the magic in the first three bytes its 'R' stands where the chunks' version is: no chunks can be read.
    for (const uint32_t magic : {0x00474E52u, 0x01474E52u, 0x02474E52u}) {
        const TestStream without(NAX_BRNG_WH, {5, 6}), with(NAX_BRNG_MCG59, {5, 6});
        nax_stream* loaded = nullptr;
        const Bytes bare = old_image(without, magic), chunked = old_image(with, magic);
        ASSERT_EQ(load_file(&loaded, file, bare, bare.size()), STO_STATUS_OK) << std::hex << magic;
        EXPECT_EQ(payload_bytes(TestStream(loaded)), payload_bytes(without));
        EXPECT_EQ(load_file(file, chunked), STO_STATUS_FILE_READ);
    }
}

TEST(Persistence, NamesMayLackTheirTerminator) {
    const TemporaryFile file;
    const TestStream stream(NAX_BRNG_WH, {5});
    const std::string padded = std::string(file.name()) + "garbage";
    const int length = static_cast<int>(std::strlen(file.name()));
    ASSERT_EQ(__stoSaveStreamF(stream, padded.c_str(), length), STO_STATUS_OK);
    nax_stream* loaded = nullptr;
    ASSERT_EQ(__stoLoadStreamF(&loaded, padded.c_str(), length), STO_STATUS_OK);
    EXPECT_EQ(payload_bytes(TestStream(loaded)), payload_bytes(stream));
    const FailAllocation fail(0);
    EXPECT_EQ(__stoSaveStreamF(stream, padded.c_str(), length), STO_STATUS_NO_MEMORY);
}

TEST(Persistence, FilesThatCantBeOpenedOrWritten) {
    const TestStream stream(NAX_BRNG_R250, {5});
    nax_stream* loaded = stream;
    EXPECT_EQ(__stoSaveStreamF(stream, "/nonexistent/stream", -1), STO_STATUS_FILE_OPEN);
    EXPECT_EQ(__stoLoadStreamF(&loaded, "/nonexistent/stream", -1), STO_STATUS_FILE_OPEN);
    EXPECT_EQ(loaded, nullptr);
    // A full device: what the buffer holds is lost when the file is closed, whatever the writes said.
    EXPECT_EQ(__stoSaveStreamF(stream, "/dev/full", -1), STO_STATUS_FILE_CLOSE);
    std::FILE* const full = std::fopen("/dev/full", "wb");
    ASSERT_NE(full, nullptr);
    std::setvbuf(full, nullptr, _IONBF, 0);
    EXPECT_EQ(__stoSaveToFile("abcd", 4, 1, full), STO_STATUS_FILE_WRITE);
    char byte;
    EXPECT_EQ(__stoLoadFromFile(&byte, 1, 1, full), STO_STATUS_FILE_READ);
    std::fclose(full);
}

TEST(Persistence, EveryTruncationIsAShortRead) {
    const TemporaryFile file;
    for (const int brng : {NAX_BRNG_MCG31, NAX_BRNG_MRG32K3A}) {
        const TestStream stream(brng, {5});
        const Bytes image = image_of(stream);
        const long live = live_blocks();
        for (size_t count = 0; count < image.size(); ++count) {
            nax_stream* loaded = stream;
            ASSERT_EQ(load_file(&loaded, file, image, count), STO_STATUS_FILE_READ) << count;
            ASSERT_EQ(loaded, nullptr);
        }
        EXPECT_EQ(live_blocks(), live);
    }
}

// Whatever a flipped bit means, the loader answers with a stream that works or with a status, and keeps nothing.
void flip_bits(const TemporaryFile& file, const TestStream& stream, size_t from, size_t to, int& refused) {
    const Bytes image = image_of(stream);
    for (size_t bit = 8 * from; bit < 8 * std::min(to, image.size()); ++bit) {
        Bytes flipped = image;
        flipped[bit / 8] = static_cast<unsigned char>(flipped[bit / 8] ^ (1u << bit % 8));
        nax_stream* loaded = nullptr;
        const int status = load_file(&loaded, file, flipped, flipped.size());
        ASSERT_EQ(loaded != nullptr, status == STO_STATUS_OK) << bit;
        if (bit < 8 * 4) {
            EXPECT_NE(status, STO_STATUS_OK) << bit;      // the magic has no spare bit
        }
        if (loaded == nullptr) {
            ++refused;
            continue;
        }
        // A chunk that was renamed is missing, a quasi-random counter at its end; nothing worse may come of it.
        double r[40];
        const int drawn = properties(loaded).dBRng(loaded, 40, r, 0, 1);
        ASSERT_TRUE(drawn == STO_STATUS_OK || drawn == STO_STATUS_NO_MEMORY || drawn == STO_STATUS_QRNG_PERIOD_ELAPSED) << drawn;
        __stoDeleteStream(&loaded);
    }
}

TEST(Persistence, FlippedBitsNeverLeakOrCrash) {
    const TemporaryFile file;
    const TestStream whole(NAX_BRNG_MCG59, {5});
    const long live = live_blocks();
    int refused = 0;
    flip_bits(file, whole, 0, SIZE_MAX, refused);
    EXPECT_GT(refused, 100);
    EXPECT_EQ(live_blocks(), live);
    // Of the long states, the positions behind the words and the first words.
    for (const TestStream& stream : one_of_each()) {
        const size_t end = static_cast<size_t>(kHeader + properties(stream).StreamStateSize - 16);
        flip_bits(file, stream, end - std::min<size_t>(end, 32), end, refused);
        flip_bits(file, stream, kHeader, kHeader + 48, refused);
    }
}

TEST(Persistence, PositionsOutsideTheirArrayAreRefused) {
    const struct { int brng; size_t at; uint32_t good, bad; } cases[] = {
        {NAX_BRNG_R250, kHeader + 1000, 249, 250}, {NAX_BRNG_R250, kHeader + 1004, 0, 0xFFFFFFFF}, {1, kHeader + 1000, 249, 250}};
    const TemporaryFile file;
    for (const auto& c : cases) {
        Bytes image = image_of(TestStream(c.brng, {5}));
        set_field(image, c.at, c.good);
        EXPECT_EQ(load_file(file, image), STO_STATUS_OK);
        set_field(image, c.at, c.bad);
        EXPECT_EQ(load_file(file, image), STO_STATUS_BAD_FILE);
        nax_stream* loaded = nullptr;
        EXPECT_EQ(__stoLoadStreamM(&loaded, image.data()), STO_STATUS_BAD_IMAGE);
        EXPECT_EQ(loaded, nullptr);
    }
}

TEST(Persistence, LoadingFailsWithoutLeaks) {
    const TestStream stream(NAX_BRNG_MCG31, {5});
    const Bytes image = image_of(stream);
    const int failures = for_each_failing_allocation(
        [&] {
            nax_stream* loaded = nullptr;
            const int status = __stoLoadStreamM(&loaded, image.data());
            EXPECT_EQ(loaded == nullptr, status != STO_STATUS_OK);
            if (loaded != nullptr) __stoDeleteStream(&loaded);
            return status;
        },
        int{STO_STATUS_NO_MEMORY}, int{STO_STATUS_OK});
    EXPECT_EQ(failures, 3);      // stream, data, node
}

TEST(Persistence, TheCountOfChunksIsReadInSixteenBits) {
    const TestStream stream(NAX_BRNG_MCG31, {5});
    Bytes image = image_of(stream);
    set_field(image, kChunkCountAt, 0x70001u);
    nax_stream* loaded = nullptr;
    ASSERT_EQ(__stoLoadStreamM(&loaded, image.data()), STO_STATUS_OK);
    EXPECT_EQ(__stoGetNumChunks(TestStream(loaded)), 1);
}

}  // namespace
}  // namespace nax::testing
