// Fetching a URL on the worker thread, against a server of the test's own
// on 127.0.0.1.
#include "platform/UrlFetch.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "platform/Exceptions.h"
#include "tests/support/AnswerLater.h"
#include "tests/support/WaitUntil.h"
#include "tests/support/httpTestServer.h"

namespace {

using namespace std::chrono_literals;
using testsupport::AnswerLater;
using testsupport::waitUntil;

// Waits in real time for the worker to finish the fetch.
bool waitFor(const platform::UrlFetch& fetch, std::chrono::milliseconds limit = 10s) {
    return waitUntil([&] { return fetch.finished(); }, limit);
}

// Waits in real time for the server to see its first request.
bool waitForRequest(const httptest::Server& server, std::chrono::milliseconds limit = 10s) {
    return waitUntil([&] { return !server.requests().empty(); }, limit);
}

struct UrlFetchTest : ::testing::Test {
    ~UrlFetchTest() override { platform::stopUrlFetching(); }
};

}  // namespace

TEST_F(UrlFetchTest, TheBodyArrivesAndTheServerSeesTheQuery) {
    httptest::Server server;
    server.answer("{ Tendrane1: {} }");
    const auto fetch = platform::UrlFetch::start(server.url("/tdversioncheck?v=3"));
    ASSERT_TRUE(waitFor(*fetch));
    ASSERT_TRUE(fetch->succeeded()) << fetch->failure();
    EXPECT_EQ(fetch->body(), "{ Tendrane1: {} }");
    ASSERT_EQ(server.requests().size(), 1u);
    EXPECT_EQ(server.requests()[0], "GET /tdversioncheck?v=3 HTTP/1.1");
}

TEST_F(UrlFetchTest, StartingDoesNotWaitForTheServer) {
    httptest::Server server;
    server.beSilent();
    const auto before = std::chrono::steady_clock::now();
    const auto fetch = platform::UrlFetch::start(server.url("/slow"));
    EXPECT_LT(std::chrono::steady_clock::now() - before, 500ms);
    EXPECT_FALSE(fetch->finished());
    EXPECT_TRUE(platform::urlFetchWorkerRunning());
}

TEST_F(UrlFetchTest, AnEmptyBodyIsASuccess) {
    httptest::Server server;
    server.answer("");
    const auto fetch = platform::UrlFetch::start(server.url("/"));
    ASSERT_TRUE(waitFor(*fetch));
    EXPECT_TRUE(fetch->succeeded()) << fetch->failure();
    EXPECT_EQ(fetch->body(), "");
}

TEST_F(UrlFetchTest, AnHttpErrorIsAnInternetErrorWithTheStatus) {
    httptest::Server server;
    server.answer("gone", 404, "Not Found");
    const auto fetch = platform::UrlFetch::start(server.url("/tdversioncheck"));
    ASSERT_TRUE(waitFor(*fetch));
    ASSERT_EQ(fetch->state(), platform::UrlFetch::State::failed);
    EXPECT_EQ(fetch->failure(), "Internet error: HTTP 404 Not Found");
    try {
        fetch->rethrow();
        FAIL() << "no exception";
    } catch (const xInternetException& e) {
        EXPECT_STREQ(e.what(), "Internet error: HTTP 404 Not Found");
    }
}

TEST_F(UrlFetchTest, ARefusedConnectionFailsWithTheClientsText) {
    const auto fetch = platform::UrlFetch::start("http://127.0.0.1:" + std::to_string(httptest::closedPort()) + "/x");
    ASSERT_TRUE(waitFor(*fetch));
    ASSERT_FALSE(fetch->succeeded());
    EXPECT_EQ(fetch->failure().rfind("Internet error: ", 0), 0u) << fetch->failure();
    EXPECT_GT(fetch->failure().size(), std::string("Internet error: ").size());
}

TEST_F(UrlFetchTest, AServerThatNeverAnswersTimesOut) {
    httptest::Server server;
    server.beSilent();
    platform::UrlFetchOptions options;
    options.totalTimeoutMs = 300;
    const auto before = std::chrono::steady_clock::now();
    const auto fetch = platform::UrlFetch::start(server.url("/never"), options);
    ASSERT_TRUE(waitFor(*fetch, 5s));
    EXPECT_FALSE(fetch->succeeded());
    EXPECT_EQ(fetch->failure().rfind("Internet error: ", 0), 0u) << fetch->failure();
    EXPECT_GE(std::chrono::steady_clock::now() - before, 250ms);
}

TEST_F(UrlFetchTest, AServerThatHangsUpFails) {
    httptest::Server server;
    server.hangUp();
    const auto fetch = platform::UrlFetch::start(server.url("/"));
    ASSERT_TRUE(waitFor(*fetch));
    EXPECT_FALSE(fetch->succeeded());
    EXPECT_EQ(fetch->failure().rfind("Internet error: ", 0), 0u);
}

TEST_F(UrlFetchTest, ATooLongBodyFails) {
    httptest::Server server;
    server.answer(std::string(5000, 'x'));
    platform::UrlFetchOptions options;
    options.maxBodyBytes = 4096;
    const auto fetch = platform::UrlFetch::start(server.url("/big"), options);
    ASSERT_TRUE(waitFor(*fetch));
    EXPECT_EQ(fetch->failure(), "Internet error: the response is too large");
}

TEST_F(UrlFetchTest, OnlyWebAddressesAreFetched) {
    const auto fetch = platform::UrlFetch::start("file:///etc/hostname");
    ASSERT_TRUE(waitFor(*fetch));
    EXPECT_FALSE(fetch->succeeded());
}

TEST_F(UrlFetchTest, AnAbandonedFetchEndsSoonAndTheNextOneRuns) {
    httptest::Server slow;
    slow.beSilent();
    const auto first = platform::UrlFetch::start(slow.url("/never"));
    std::this_thread::sleep_for(50ms);
    first->abandon();
    ASSERT_TRUE(waitFor(*first, 2s));
    EXPECT_EQ(first->failure(), "Internet error: cancelled");

    httptest::Server quick;
    quick.answer("fine");
    const auto second = platform::UrlFetch::start(quick.url("/"));
    ASSERT_TRUE(waitFor(*second));
    EXPECT_EQ(second->body(), "fine");
}

TEST_F(UrlFetchTest, StoppingEndsTheWorkerAtOnceAndFailsWhatWaits) {
    httptest::Server server;
    server.answer("too late");
    server.holdAnswers();
    const auto running = platform::UrlFetch::start(server.url("/a"));
    const auto queued = platform::UrlFetch::start(server.url("/b"));
    ASSERT_TRUE(waitForRequest(server));
    {
        // Well before the fetch's own time-out.
        AnswerLater clock(server, 10s);
        platform::stopUrlFetching();
        EXPECT_FALSE(server.released()) << "stopping waited for the server's answer";
    }
    EXPECT_FALSE(platform::urlFetchWorkerRunning());
    EXPECT_TRUE(running->finished());
    EXPECT_TRUE(queued->finished());
    EXPECT_FALSE(running->succeeded());
    EXPECT_FALSE(queued->succeeded());

    // A later fetch starts the worker again.
    httptest::Server again;
    again.answer("back");
    const auto later = platform::UrlFetch::start(again.url("/"));
    ASSERT_TRUE(waitFor(*later));
    EXPECT_EQ(later->body(), "back");
}

TEST_F(UrlFetchTest, ClosingDuringAFetchNeverWaitsForTheServer) {
    // The fetch's own limits are far off: only the stop can end it before
    // the server answers.
    httptest::Server server;
    server.answer("{ Tendrane1: {} }");
    server.holdAnswers();
    platform::UrlFetchOptions options;
    options.connectTimeoutMs = 120000;
    options.totalTimeoutMs = 120000;
    const auto fetch = platform::UrlFetch::start(server.url("/tdversioncheck?v=3"), options);
    ASSERT_TRUE(waitForRequest(server));
    EXPECT_FALSE(fetch->finished());
    {
        AnswerLater clock(server, 20s);
        platform::stopUrlFetching();
        EXPECT_FALSE(server.released()) << "the close waited until the server was allowed to answer";
        EXPECT_FALSE(platform::urlFetchWorkerRunning());
        ASSERT_TRUE(fetch->finished());
        EXPECT_EQ(fetch->failure(), "Internet error: cancelled");
    }
    // The answer that comes after is dropped: the fetch stays as it ended.
    server.release();
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(fetch->failure(), "Internet error: cancelled");
    EXPECT_EQ(fetch->body(), "");
}

TEST_F(UrlFetchTest, TheAskerMayLetGoFirst) {
    // The worker keeps its own reference: nothing is freed under it.
    httptest::Server server;
    server.answer("dropped");
    std::weak_ptr<platform::UrlFetch> watch;
    {
        auto fetch = platform::UrlFetch::start(server.url("/"));
        watch = fetch;
        fetch->abandon();
    }
    EXPECT_TRUE(waitUntil([&] { return watch.expired(); }, 5s));
}

TEST(UrlFetchDeathTest, TheProcessEndsWhileAFetchWaits) {
    // At the end of the process the worker is stopped and joined: exit
    // neither hangs nor crashes with a fetch in flight.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            httptest::Server server;
            server.beSilent();
            const auto fetch = platform::UrlFetch::start(server.url("/never"));
            std::exit(waitForRequest(server, 5s) ? 7 : 1);
        },
        ::testing::ExitedWithCode(7), "");
}
