#include <cerrno>
#include <cstdarg>
#include <cstdio>

#include "service/service.h"

namespace {

constexpr int kStandardError = 1;

struct Message {
    int number;
    int count;
    const char* text;
};

constexpr Message kCatalogue[] = {
#define MESSAGE(number, count, text) {number, count, text},
#include "service/companion/messages.def"
#undef MESSAGE
};

const Message* find_message(int number, int count) {
    for (const Message& message : kCatalogue)
        if (message.number == number) return message.count == count ? &message : nullptr;
    return nullptr;
}

}  // namespace

// A line is made first and written in one piece, so that lines of several threads don't mix.
extern "C" void nax_serv_print(int channel, int number, int count, ...) {
    if (channel != kStandardError) return;
    const int saved_errno = errno;
    char line[512];
    const Message* const message = find_message(number, count);
    if (message == nullptr) {
        std::snprintf(line, sizeof line, "nax: message %d", number);
    } else {
        va_list values;
        va_start(values, count);
        std::vsnprintf(line, sizeof line, message->text, values);
        va_end(values);
    }
    std::fprintf(stderr, "%s\n", line);
    errno = saved_errno;
}
