#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <pthread.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "patch/Preferences.h"
#include "patch/PreferencesStore.h"
#include "platform/Exceptions.h"
#include "platform/PreferenceStorage.h"

namespace {

// A store in memory, counting how it is used.
class MemoryBackend : public PreferenceBackend {
public:
    void lock() override {
        ++locks;
        ++held;
    }
    void unlock() override { --held; }
    std::string read() override {
        EXPECT_GT(held, 0);
        return value;
    }
    void write(std::string_view bytes) override {
        EXPECT_GT(held, 0);
        value = std::string(bytes);
        ++writes;
    }
    std::string value;
    int locks = 0;
    int held = 0;
    int writes = 0;
};

// Points the machine's store at a fresh folder for the life of a test.
class ConfigHome {
public:
    ConfigHome() {
        char pattern[] = "/tmp/tendrane-prefs-XXXXXX";
        dir_ = mkdtemp(pattern);
        const char* old = std::getenv("XDG_CONFIG_HOME");
        if (old) old_ = old;
        setenv("XDG_CONFIG_HOME", dir_.c_str(), 1);
    }
    ~ConfigHome() {
        if (old_)
            setenv("XDG_CONFIG_HOME", old_->c_str(), 1);
        else
            unsetenv("XDG_CONFIG_HOME");
        std::filesystem::remove_all(dir_);
    }
    const std::string& dir() const { return dir_; }

private:
    std::string dir_;
    std::optional<std::string> old_;
};

}  // namespace

TEST(PrefsStoreTest, MapSurvivesItsEncoding) {
    PreferenceMap map{{"Tendrane", "{\n}"}, {"TendraneStartupBank", std::string("\0\x01\xff bytes", 9)}, {"", ""}};
    EXPECT_EQ(decodePreferenceMap(encodePreferenceMap(map)), map);
    EXPECT_TRUE(decodePreferenceMap("").empty());
    EXPECT_TRUE(decodePreferenceMap(encodePreferenceMap({})).empty());
}

TEST(PrefsStoreTest, AnyDamageFailsTheHeaderCheck) {
    PreferenceMap map{{"Tendrane", "{\n\tguiOpenedCounter: '3',\n}"}, {"x", "y"}};
    const std::string good = encodePreferenceMap(map);
    for (size_t at = 0; at < good.size(); ++at) {
        std::string bad = good;
        bad[at] = static_cast<char>(bad[at] ^ 0x10);
        try {
            decodePreferenceMap(bad);
            ADD_FAILURE() << "no failure at " << at;
        } catch (const FormatException& e) {
            EXPECT_STREQ(e.what(), "Invalid data format");
        }
    }
    EXPECT_THROW(decodePreferenceMap(good.substr(0, good.size() - 1)), FormatException);
    EXPECT_THROW(decodePreferenceMap("short"), FormatException);
}

TEST(PrefsStoreTest, MissingKeyReadsAsNothing) {
    MemoryBackend store;
    EXPECT_FALSE(Preferences::read("lastAutoUpdate", store).has_value());
    Preferences p(store);
    EXPECT_FALSE(p.get("currentProgramDir").has_value());
    EXPECT_EQ(store.writes, 0);
}

TEST(PrefsStoreTest, TextFormIsOneEscapedValuePerLine) {
    PreferenceMap values{{"guiOpenedCounter", "12"}, {"lastAutoUpdate", "off"}, {"currentProgramDir", "C:\\My Patches\\"},
                         {"odd key", "it's\n\"here\""}};
    EXPECT_EQ(Preferences::formatText(values),
              "{\n"
              "currentProgramDir: 'C:\\My Patches\\',\n"
              "guiOpenedCounter: '12',\n"
              "lastAutoUpdate: 'off',\n"
              "'odd key': \"it's\\n\\\"here\\\"\",\n"
              "}");
    EXPECT_EQ(Preferences::parseText(Preferences::formatText(values)), values);
}

TEST(PrefsStoreTest, ValueWithQuotesAndLineEndsSurvivesAStoreAndARead) {
    MemoryBackend store;
    const std::string config = "TendraneMIDIConfig: {\n\tVelocityCurve: \"hard\"\n}\n";
    Preferences::write("defaultMidiConfig", config, store);
    EXPECT_EQ(Preferences::read("defaultMidiConfig", store).value_or("?"), config);
    EXPECT_EQ(store.held, 0);
}

TEST(PrefsStoreTest, StoreMergesWithWhatIsStoredNow) {
    MemoryBackend store;
    Preferences first(store);
    Preferences second(store);
    first.set("completedTutorial", "true");
    second.set("lastTutorialPage", "4");
    first.store();
    second.store();
    Preferences now(store);
    EXPECT_EQ(now.get("completedTutorial").value_or("?"), "true");
    EXPECT_EQ(now.get("lastTutorialPage").value_or("?"), "4");
    // The last writer of one key wins.
    first.set("lastTutorialPage", "5");
    first.store();
    EXPECT_EQ(Preferences::read("lastTutorialPage", store).value_or("?"), "5");
    EXPECT_EQ(store.held, 0);
}

TEST(PrefsStoreTest, OtherStoreKeysAreKept) {
    MemoryBackend store;
    updatePreferenceMap([](PreferenceMap& m) { m["TendraneStartupBank"] = "bank bytes"; }, store);
    Preferences::write("guiOpenedCounter", "1", store);
    PreferenceMap map = readPreferenceMap(store);
    EXPECT_EQ(map["TendraneStartupBank"], "bank bytes");
    EXPECT_EQ(map["Tendrane"], "{\nguiOpenedCounter: '1',\n}");
}

TEST(PrefsStoreTest, DamagedStoreFailsToRead) {
    MemoryBackend store;
    store.value = "not a store";
    EXPECT_THROW(Preferences p(store), FormatException);
    EXPECT_EQ(store.held, 0);
}

TEST(PrefsStoreTest, MachineStoreLivesInTheMakersFolder) {
    ConfigHome home;
    Preferences::write("guiOpenedCounter", "7");
    EXPECT_TRUE(std::filesystem::exists(home.dir() + "/Korvex Development/Quillbrook.prefs"));
    EXPECT_EQ(platform::preferenceLocation(), home.dir() + "/Korvex Development/Quillbrook.prefs");
    EXPECT_EQ(Preferences::read("guiOpenedCounter").value_or("?"), "7");
    {
        platform::PreferenceLock outer;
        platform::PreferenceLock inner;  // nested holders in one process share the lock
        EXPECT_FALSE(platform::readPreferenceValue().empty());
    }
}

TEST(PrefsStoreTest, TwoProcessesStoringDifferentKeysBothSurvive) {
    ConfigHome home;
    constexpr int kWrites = 40;
    pid_t children[2];
    for (int c = 0; c < 2; ++c) {
        pid_t pid = fork();
        ASSERT_GE(pid, 0);
        if (pid == 0) {
            int status = 0;
            try {
                for (int i = 0; i < kWrites; ++i) {
                    // Read, change and store through a whole object, as an
                    // editor does, and once through the one-shot form.
                    Preferences p;
                    p.set(std::string(c == 0 ? "first" : "second") + std::to_string(i), std::to_string(i * 3 + c));
                    p.store();
                    Preferences::write(c == 0 ? "firstCount" : "secondCount", std::to_string(i + 1));
                }
            } catch (...) {
                status = 3;
            }
            _exit(status);
        }
        children[c] = pid;
    }
    for (pid_t pid : children) {
        int status = -1;
        ASSERT_EQ(waitpid(pid, &status, 0), pid);
        ASSERT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), 0);
    }
    Preferences now;
    for (int i = 0; i < kWrites; ++i) {
        EXPECT_EQ(now.get("first" + std::to_string(i)).value_or("lost"), std::to_string(i * 3)) << i;
        EXPECT_EQ(now.get("second" + std::to_string(i)).value_or("lost"), std::to_string(i * 3 + 1)) << i;
    }
    EXPECT_EQ(now.get("firstCount").value_or("lost"), std::to_string(kWrites));
    EXPECT_EQ(now.get("secondCount").value_or("lost"), std::to_string(kWrites));
}

namespace {
void ignoreSignal(int) {}
}  // namespace

TEST(PrefsStoreTest, InterruptedWaitFailsWithTheTimeOutMessage) {
    ConfigHome home;
    int toChild[2];
    int fromChild[2];
    ASSERT_EQ(pipe(toChild), 0);
    ASSERT_EQ(pipe(fromChild), 0);
    pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        // Hold the lock until told to let go.
        platform::PreferenceLock lock;
        char c = 'x';
        if (write(fromChild[1], &c, 1) != 1) _exit(2);
        if (read(toChild[0], &c, 1) != 1) _exit(2);
        _exit(0);
    }
    char c;
    ASSERT_EQ(read(fromChild[0], &c, 1), 1);

    struct sigaction action {};
    struct sigaction previous {};
    action.sa_handler = ignoreSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = 0;  // no restart: the signal ends the wait
    sigaction(SIGUSR1, &action, &previous);

    std::string message = "no failure";
    std::atomic<bool> done{false};
    std::thread waiter([&] {
        try {
            platform::PreferenceLock lock;
        } catch (const std::exception& e) {
            message = e.what();
        }
        done = true;
    });
    // Signal until the wait ends; a signal that comes before the wait has
    // begun is simply repeated.
    for (int i = 0; i < 100 && !done; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        if (!done) pthread_kill(waiter.native_handle(), SIGUSR1);
    }
    c = 'q';
    ASSERT_EQ(write(toChild[1], &c, 1), 1);  // lets the waiter end in any case
    waiter.join();
    sigaction(SIGUSR1, &previous, nullptr);
    EXPECT_EQ(message, "Time out when aquiring access to a shared resource");

    int status = -1;
    waitpid(pid, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    for (int fd : {toChild[0], toChild[1], fromChild[0], fromChild[1]}) close(fd);
    // The lock is free again.
    platform::PreferenceLock again;
}
