#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "patch/NorvelleProgram.h"
#include "patch/SharedStringCell.h"

namespace {

// Every name written here is one letter repeated a number of times that
// depends on the letter, so a reader can tell a whole name from a torn one.
std::u16string nameFor(int i) {
    const char16_t letter = static_cast<char16_t>(u'A' + i % 26);
    return std::u16string(static_cast<size_t>(1 + (i % 26) * 7), letter);
}

bool isWholeName(const std::u16string& text) {
    if (text.empty()) return false;
    const int letter = text[0] - u'A';
    if (letter < 0 || letter >= 26) return false;
    if (text.size() != static_cast<size_t>(1 + letter * 7)) return false;
    for (char16_t c : text) {
        if (c != text[0]) return false;
    }
    return true;
}

TEST(ProgramNameCell, ReadsWhatWasLastWritten) {
    SharedStringCell cell;
    EXPECT_EQ(cell.read(), u"");
    for (int i = 0; i < 10; ++i) {
        cell.write(nameFor(i));
        EXPECT_EQ(cell.read(), nameFor(i));
    }
    SharedStringCell copy(cell);
    EXPECT_EQ(copy.read(), nameFor(9));
}

TEST(ProgramNameCell, ReadersNeverSeeAHalfWrittenName) {
    NorvelleProgram program;
    program.setName(nameFor(0));
    std::atomic<bool> done{false};
    std::atomic<int> torn{0};
    std::atomic<long> reads{0};

    std::vector<std::thread> readers;
    for (int r = 0; r < 2; ++r) {
        readers.emplace_back([&] {
            do {
                if (!isWholeName(program.getName())) torn.fetch_add(1);
                // A copy takes the name through the same cell.
                NorvelleProgram copy(program);
                if (!isWholeName(copy.getName())) torn.fetch_add(1);
                reads.fetch_add(1);
            } while (!done.load());
        });
    }
    std::thread writer([&] {
        // The writes start once a reader is reading: on a busy machine the
        // readers may otherwise be scheduled only after the last write.
        while (reads.load() == 0) std::this_thread::yield();
        for (int i = 1; i <= 20000; ++i) program.setName(nameFor(i));
        done.store(true);
    });
    writer.join();
    for (auto& t : readers) t.join();

    EXPECT_EQ(torn.load(), 0);
    EXPECT_GT(reads.load(), 0);
    EXPECT_EQ(program.getName(), nameFor(20000));
}

TEST(ProgramNameCell, TwoWritersAndReadersLeaveOneOfTheWrittenNames) {
    SharedStringCell cell(nameFor(3));
    std::atomic<int> running{2};
    std::atomic<int> torn{0};
    auto writerBody = [&](int offset) {
        for (int i = 0; i < 5000; ++i) cell.write(nameFor(offset + 2 * i));
        running.fetch_sub(1);
    };
    std::thread w1(writerBody, 0);
    std::thread w2(writerBody, 1);
    std::thread reader([&] {
        while (running.load() > 0) {
            if (!isWholeName(cell.read())) torn.fetch_add(1);
        }
    });
    w1.join();
    w2.join();
    reader.join();
    EXPECT_EQ(torn.load(), 0);
    const std::u16string last = cell.read();
    EXPECT_TRUE(last == nameFor(9998) || last == nameFor(9999)) << last.size();
}

TEST(ProgramNameCell, ParametersStampsAndNameChangeWhileAnotherThreadCopies) {
    // Parameters and the stamp are single atomic words, the name goes through
    // its cell: a reader may see a mixture of old and new parameters, but
    // every value it sees is one that was written.
    NorvelleProgram program;
    std::atomic<bool> done{false};
    std::atomic<int> strange{0};
    std::thread reader([&] {
        while (!done.load()) {
            NorvelleProgram copy(program);
            for (int i = 0; i < PARAM_COUNT; ++i) {
                const float v = copy.param(i);
                if (!(v >= 0.0f && v <= 1.0f)) strange.fetch_add(1);
            }
            if (copy.stamp() == 0) strange.fetch_add(1);
            if (!isWholeName(copy.getName()) && copy.getName() != u"Init") strange.fetch_add(1);
        }
    });
    for (int i = 0; i < 20000; ++i) {
        program.setParam(i % PARAM_COUNT, static_cast<float>(i % 1000) / 999.0f);
        program.touch(false);
        if (i % 16 == 0) program.setName(nameFor(i));
    }
    done.store(true);
    reader.join();
    EXPECT_EQ(strange.load(), 0);
}

}  // namespace
