// The plug-in core under concurrent use: an interface thread publishes
// records, renames the live one (starting and stopping the jingle) and
// changes parameters while the audio thread renders at block rate, other
// threads play notes through the ring and the plant reads the published
// state. Meant to run under ThreadSanitizer as well.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include "plugin/PluginCore.h"
#include "tests/plugin/BlockTestEngine.h"

namespace {

VstIntPtr VST_CALL quietHost(AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void*, float) {
    return opcode == audioMasterVersion ? 2400 : 0;
}

TimedEvent note(int channel, int key, int velocity) {
    TimedEvent e;
    e.status = static_cast<uint8_t>((velocity ? 0x90 : 0x80) | channel);
    e.data1 = static_cast<uint8_t>(key);
    e.data2 = static_cast<uint8_t>(velocity);
    return e;
}

struct Load {
    std::atomic<bool> stop{false};
    std::atomic<int> injected{0};
    std::atomic<int> overruns{0};
    std::atomic<int> visualsRead{0};
    std::atomic<int> visualRegressions{0};
};

// Runs the threads around a core until the audio thread has rendered the
// given number of host calls.
void runLoad(PluginCore& core, Load& load, int hostCalls) {
    std::vector<float> left(512), right(512);
    float* outs[2] = {left.data(), right.data()};
    // The first audio call after resume resets, dropping what the ring holds;
    // it comes before the other threads start.
    core.processReplacing(nullptr, outs, 0);

    std::thread interface([&] {
        int k = 0;
        while (!load.stop.load()) {
            NorvelleProgram record;
            record.seed = static_cast<uint32_t>(1000 + k);
            record.setName(k % 2 ? u"Jingle Balls" : u"Plain");
            core.programSlot(k % 2).publish(record);
            NorvelleProgram* live = core.programSlot(0).acquire();
            live->setParam(Param::Volume, static_cast<float>(k % 10) / 10.0f);
            live->setName(k % 3 ? u"Jingle Balls" : u"Renamed");
            core.programSlot(0).release(live);
            core.programEntered();
            if (k % 50 == 0) core.setProgram((k / 50) % 2);
            ++k;
            std::this_thread::yield();
        }
    });
    std::vector<std::thread> players;
    for (int p = 0; p < 2; ++p) {
        players.emplace_back([&, p] {
            int k = 0;
            while (!load.stop.load()) {
                try {
                    core.injectEvent(note(3, 40 + (k % 40), (k % 2) ? 0 : 100));
                    if (k % 2 == 0) ++load.injected;
                    ++k;
                } catch (const Kvx::xCircularFIFOOverrun&) {
                    ++load.overruns;
                }
                if (k % 8 == 0) std::this_thread::yield();
            }
            (void)p;
        });
    }
    std::thread plant([&] {
        uint32_t last = 0;
        while (!load.stop.load()) {
            VisualState* v = core.visualState().acquire();
            const uint32_t count = v->noteCount;
            core.visualState().release(v);
            if (count < last) ++load.visualRegressions;
            last = count;
            ++load.visualsRead;
            std::this_thread::yield();
        }
    });

    for (int i = 0; i < hostCalls; ++i) {
        core.queueHostEvent(note(1, 60, i % 2 ? 0 : 90));
        core.processReplacing(nullptr, outs, 64 + (i * 37) % 449);
        std::this_thread::yield();
    }
    load.stop.store(true);
    interface.join();
    for (auto& t : players) t.join();
    plant.join();
}

}  // namespace

TEST(SpineConcurrency, EveryInterfaceNoteReachesTheEngineWhileRecordsChange) {
    auto e = std::make_unique<BlockTestEngine>();
    BlockTestEngine* engine = e.get();
    engine->seen.reserve(1 << 20);
    PluginCore core(&quietHost, std::move(e));
    core.fixNoiseSeed(1);
    core.resume();
    Load load;
    runLoad(core, load, 3000);
    // Let the ring and pending queue run dry.
    std::vector<float> left(4096), right(4096);
    float* outs[2] = {left.data(), right.data()};
    for (int i = 0; i < 4; ++i) core.processReplacing(nullptr, outs, 4096);

    int delivered = 0;
    for (const auto& s : engine->seen) delivered += s.event.status == 0x93;
    EXPECT_EQ(delivered, load.injected.load());
    EXPECT_GT(load.injected.load(), 0);
    EXPECT_EQ(load.visualRegressions.load(), 0);
    EXPECT_GT(load.visualsRead.load(), 0);
    EXPECT_EQ(core.pendingCount(), 0);
}

TEST(SpineConcurrency, SoundEngineRendersWhileRecordsChange) {
    PluginCore core(&quietHost);
    core.fixNoiseSeed(1);
    core.resume();
    Load load;
    runLoad(core, load, 300);
    EXPECT_GT(load.injected.load(), 0);
    EXPECT_EQ(load.visualRegressions.load(), 0);
    VisualState* v = core.visualState().acquire();
    EXPECT_GT(v->noteCount, 0u);
    core.visualState().release(v);
}
