// The headless panel's view of the machine's preferences: the tutorial's
// place belongs to the run, everything else is the machine's.
#include "cli/PanelPreferences.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

#include "patch/Preferences.h"

namespace {

// A preference folder of the test's own, given back afterwards.
class PanelPreferencesTest : public ::testing::Test {
protected:
    void SetUp() override {
        dir_ = std::filesystem::temp_directory_path() /
               ("tendrane-panel-prefs-" + std::to_string(::getpid()) + "-" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::remove_all(dir_);
        std::filesystem::create_directories(dir_);
        const char* was = std::getenv("XDG_CONFIG_HOME");
        if (was != nullptr) saved_ = was;
        setenv("XDG_CONFIG_HOME", dir_.c_str(), 1);
    }
    void TearDown() override {
        if (saved_) setenv("XDG_CONFIG_HOME", saved_->c_str(), 1);
        else unsetenv("XDG_CONFIG_HOME");
        std::filesystem::remove_all(dir_);
    }

    static std::optional<std::string> machine(const char* key) {
        return Preferences::read(key, machineOwnPreferenceBackend());
    }

private:
    std::filesystem::path dir_;
    std::optional<std::string> saved_;
};

}  // namespace

TEST_F(PanelPreferencesTest, AReturningPlayerHasFinishedTheTutorialWhateverTheMachineSays) {
    Preferences::write("completedTutorial", "false", machineOwnPreferenceBackend());
    Preferences::write("lastTutorialPage", "7", machineOwnPreferenceBackend());
    Preferences::write("currentProgramDir", "/patches", machineOwnPreferenceBackend());
    cli::PanelPreferences view;
    view.startRun(false);
    EXPECT_EQ(Preferences::read("completedTutorial", view), std::optional<std::string>("true"));
    EXPECT_EQ(Preferences::read("lastTutorialPage", view), std::nullopt);
    // Everything else is as stored.
    EXPECT_EQ(Preferences::read("currentProgramDir", view), std::optional<std::string>("/patches"));
}

TEST_F(PanelPreferencesTest, AFirstStartHasNeverSeenTheTutorial) {
    Preferences::write("completedTutorial", "true", machineOwnPreferenceBackend());
    cli::PanelPreferences view;
    view.startRun(true);
    EXPECT_EQ(Preferences::read("completedTutorial", view), std::nullopt);
    EXPECT_EQ(Preferences::read("lastTutorialPage", view), std::nullopt);
}

TEST_F(PanelPreferencesTest, TheRunKeepsItsTutorialAndTheMachineItsOwn) {
    Preferences::write("lastTutorialPage", "3", machineOwnPreferenceBackend());
    cli::PanelPreferences view;
    view.startRun(true);
    Preferences::write("lastTutorialPage", "12", view);
    Preferences::write("completedTutorial", "true", view);
    Preferences::write("lastAutoUpdate", "off", view);
    // The run reads back what it wrote.
    EXPECT_EQ(Preferences::read("lastTutorialPage", view), std::optional<std::string>("12"));
    EXPECT_EQ(Preferences::read("completedTutorial", view), std::optional<std::string>("true"));
    // The machine kept its tutorial and got the rest.
    EXPECT_EQ(machine("lastTutorialPage"), std::optional<std::string>("3"));
    EXPECT_EQ(machine("completedTutorial"), std::nullopt);
    EXPECT_EQ(machine("lastAutoUpdate"), std::optional<std::string>("off"));
    // A new run starts afresh.
    view.startRun(true);
    EXPECT_EQ(Preferences::read("lastTutorialPage", view), std::nullopt);
}

TEST_F(PanelPreferencesTest, ItCanStandInForTheMachineForTheWholeProcess) {
    Preferences::write("completedTutorial", "false", machineOwnPreferenceBackend());
    cli::PanelPreferences view;
    view.startRun(false);
    setProcessPreferenceBackend(&view);
    EXPECT_EQ(Preferences::read("completedTutorial"), std::optional<std::string>("true"));
    setProcessPreferenceBackend(nullptr);
    EXPECT_EQ(Preferences::read("completedTutorial"), std::optional<std::string>("false"));
}
