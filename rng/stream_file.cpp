// Streams in files.
#include <cstdio>
#include <cstring>

#include "rng/stream_image.h"
#include "service/block.h"

using namespace nax;
using namespace nax::rng;

namespace {

// A file name as fopen wants it: a given length means that the text may lack its terminator.
class FileName {
public:
    FileName(const char* name, int length) : name_(name) {
        if (length < 0) return;
        const std::size_t size = static_cast<std::size_t>(length);
        if (copy_.allocate(size + 1)) {
            std::memcpy(copy_.get(), name, size);
            copy_[size] = '\0';
        }
        name_ = copy_.get();
    }
    const char* get() const { return name_; }

private:
    const char* name_;
    service::Block<char> copy_;
};

int close(std::FILE* file, int status) { return std::fclose(file) == 0 ? status : STO_STATUS_FILE_CLOSE; }

}  // namespace

extern "C" {

int __stoSaveToFile(const void* buffer, size_t size, size_t count, void* file) {
    return std::fwrite(buffer, size, count, static_cast<std::FILE*>(file)) == count ? STO_STATUS_OK : STO_STATUS_FILE_WRITE;
}

int __stoLoadFromFile(void* buffer, size_t size, size_t count, void* file) {
    return std::fread(buffer, size, count, static_cast<std::FILE*>(file)) == count ? STO_STATUS_OK : STO_STATUS_FILE_READ;
}

int __stoSkipLoadingFromFile(long offset, void* file) {
    return std::fseek(static_cast<std::FILE*>(file), offset, SEEK_CUR);
}

int __stoSaveStreamF(const nax_stream* stream, const char* name, int length) {
    const FileName path(name, length);
    if (path.get() == nullptr) return STO_STATUS_NO_MEMORY;
    std::FILE* const file = std::fopen(path.get(), "wb");
    if (file == nullptr) return STO_STATUS_FILE_OPEN;
    return close(file, save_image(stream, __stoSaveToFile, file));
}

int __stoLoadStreamF(nax_stream** stream, const char* name, int length) {
    *stream = nullptr;
    const FileName path(name, length);
    if (path.get() == nullptr) return STO_STATUS_NO_MEMORY;
    std::FILE* const file = std::fopen(path.get(), "rb");
    if (file == nullptr) return STO_STATUS_FILE_OPEN;
    const ImageSource source = {file, 0, __stoSkipLoadingFromFile, STO_STATUS_BAD_FILE, STO_STATUS_FILE_TOO_NEW};
    const int status = close(file, load_image(stream, source));
    if (status < 0 && *stream != nullptr) __stoDeleteStream(stream);
    return status;
}

}  // extern "C"
