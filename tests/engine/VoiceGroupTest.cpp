// Voices rendered four at a time must sound exactly as each rendered alone,
// one after the other, into the same buses.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine/BranchDecoder.h"
#include "engine/EngineRates.h"
#include "engine/Voice.h"
#include "patch/GeneTable.h"
#include "patch/MidiConfigRecord.h"
#include "patch/NorvelleProgram.h"
#include "tests/engine/WideLoops.h"

namespace {

struct Rig {
    explicit Rig(NorvelleProgram& program) : rates(EngineRates::forSampleRate(48000.0f)) {
        for (int k = 0; k < 12; ++k) decoders[k].setBranch(k);
        for (int i = 0; i < 4; ++i) {
            voices.emplace_back(&rates);
            voices.back().clear(uint32_t(7 * i + 3));
        }
        block.program = &program;
        block.midiConfig = &config;
        block.releaseCoef = 0.999f;
        block.left = left;
        block.right = right;
        block.send = send;
        block.silent = &silent;
        block.sendSilent = &sendSilent;
        block.decoders = decoders;
    }
    void clearBuses() {
        for (int i = 0; i < 64; ++i) left[i] = right[i] = send[i] = 0.0f;
        silent = sendSilent = true;
    }
    EngineRates rates;
    MidiConfigRecord config;
    engine::BranchDecoder decoders[12];
    std::vector<Voice> voices;
    VoiceBlock block;
    float left[64], right[64], send[64];
    bool silent = true, sendSilent = true;
};

NorvelleProgram noisyPatch() {
    NorvelleProgram p;
    p.setGene(Gene::a_noise, 0.8f);
    p.setGene(Gene::b_noise, 0.75f);
    p.setGene(Gene::fm_amt, 0.8f);
    p.setGene(Gene::sub_am, 0.9f);
    p.setGene(Gene::fx_mix, 0.7f);
    for (int b = 0; b < BRANCH_COUNT; ++b) p.setParam(Param::Branch1 + b, 0.3f + 0.05f * float(b));
    p.computeBranchDeviations();
    p.touch(false);
    return p;
}

}  // namespace

TEST(VoiceGroup, FourAtOnceSoundAsEachAloneThroughStartsReleasesAndSilence) {
    // The four-lane loops, and the eight-lane ones where they run.
    for (int width : testsupport::WideLoops::ways()) {
        testsupport::WideLoops loops(width);
        SCOPED_TRACE(std::to_string(width) + " lanes");
        NorvelleProgram program = noisyPatch();
        Rig together(program), alone(program);
        int compared = 0;
        for (int blockIndex = 0; blockIndex < 400; ++blockIndex) {
            for (Rig* r : {&together, &alone}) {
                r->clearBuses();
                // Staggered starts and releases, so that frames see one, two,
                // three and four voices sounding at once; voice 3 starts twice.
                if (blockIndex == 0) r->voices[0].start(5, 0, 48, 100);
                if (blockIndex == 2) r->voices[1].start(40, 0, 55, 80);
                if (blockIndex == 3) r->voices[2].start(17, 0, 61, 127);
                if (blockIndex == 5) r->voices[3].start(0, 0, 70, 30);
                if (blockIndex == 150) r->voices[1].release(9, 0);
                if (blockIndex == 200) r->voices[3].release(33, 0);
                if (blockIndex == 260) r->voices[3].start(20, 0, 66, 90);
                if (blockIndex == 300) r->voices[0].kill();
            }
            Voice* const four[4] = {&together.voices[0], &together.voices[1], &together.voices[2], &together.voices[3]};
            Voice::renderAll(four, 4, together.block);
            for (Voice& v : alone.voices) v.render(alone.block);
            for (int i = 0; i < 64; ++i) {
                ASSERT_EQ(together.left[i], alone.left[i]) << blockIndex << " " << i;
                ASSERT_EQ(together.right[i], alone.right[i]) << blockIndex << " " << i;
                ASSERT_EQ(together.send[i], alone.send[i]) << blockIndex << " " << i;
                if (together.left[i] != 0.0f) ++compared;
            }
            ASSERT_EQ(together.silent, alone.silent);
            ASSERT_EQ(together.sendSilent, alone.sendSilent);
        }
        // The comparison saw sound, not only silence.
        EXPECT_GT(compared, 10000);
    }
}

TEST(VoiceGroup, AllVoicesAtOnceSoundAsEachAlone) {
    // The four-lane loops, and the eight-lane ones where they run.
    for (int width : testsupport::WideLoops::ways()) {
        testsupport::WideLoops loops(width);
        SCOPED_TRACE(std::to_string(width) + " lanes");
        NorvelleProgram program = noisyPatch();
        // Odd counts leave a filter lane spare; 23 voices take two groups.
        for (int count : {3, 7, 20, 23}) {
            Rig together(program), alone(program);
            for (Rig* r : {&together, &alone}) {
                r->voices.clear();
                for (int i = 0; i < count; ++i) {
                    r->voices.emplace_back(&r->rates);
                    r->voices.back().clear(uint32_t(11 * i + 5));
                }
            }
            std::vector<Voice*> all;
            for (Voice& v : together.voices) all.push_back(&v);
            int compared = 0;
            for (int blockIndex = 0; blockIndex < 160; ++blockIndex) {
                for (Rig* r : {&together, &alone}) {
                    r->clearBuses();
                    // Starts spread over blocks and frames, some releases and a
                    // kill, so that every frame has its own set of voices.
                    for (int i = 0; i < count; ++i) {
                        if (blockIndex == i % 9) r->voices[std::size_t(i)].start(5 * i % 64, 0, 40 + 2 * i, 60 + i);
                        if (blockIndex == 60 + 3 * i) r->voices[std::size_t(i)].release(i % 64, 0);
                    }
                    if (blockIndex == 100) r->voices[1].kill();
                }
                Voice::renderAll(all.data(), count, together.block);
                for (Voice& v : alone.voices) v.render(alone.block);
                for (int i = 0; i < 64; ++i) {
                    ASSERT_EQ(together.left[i], alone.left[i]) << count << " " << blockIndex << " " << i;
                    ASSERT_EQ(together.right[i], alone.right[i]) << count << " " << blockIndex << " " << i;
                    ASSERT_EQ(together.send[i], alone.send[i]) << count << " " << blockIndex << " " << i;
                    if (together.left[i] != 0.0f) ++compared;
                }
                ASSERT_EQ(together.silent, alone.silent);
                ASSERT_EQ(together.sendSilent, alone.sendSilent);
            }
            EXPECT_GT(compared, 5000) << count;
        }
    }
}
