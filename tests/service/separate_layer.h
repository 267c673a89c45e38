// A second instance of the service layer: a copy of libnax_serv.so in a folder of its own, where a test decides what
// stands next to it, when it is first used and when it is unloaded.
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace nax::testing {

class SeparateLayer {
public:
    SeparateLayer() {
        std::string pattern = (std::filesystem::temp_directory_path() / "nax_layer_XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
        std::filesystem::copy_file(built("libnax_serv.so.0"), folder_ / "libnax_serv.so.0");
    }
    ~SeparateLayer() {
        unload();
        std::filesystem::remove_all(folder_);
    }

    void put_threads_component() { put("libnax_threads.so.0"); }
    void put_component_without_functions() { put("libnax_serv.so.0"); }
    void put_broken_component() { std::ofstream(folder_ / kComponent) << "no library"; }

    template <class Function>
    Function* function(const char* name) {
        if (layer_ == nullptr) layer_ = dlopen((folder_ / "libnax_serv.so.0").c_str(), RTLD_NOW | RTLD_LOCAL);
        if (layer_ == nullptr) ADD_FAILURE() << dlerror();
        return reinterpret_cast<Function*>(dlsym(layer_, name));
    }
    void unload() {
        if (layer_ != nullptr) dlclose(layer_);
        layer_ = nullptr;
    }

private:
    static constexpr char kComponent[] = "libnax_threads.so.0";

    static std::filesystem::path built(const char* name) {
        return std::filesystem::path(NAX_BINARY_DIR) / "lib" / name;
    }
    void put(const char* library) { std::filesystem::copy_file(built(library), folder_ / kComponent); }

    std::filesystem::path folder_;
    void* layer_ = nullptr;
};

}  // namespace nax::testing
