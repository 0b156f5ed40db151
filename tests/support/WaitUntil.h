// Waiting in real time for what another thread does: `done` is asked every
// 2 ms until it holds or `limit` has passed, and its last answer is the
// result.
//
//   ASSERT_TRUE(testsupport::waitUntil([&] { return fetch->finished(); }, 10s));
#pragma once

#include <chrono>
#include <thread>

namespace testsupport {

template <class Done>
bool waitUntil(const Done& done, std::chrono::milliseconds limit) {
    const auto until = std::chrono::steady_clock::now() + limit;
    while (!done() && std::chrono::steady_clock::now() < until)
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    return done();
}

}  // namespace testsupport
