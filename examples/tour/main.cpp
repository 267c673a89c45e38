// tour [DATA_DIRECTORY [OUTPUT_DIRECTORY]]: what the library does, on real data.
#include <cstdio>

#include "examples/tour/tour.h"

int main(int argc, char** argv) {
    const char* data = argc > 1 ? argv[1] : "examples/data";
    const char* output = argc > 2 ? argv[2] : ".";
    std::puts("== Vectors");
    if (!tour::show_vectors(data)) {
        std::fprintf(stderr, "no data in %s\n", data);
        return 1;
    }
    std::puts("\n== Accuracy levels");
    show_levels();
    std::puts("\n== Random streams");
    show_streams(output);
    std::puts("\n== Splines");
    show_splines(data, output);
#ifdef NAX_HAVE_STATISTICS
    std::puts("\n== Summary statistics");
    show_statistics(data, output);
#endif
    std::printf("\nPictures are in %s\n", output);
    return 0;
}
