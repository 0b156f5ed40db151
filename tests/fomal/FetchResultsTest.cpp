// fetchURL in an editor: the fetch runs on the worker, its callback on the
// editor's side at an idle tick, in the frame of the editor that asked.
#include "fomal/FetchResults.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <thread>

#include "fomal/EditorCore.h"
#include "fomal/HostNatives.h"
#include "fomal/StillHost.h"
#include "quol/Evaluator.h"
#include "quol/Exception.h"
#include "quol/Frame.h"
#include "quol/Natives.h"
#include "tests/support/httpTestServer.h"

namespace {

using namespace std::chrono_literals;

struct Panel {
    Fomal::StillHost host;
    Fomal::VirtualClock clock;
    std::unique_ptr<Fomal::EditorCore> core = std::make_unique<Fomal::EditorCore>(host, clock);
    std::vector<std::string> alerts;

    Panel() {
        core->onAlert = [this](const std::string& title, const std::string& text) { alerts.push_back(title + ": " + text); };
        EXPECT_TRUE(core->openText(Fomal::ScriptSetup(), "bounds: { 0, 0, 384, 512 }"));
    }
    std::string run(const std::string& script) { return core->scripts().evaluate(*core->root(), script); }
    std::string shared(const std::string& script) {
        return Quol::evaluate(core->scripts().root(), Quol::Value(script)).str();
    }
    void tick() {
        clock.advance(1);
        core->idle();
    }
    bool tickUntil(const std::function<bool()>& done, std::chrono::milliseconds limit = 10s) {
        const auto until = std::chrono::steady_clock::now() + limit;
        while (!done()) {
            if (std::chrono::steady_clock::now() > until) return false;
            tick();
            std::this_thread::sleep_for(1ms);
        }
        return true;
    }
};

struct FetchResultsTest : ::testing::Test {
    ~FetchResultsTest() override { platform::stopUrlFetching(); }
};

void waitForRequests(const httptest::Server& server, std::size_t n) {
    const auto until = std::chrono::steady_clock::now() + 10s;
    while (server.requests().size() < n && std::chrono::steady_clock::now() < until) std::this_thread::sleep_for(1ms);
}

}  // namespace

TEST_F(FetchResultsTest, TheBodyComesAsTheFirstArgumentAtAnIdleTick) {
    httptest::Server server;
    server.answer("{ build: 7 }");
    Panel panel;
    panel.run("::calls = 0");
    panel.run("::body = 'none'");
    panel.run("::failure = 'none'");
    panel.run("fetchURL('" + server.url("/a") + "', function { ::body = $0; ::failure = $1; ++::calls })");
    // Nothing is called back within the call itself, nor without a tick.
    waitForRequests(server, 1);
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(panel.run("::calls"), "0");
    ASSERT_TRUE(panel.tickUntil([&] { return panel.run("::calls") != "0"; }));
    EXPECT_EQ(panel.run("::calls"), "1");
    EXPECT_EQ(panel.run("::body"), "{ build: 7 }");
    EXPECT_EQ(panel.run("::failure"), "");
    // Once only.
    for (int i = 0; i < 50; ++i) panel.tick();
    EXPECT_EQ(panel.run("::calls"), "1");
}

TEST_F(FetchResultsTest, AFailureComesAsTheSecondArgumentWithTheFirstVoid) {
    Panel panel;
    const std::string url = "http://127.0.0.1:" + std::to_string(httptest::closedPort()) + "/a";
    panel.run("::done = false");
    panel.run("fetchURL('" + url + "', function { ::body = $0; ::outcome = coalesce($1, $0); ::done = true })");
    ASSERT_TRUE(panel.tickUntil([&] { return panel.run("::done") == "true"; }));
    EXPECT_EQ(panel.run("::body"), "");
    EXPECT_EQ(panel.run("::outcome").rfind("Internet error: ", 0), 0u) << panel.run("::outcome");
    EXPECT_TRUE(panel.alerts.empty());
}

TEST_F(FetchResultsTest, TheCallbackRunsInTheFrameOfTheEditorThatAsked) {
    httptest::Server server;
    server.answer("for A");
    Panel a, b;
    a.run("::mine = 'nothing yet'");
    a.run("fetchURL('" + server.url("/a") + "', > ::mine = $0)");
    waitForRequests(server, 1);
    std::this_thread::sleep_for(100ms);
    // The other editor's ticks do not deliver it.
    for (int i = 0; i < 100; ++i) b.tick();
    EXPECT_EQ(a.run("::mine"), "nothing yet");
    ASSERT_TRUE(a.tickUntil([&] { return a.run("::mine") != "nothing yet"; }));
    EXPECT_EQ(a.run("::mine"), "for A");
    // `::mine` is A's own: B's frame does not have it.
    EXPECT_EQ(b.run("exists(@::mine)"), "false");
}

TEST_F(FetchResultsTest, ALambdaWrittenInAFunctionThatHasReturnedRunsInTheEditorsFrame) {
    httptest::Server server;
    server.answer("from a function");
    Panel panel;
    panel.run("::got = 'nothing yet'");
    panel.run("::ask = function { local = 1; fetchURL('" + server.url("/f") + "', > ::got = coalesce($1, $0)) }");
    panel.run("::ask()");
    ASSERT_TRUE(panel.tickUntil([&] { return panel.run("::got") != "nothing yet"; }));
    EXPECT_EQ(panel.run("::got"), "from a function");
    EXPECT_TRUE(panel.alerts.empty()) << panel.alerts[0];
}

TEST_F(FetchResultsTest, AFetchOfAClosedEditorIsDropped) {
    httptest::Server server;
    server.answer("late");
    auto a = std::make_unique<Panel>();
    Panel b;
    b.shared("::seen = 'nothing'");
    a->run("fetchURL('" + server.url("/a") + "', > ::seen = $0)");
    waitForRequests(server, 1);
    std::this_thread::sleep_for(100ms);
    a.reset();  // closed before its tick
    for (int i = 0; i < 200; ++i) b.tick();
    EXPECT_EQ(b.run("::seen"), "nothing");
    EXPECT_TRUE(b.alerts.empty());
    // The worker still serves the editor that is open.
    b.run("fetchURL('" + server.url("/b") + "', > ::seen = $0)");
    ASSERT_TRUE(b.tickUntil([&] { return b.run("::seen") == "late"; }));
}

TEST_F(FetchResultsTest, ClosingTheLastEditorStopsTheWorker) {
    httptest::Server server;
    server.beSilent();
    auto panel = std::make_unique<Panel>();
    panel->run("fetchURL('" + server.url("/never") + "', > ::x = $0)");
    waitForRequests(server, 1);
    EXPECT_TRUE(platform::urlFetchWorkerRunning());
    const auto before = std::chrono::steady_clock::now();
    panel.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - before, 2s);
    EXPECT_FALSE(platform::urlFetchWorkerRunning());
}

TEST_F(FetchResultsTest, ACallbackMayStartTheNextFetch) {
    httptest::Server server;
    server.answer("again");
    Panel panel;
    const std::string url = server.url("/chain");
    panel.run("::n = 0");
    panel.run("::next = function { ::n = ::n + 1; if (::n < 3) { fetchURL('" + url + "', > ::next()) } }");
    panel.run("::next()");
    ASSERT_TRUE(panel.tickUntil([&] { return panel.run("::n") == "3"; }));
    EXPECT_EQ(server.requests().size(), 2u);
}

TEST_F(FetchResultsTest, AFailingCallbackIsShownAsAnyScriptFailure) {
    httptest::Server server;
    server.answer("x");
    Panel panel;
    panel.run("fetchURL('" + server.url("/a") + "', > noSuchFunction($0))");
    ASSERT_TRUE(panel.tickUntil([&] { return !panel.alerts.empty(); }));
    EXPECT_EQ(panel.alerts[0].rfind("Tendrane: ", 0), 0u) << panel.alerts[0];
}

TEST_F(FetchResultsTest, WithoutAnEditorFetchUrlFails) {
    Quol::Frame root;
    Quol::installStandardNatives(root);
    Fomal::installHostNatives(root);
    try {
        Quol::evaluate(root, Quol::Value("fetchURL('http://127.0.0.1:1/', > 1)"));
        FAIL() << "no failure";
    } catch (const Quol::Exception& e) {
        EXPECT_NE(std::string(e.what()).find("fetchURL needs an open editor"), std::string::npos) << e.what();
    }
}
