// The update check as the application script runs it: autoexec.quol's
// `autoUpdate.check()` in an editor on a virtual clock, fetching from a
// server of the test's own on 127.0.0.1. The test gives the script its
// endpoint by setting `const.versionCheckURL` after the start script has
// read the constants, so the product's resources stay as they are; the
// preferences are the test's own map behind readPrefs and writePrefs.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <functional>
#include <map>
#include <memory>
#include <thread>

#include "fomal/EditorCore.h"
#include "fomal/StillHost.h"
#include "platform/BuildInfo.h"
#include "platform/Log.h"
#include "platform/UrlFetch.h"
#include "quol/Classification.h"
#include "quol/Exception.h"
#include "quol/Natives.h"
#include "tests/support/httpTestServer.h"

namespace {

using namespace std::chrono_literals;
using Quol::Frame;
using Quol::Value;

std::map<std::string, std::string>& prefs() {
    static std::map<std::string, std::string> stored;
    return stored;
}

class Lambda : public Quol::Native {
public:
    explicit Lambda(std::function<Value(Frame&)> body) : body_(std::move(body)) {}
    Value run(Frame& a) override { return body_(a); }

private:
    std::function<Value(Frame&)> body_;
};

// The main layout's way of starting the check: a delayed trigger after
// "opened", then `autoUpdate.check()`.
constexpr const char* LAYOUT = R"(bounds: { 0, 0, 384, 512 }
triggers: {
    { when: "opened", action: "delayed", params: { action: "trigger", params: "delayedOpening", label: "delayedOpening", alerts: true } }
    { when: "delayedOpening", action: "{ autoUpdate.check() }" }
})";

struct Panel {
    Fomal::StillHost host;
    Fomal::VirtualClock clock;
    std::unique_ptr<Fomal::EditorCore> core = std::make_unique<Fomal::EditorCore>(host, clock);
    std::vector<std::string> alerts;

    // Opens the editor with the application script, pointing its update
    // check at `url` (a base without the query).
    explicit Panel(const std::string& url) {
        core->onAlert = [this](const std::string& title, const std::string& text) { alerts.push_back(title + ": " + text); };
        Fomal::ScriptSetup setup;
        setup.sharedNatives = [](Frame& root) {
            root.addNative("readPrefs", std::make_unique<Lambda>([](Frame& a) {
                               const auto it = prefs().find(Quol::argument(a, 0).str());
                               return it == prefs().end() ? Value() : Value(it->second);
                           }));
            root.addNative("writePrefs", std::make_unique<Lambda>([](Frame& a) {
                               prefs()[Quol::argument(a, 0).str()] = Quol::argument(a, 1).str();
                               return Quol::booleanValue(true);
                           }));
        };
        setup.guiNatives = [this](Frame& gui) {
            gui.addNative("userBusy", std::make_unique<Lambda>([this](Frame&) { return Quol::booleanValue(core->userBusy()); }));
        };
        setup.startScript = "autoexec.quol";
        EXPECT_TRUE(core->openText(setup, LAYOUT)) << (alerts.empty() ? "" : alerts[0]);
        run("::const.versionCheckURL = '\"" + url + "\"'");
    }

    std::string run(const std::string& script) { return core->scripts().evaluate(*core->root(), script); }
    std::string response() { return run("::autoUpdate.response"); }

    // Ticks the editor every 10 virtual milliseconds, letting real time pass
    // for the worker, until `done` or the real limit.
    bool tickUntil(const std::function<bool()>& done, std::chrono::milliseconds limit = 10s) {
        const auto until = std::chrono::steady_clock::now() + limit;
        while (!done()) {
            if (std::chrono::steady_clock::now() > until) return false;
            clock.advance(10);
            core->idle();
            std::this_thread::sleep_for(1ms);
        }
        return true;
    }
    // Ticks through `ms` virtual milliseconds.
    void tick(std::int64_t ms) {
        for (std::int64_t t = 0; t < ms; t += 10) {
            clock.advance(10);
            core->idle();
        }
    }
    // The answer has come and the script has dealt with it.
    bool answered() { return prefs().count("lastAutoUpdate") != 0 && response() == "unfetched"; }
};

struct UpdateCheckTest : ::testing::Test {
    UpdateCheckTest() { prefs().clear(); }
    ~UpdateCheckTest() override { platform::stopUrlFetching(); }

    static std::string forThisBuild(const std::string& fields) {
        const platform::BuildInfo& b = platform::buildInfo();
        return "{ Tendrane1: { " + b.os + ": { " + b.cpu + ": { " + fields + " } } } }";
    }
    static int thisBuild() { return std::stoi(platform::buildInfo().number); }
};

}  // namespace

TEST_F(UpdateCheckTest, ANewerBuildIsAnnounced) {
    httptest::Server server;
    server.answer(forThisBuild("build: " + std::to_string(thisBuild() + 1) + ", message: \"Build 141 is out.\""));
    Panel panel(server.url("/tdversioncheck"));
    ASSERT_TRUE(panel.tickUntil([&] { return !panel.alerts.empty(); }));
    ASSERT_EQ(panel.alerts.size(), 1u);
    EXPECT_EQ(panel.alerts[0], "Tendrane: Build 141 is out.");
    ASSERT_EQ(server.requests().size(), 1u);
    EXPECT_EQ(server.requests()[0], "GET /tdversioncheck?v=3 HTTP/1.1");
    // The time of the check is kept, and the script is ready for the next.
    EXPECT_NE(prefs()["lastAutoUpdate"], "");
    EXPECT_NE(prefs()["lastAutoUpdate"], "0");
    EXPECT_EQ(panel.response(), "unfetched");
}

TEST_F(UpdateCheckTest, WithAnInformationPageTheDefaultTextAsks) {
    httptest::Server server;
    server.answer(forThisBuild("build: " + std::to_string(thisBuild() + 5) + ", url: \"https://example.org/tendrane\""));
    Panel panel(server.url("/tdversioncheck"));
    ASSERT_TRUE(panel.tickUntil([&] { return !panel.alerts.empty(); }));
    EXPECT_EQ(panel.alerts[0],
              "Tendrane: An update of the Tendrane is available. Do you wish to view the information page?");
    EXPECT_TRUE(panel.core->dialogOpen());
    EXPECT_TRUE(panel.core->choose("No"));
    EXPECT_FALSE(panel.core->dialogOpen());
}

TEST_F(UpdateCheckTest, TheSameBuildSaysNothing) {
    httptest::Server server;
    server.answer(forThisBuild("build: " + std::to_string(thisBuild()) + ", message: \"Nothing new.\""));
    Panel panel(server.url("/tdversioncheck"));
    ASSERT_TRUE(panel.tickUntil([&] { return panel.answered(); }));
    panel.tick(10000);
    EXPECT_TRUE(panel.alerts.empty()) << panel.alerts[0];
    EXPECT_EQ(server.requests().size(), 1u);  // and no second check for days
}

TEST_F(UpdateCheckTest, AnUrgentMessageShowsWhateverTheBuild) {
    httptest::Server server;
    server.answer(forThisBuild("build: 1, urgent: \"Please update: this build loses patches.\", message: \"not this\""));
    Panel panel(server.url("/tdversioncheck"));
    ASSERT_TRUE(panel.tickUntil([&] { return !panel.alerts.empty(); }));
    EXPECT_EQ(panel.alerts[0], "Tendrane: Please update: this build loses patches.");
}

TEST_F(UpdateCheckTest, AnAnswerForOtherPlatformsSaysNothing) {
    httptest::Server server;
    server.answer("{ Tendrane1: { otheros: { x86: { build: 100000, urgent: \"no\" } } } }");
    Panel panel(server.url("/tdversioncheck"));
    ASSERT_TRUE(panel.tickUntil([&] { return panel.answered(); }));
    panel.tick(5000);
    EXPECT_TRUE(panel.alerts.empty());
}

TEST_F(UpdateCheckTest, AMalformedAnswerIsDroppedAndNothingBreaks) {
    for (const char* body : {"<html><body>Service unavailable</body></html>", "{ Tendrane1: { linux: { x64: { build: ",
                             "{ Tendrane1: \"{ x64\" }", "\x01\x02\xff\"'{{{"}) {
        prefs().clear();
        httptest::Server server;
        server.answer(body);
        Panel panel(server.url("/tdversioncheck"));
        ASSERT_TRUE(panel.tickUntil([&] { return panel.answered(); })) << body;
        panel.tick(5000);
        EXPECT_TRUE(panel.alerts.empty()) << body << " -> " << panel.alerts[0];
        // The editor goes on as before.
        EXPECT_EQ(panel.run("1 + 2"), "3");
        EXPECT_FALSE(panel.core->dialogOpen());
    }
}

TEST_F(UpdateCheckTest, AnHttpErrorIsSilent) {
    httptest::Server server;
    server.answer("oops", 500, "Internal Server Error");
    Panel panel(server.url("/tdversioncheck"));
    ASSERT_TRUE(panel.tickUntil([&] { return panel.answered(); }));
    panel.tick(5000);
    EXPECT_TRUE(panel.alerts.empty()) << panel.alerts[0];
}

TEST_F(UpdateCheckTest, NoNetworkIsSilent) {
    Panel panel("http://127.0.0.1:" + std::to_string(httptest::closedPort()) + "/tdversioncheck");
    ASSERT_TRUE(panel.tickUntil([&] { return panel.answered(); }));
    panel.tick(5000);
    EXPECT_TRUE(panel.alerts.empty()) << panel.alerts[0];
}

TEST_F(UpdateCheckTest, AServerThatNeverAnswersNeitherHangsNorAlerts) {
    httptest::Server server;
    server.beSilent();
    auto panel = std::make_unique<Panel>(server.url("/tdversioncheck"));
    ASSERT_TRUE(panel->tickUntil([&] { return !server.requests().empty(); }));
    // The interface keeps its pace while the fetch waits.
    const auto before = std::chrono::steady_clock::now();
    panel->tick(60000);
    EXPECT_LT(std::chrono::steady_clock::now() - before, 5s);
    EXPECT_EQ(panel->response(), "fetching");
    EXPECT_TRUE(panel->alerts.empty());
    // Closing the editor drops the fetch and ends the worker at once.
    const auto closing = std::chrono::steady_clock::now();
    panel.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - closing, 2s);
    EXPECT_FALSE(platform::urlFetchWorkerRunning());
}

TEST_F(UpdateCheckTest, SwitchedOffNothingIsFetched) {
    httptest::Server server;
    server.answer(forThisBuild("urgent: \"should not show\""));
    prefs()["lastAutoUpdate"] = "off";
    Panel panel(server.url("/tdversioncheck"));
    panel.tick(10000);
    std::this_thread::sleep_for(200ms);
    panel.tick(10000);
    EXPECT_TRUE(server.requests().empty());
    EXPECT_TRUE(panel.alerts.empty());
    EXPECT_EQ(panel.response(), "unfetched");
    // Switched on again, it checks at once.
    panel.run("autoUpdate()");
    ASSERT_TRUE(panel.tickUntil([&] { return !panel.alerts.empty(); }));
    EXPECT_EQ(panel.alerts[0], "Tendrane: should not show");
}

TEST_F(UpdateCheckTest, ARecentCheckWaitsItsDays) {
    httptest::Server server;
    server.answer(forThisBuild("urgent: \"too soon\""));
    const long now = long(std::time(nullptr));
    prefs()["lastAutoUpdate"] = std::to_string(now - 86400);
    Panel panel(server.url("/tdversioncheck"));
    panel.tick(10000);
    std::this_thread::sleep_for(200ms);
    panel.tick(10000);
    EXPECT_TRUE(server.requests().empty());
    EXPECT_TRUE(panel.alerts.empty());
}

TEST_F(UpdateCheckTest, AClockSetBackMoreThanThreeDaysChecks) {
    httptest::Server server;
    server.answer(forThisBuild("urgent: \"checked\""));
    const long now = long(std::time(nullptr));
    prefs()["lastAutoUpdate"] = std::to_string(now + 4 * 86400);
    Panel panel(server.url("/tdversioncheck"));
    ASSERT_TRUE(panel.tickUntil([&] { return !panel.alerts.empty(); }));
    EXPECT_EQ(panel.alerts[0], "Tendrane: checked");
}

TEST_F(UpdateCheckTest, TheAlertWaitsWhileTheUserIsBusy) {
    httptest::Server server;
    server.answer(forThisBuild("urgent: \"after the menu\""));
    Panel panel(server.url("/tdversioncheck"));
    // An alert of the user's own is open: the panel is busy.
    panel.core->actions().perform(*panel.core->root(), "alert", "{ text: \"Busy\" }", false);
    ASSERT_TRUE(panel.core->userBusy());
    ASSERT_TRUE(panel.tickUntil([&] { return !server.requests().empty() && panel.response() != "fetching"; }));
    panel.tick(6000);
    ASSERT_EQ(panel.alerts.size(), 1u);  // only the user's own
    EXPECT_TRUE(panel.core->choose("OK"));
    ASSERT_TRUE(panel.tickUntil([&] { return panel.alerts.size() == 2; }));
    EXPECT_EQ(panel.alerts[1], "Tendrane: after the menu");
}

// The scripts' print reaches the development log only in debug mode.
TEST_F(UpdateCheckTest, PrintWritesToTheLogOnlyInDebugMode) {
    const std::filesystem::path file = std::filesystem::path(TENDRANE_BINARY_DIR) / "test-scratch" / "script-print.log";
    std::filesystem::create_directories(file.parent_path());
    std::filesystem::remove(file);
    platform::Log::start(file);
    {
        Panel panel("http://127.0.0.1:1/tdversioncheck");
        panel.run("print('released')");
        panel.run("xprint('released too')");
        panel.run("::const.debug = 'true'");
        panel.run("xprint(\"in debug\\n\")");
    }
    platform::Log::stop();
    std::ifstream in(file, std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_EQ(text.find("released"), std::string::npos) << text;
    const std::string tail = " D in debug\\n\r\n";
    ASSERT_GE(text.size(), tail.size()) << text;
    EXPECT_EQ(text.substr(text.size() - tail.size()), tail);
    EXPECT_NE(text.find(" script|host|"), std::string::npos) << text;
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1);  // one line: the escaped one has none
}
