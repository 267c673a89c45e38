#include <cstdlib>
#include <cstring>

#include "service/service.h"

// A value that does not fit is no value: half a text might say something else.
extern "C" int nax_serv_getenv(const char* name, char* value, int value_size) {
    if (value == nullptr || value_size < 1) return 0;
    value[0] = '\0';
    const char* const found = name == nullptr ? nullptr : std::getenv(name);
    if (found == nullptr) return 0;
    const size_t length = std::strlen(found);
    if (length >= static_cast<size_t>(value_size)) return 0;
    std::memcpy(value, found, length + 1);
    return static_cast<int>(length);
}
