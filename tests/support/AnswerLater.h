// The test's clock for a server that holds its answers: it lets the server
// answer after `limit`, unless the test's step is over first (the clock
// goes). A step that waits for the network then ends at that moment
// instead of hanging the test, and the test sees that the server answered
// before the step was done; the limit is far longer than any step that
// does not wait. Any server with `release()` will do.
//
//   {
//       testsupport::AnswerLater clock(server, 10s);
//       platform::stopUrlFetching();
//       EXPECT_FALSE(server.released());
//   }
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace testsupport {

template <class Server>
class AnswerLater {
public:
    AnswerLater(Server& server, std::chrono::milliseconds limit)
        : thread_([this, &server, limit] {
              std::unique_lock<std::mutex> hold(lock_);
              if (!wake_.wait_for(hold, limit, [this] { return over_; })) server.release();
          }) {}
    ~AnswerLater() {
        {
            std::lock_guard<std::mutex> hold(lock_);
            over_ = true;
        }
        wake_.notify_one();
        thread_.join();
    }
    AnswerLater(const AnswerLater&) = delete;
    AnswerLater& operator=(const AnswerLater&) = delete;

private:
    std::mutex lock_;
    std::condition_variable wake_;
    bool over_ = false;
    std::thread thread_;
};

}  // namespace testsupport
