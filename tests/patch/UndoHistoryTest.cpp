#include "patch/UndoHistory.h"

#include <gtest/gtest.h>

#include <string>

namespace {

class Host : public UndoHost {
public:
    NorvelleProgram currentProgram() const override { return current; }
    void setCurrentProgram(const NorvelleProgram& record) override {
        current = record;
        ++sets;
    }
    // A change the user makes after saving undo.
    void change(uint32_t seed) {
        current.seed = seed;
        current.touch(true);
    }
    NorvelleProgram current;
    int sets = 0;
};

}  // namespace

TEST(UndoHistoryTest, MergedSavesWithTheSameLabelMakeOneEntry) {
    Host host;
    int limit = 100;
    UndoHistory h(host, limit);
    h.saveUndo("Change Volume", true);
    host.change(2);
    h.saveUndo("Change Volume", true);
    host.change(3);
    EXPECT_EQ(h.size(), 1u);
    EXPECT_EQ(h.position(), 1u);
    EXPECT_EQ(h.recordAt(0).seed, 1u);  // the state before the first change of the run
    h.undo();
    EXPECT_EQ(host.current.seed, 1u);
}

TEST(UndoHistoryTest, ADifferentLabelBetweenMakesThreeEntries) {
    Host host;
    int limit = 100;
    UndoHistory h(host, limit);
    h.saveUndo("Change Volume", true);
    h.saveUndo("Rotation", true);
    h.saveUndo("Change Volume", true);
    EXPECT_EQ(h.size(), 3u);
}

TEST(UndoHistoryTest, WithoutMergeEverySaveCounts) {
    Host host;
    int limit = 100;
    UndoHistory h(host, limit);
    h.saveUndo("Plant");
    h.saveUndo("Plant");
    EXPECT_EQ(h.size(), 2u);
}

TEST(UndoHistoryTest, SaveAfterUndoDropsRedoAndNeverMerges) {
    Host host;
    int limit = 100;
    UndoHistory h(host, limit);
    h.saveUndo("Change Volume", true);
    host.change(2);
    h.saveUndo("Rotation", true);
    host.change(3);
    h.undo();  // back to 2
    EXPECT_TRUE(h.canRedo());
    EXPECT_EQ(host.current.seed, 2u);
    h.saveUndo("Change Volume", true);  // same label as the entry before: no merge
    host.change(4);
    EXPECT_FALSE(h.canRedo());
    EXPECT_EQ(h.size(), 2u);
    EXPECT_EQ(h.position(), 2u);
    h.undo();
    EXPECT_EQ(host.current.seed, 2u);
    h.undo();
    EXPECT_EQ(host.current.seed, 1u);
    EXPECT_FALSE(h.canUndo());
}

TEST(UndoHistoryTest, OldestStepsGoBeyondTheLimit) {
    Host host;
    int limit = 100;
    UndoHistory h(host, limit);
    for (uint32_t step = 0; step < 102; ++step) {
        h.saveUndo("Step");
        host.change(step + 2);  // states 1 (Init) ... 103
    }
    EXPECT_EQ(h.size(), 101u);  // limit + 1
    EXPECT_EQ(h.position(), 101u);
    int undos = 0;
    while (h.canUndo()) {
        h.undo();
        ++undos;
    }
    EXPECT_EQ(undos, 101);
    EXPECT_EQ(h.position(), 0u);
    EXPECT_EQ(host.current.seed, 2u);  // the first state (1) is gone
    const int sets = host.sets;
    h.undo();  // at position 0 nothing happens
    EXPECT_EQ(host.sets, sets);
    EXPECT_EQ(host.current.seed, 2u);
}

TEST(UndoHistoryTest, UndoThenRedoRestoresTheStateExactly) {
    Host host;
    int limit = 100;
    UndoHistory h(host, limit);
    h.saveUndo("Plant");
    host.change(77);
    host.current.setName(u"Changed");
    const uint32_t stamp = host.current.stamp();
    ASSERT_TRUE(host.current.modified);
    h.undo();
    EXPECT_EQ(host.current.seed, 1u);
    EXPECT_FALSE(host.current.modified);
    EXPECT_EQ(h.size(), 2u);
    EXPECT_EQ(h.labelAt(1), "");  // stored by undo, reached only by redo
    h.redo();
    EXPECT_EQ(host.current.seed, 77u);
    EXPECT_TRUE(host.current.modified);
    EXPECT_EQ(host.current.getName(), u"Changed");
    EXPECT_EQ(host.current.stamp(), stamp);  // the restored record keeps its stamp
    EXPECT_FALSE(h.canRedo());
}

TEST(UndoHistoryTest, RepeatedUndoRedoWalksTheHistory) {
    Host host;
    int limit = 100;
    UndoHistory h(host, limit);
    for (uint32_t s = 2; s <= 5; ++s) {
        h.saveUndo("Step " + std::to_string(s));
        host.change(s);
    }
    h.undo();
    h.undo();
    EXPECT_EQ(host.current.seed, 3u);
    EXPECT_EQ(h.undoLabel(), "Step 3");
    EXPECT_EQ(h.redoLabel(), "Step 4");
    h.redo();
    EXPECT_EQ(host.current.seed, 4u);
    h.redo();
    EXPECT_EQ(host.current.seed, 5u);
    EXPECT_FALSE(h.canRedo());
    h.undo();
    EXPECT_EQ(host.current.seed, 4u);
}

TEST(UndoHistoryTest, LabelsPassThroughTheCatalogue) {
    Host host;
    int limit = 100;
    UndoHistory h(host, limit, [](std::string_view label) {
        return label == "Change Wheel" ? std::string("Change Mod Wheel") : std::string(label);
    });
    int notes = 0;
    h.onChanged = [&notes] { ++notes; };
    h.saveUndo("Change Wheel", true);
    h.saveUndo("Change Wheel", true);  // merges on the translated label
    EXPECT_EQ(h.size(), 1u);
    EXPECT_EQ(h.undoLabel(), "Change Mod Wheel");
    EXPECT_EQ(notes, 1);
}

TEST(UndoHistoryTest, TheLimitIsReadAtEverySave) {
    Host host;
    int limit = 3;
    UndoHistory h(host, limit);
    for (int i = 0; i < 10; ++i) h.saveUndo("s");
    EXPECT_EQ(h.size(), 4u);
    limit = 1;
    h.saveUndo("s");
    EXPECT_EQ(h.size(), 2u);
    EXPECT_EQ(h.position(), 2u);
}

TEST(UndoHistoryTest, ClearForgetsEveryStepAndTellsTheListeners) {
    Host host;
    int limit = 100;
    UndoHistory h(host, limit);
    int told = 0;
    h.onChanged = [&] { ++told; };
    h.saveUndo("Plant");
    host.change(2);
    h.undo();
    ASSERT_TRUE(h.canRedo());
    told = 0;
    h.clear();
    EXPECT_EQ(told, 1);
    EXPECT_FALSE(h.canUndo());
    EXPECT_FALSE(h.canRedo());
    EXPECT_EQ(h.undoLabel(), "");
    // Nothing came back: the current record stays.
    EXPECT_EQ(host.current.seed, 1u);
    h.clear();
    EXPECT_EQ(told, 1);
}
