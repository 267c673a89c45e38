// What the loader sees of the libraries: names with versions, what they need, and that loading runs no code of theirs.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "tests/abi/elf_file.h"

namespace nax::testing {
namespace {

ElfFile built(const char* name) { return ElfFile(std::filesystem::path(NAX_BINARY_DIR) / "lib" / name); }

bool is_cpp_runtime_symbol(const std::string& name) {
    if (name == "__cxa_finalize") return false;  // libc's own, for the start files
    for (const char* prefix : {"_Z", "__cxa_", "__gxx_", "_Unwind_", "__dynamic_cast"})
        if (name.rfind(prefix, 0) == 0) return true;
    return false;
}

// Sanitizers and coverage bring their own constructors and libraries.
#if NAX_INSTRUMENTED
#define SKIP_IF_INSTRUMENTED() GTEST_SKIP() << "instrumented build"
#else
#define SKIP_IF_INSTRUMENTED() static_cast<void>(0)
#endif

TEST(DynamicSection, LibrariesNeedOnlyWhatTheyMay) {
    SKIP_IF_INSTRUMENTED();
    const struct {
        const char* library;
        std::set<std::string> allowed;
    } rows[] = {{"libnax.so", {"libc.so.6", "libm.so.6", "libnax_serv.so.0", "libopenblas.so.0", "ld-linux-x86-64.so.2"}},
                {"libnax_serv.so", {"libc.so.6", "ld-linux-x86-64.so.2"}},
                {"libnax_threads.so", {"libc.so.6", "libgomp.so.1", "libpthread.so.0", "ld-linux-x86-64.so.2"}}};
    for (const auto& row : rows) {
        const ElfFile library = built(row.library);
        ASSERT_TRUE(library.valid()) << row.library;
        for (const std::string& needed : library.dynamic_texts(DT_NEEDED))
            EXPECT_TRUE(row.allowed.count(needed) == 1) << row.library << " needs " << needed;
        EXPECT_EQ(library.dynamic_texts(DT_SONAME), std::vector<std::string>{std::string(row.library) + ".0"});
    }
}

TEST(DynamicSection, KernelLibraryRunsNothingAtLoadAndNeedsNoCppRuntime) {
    SKIP_IF_INSTRUMENTED();
    const ElfFile library = built("libnax.so");
    ASSERT_TRUE(library.valid());
    EXPECT_EQ(library.constructors(), 1u) << "only the start files' frame_dummy";
    EXPECT_EQ(library.destructors(), 1u) << "only the start files' __do_global_dtors_aux";
    EXPECT_NE(library.dynamic_value(DT_FLAGS_1) & DF_1_NODELETE, 0u);
    for (const std::string& name : library.undefined_symbols()) EXPECT_FALSE(is_cpp_runtime_symbol(name)) << name;
}

TEST(DynamicSection, ServiceLayerHasOneDestructorAndExportsOnlyItsFunctions) {
    SKIP_IF_INSTRUMENTED();
    const ElfFile library = built("libnax_serv.so");
    ASSERT_TRUE(library.valid());
    EXPECT_EQ(library.constructors(), 1u);
    EXPECT_EQ(library.destructors(), 2u) << "the start files' and the one that runs the cleanup pairs";
    for (const std::string& name : library.undefined_symbols()) EXPECT_FALSE(is_cpp_runtime_symbol(name)) << name;
    const std::vector<std::string> names = library.defined_symbols();
    EXPECT_EQ(names.size(), 15u);
    for (const std::string& name : names) EXPECT_EQ(name.rfind("nax_serv_", 0), 0u) << name;
}

// What the kernels import from the layer is the contract between the two libraries.
TEST(DynamicSection, KernelsImportOnlyTheContractFromTheServiceLayer) {
    const std::set<std::string> contract = {
        "nax_serv_allocate", "nax_serv_deallocate",     "nax_serv_malloc", "nax_serv_free",
        "nax_serv_lock",     "nax_serv_unlock",         "nax_serv_getenv", "nax_serv_core_register_cleanup",
        "nax_serv_memcpy_s", "nax_serv_exit",           "nax_serv_print",  "nax_serv_cpuisqgd",
        "nax_serv_cpuisqfb", "nax_serv_load_thread_fun"};
    for (const std::string& name : built("libnax.so").undefined_symbols())
        EXPECT_TRUE(name.rfind("nax_", 0) != 0 || contract.count(name) == 1) << name;
}

TEST(DynamicSection, TheEnvironmentVariablesNameIsNoTextInTheLibrary) {
    SKIP_IF_INSTRUMENTED();
    EXPECT_FALSE(built("libnax.so").contains("NAX_ARQ_MODE"));
}

}  // namespace
}  // namespace nax::testing
