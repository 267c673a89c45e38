// Streams in files and memory: what comes back, what is refused, what leaks (nothing).
#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "rng/generators/lanes.h"
#include "service/service.h"
#include "tests/lib/failing_service.h"
#include "tests/rng/streams.h"

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
    set_field(empty_row, kPayloadSizeAt, 0xFFFFFFF0u);
    EXPECT_EQ(load_file(file, empty_row), STO_STATUS_BAD_FILE);
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
