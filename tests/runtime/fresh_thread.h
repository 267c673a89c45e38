// Runs a function on a new thread: its mode word, status, callback and input vector pointer are those of first use.
#pragma once

#include <thread>

namespace nax::testing {

template <class Function>
void on_fresh_thread(Function function) {
    std::thread(function).join();
}

}  // namespace nax::testing
