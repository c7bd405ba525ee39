#include "wizard/gate.h"

#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <string>

using namespace kestra;

namespace {
struct GateTest : ::testing::Test {
    std::function<void()> add(char what) {
        return [this, what] { order += what; };
    }
    Gate gate;
    std::string order;
};

TEST_F(GateTest, InsideAStepTicksAreDroppedAndButtonsRunBehindItInTheirOrder) {
    gate.runOrDrop([this] {
        order += '(';
        gate.runOrDrop(add('t'));
        gate.runOrKeep([this] {
            order += 'a';
            gate.runOrKeep(add('c'));
        });
        gate.runOrKeep(add('b'));
        order += ')';
    });
    EXPECT_EQ(order, "()abc");
    gate.runOrDrop(add('t'));
    EXPECT_EQ(order, "()abct");
}

TEST_F(GateTest, WhileAModalDialogIsOpenEverythingRuns) {
    gate.runOrKeep([this] {
        gate.runOrKeep(add('a')); // arrived before the dialog, and runs before what arrives inside
        {
            Gate::Outside const outside(gate);
            gate.runOrKeep(add('b'));
            gate.runOrDrop(add('t'));
        }
        gate.runOrDrop(add('x'));
        order += ')';
    });
    EXPECT_EQ(order, "abt)");
}

TEST_F(GateTest, OfAClosedGateNothingRunsAndNothingIsHeld) {
    auto const held = std::make_shared<int>();
    gate.runOrKeep([&] {
        gate.runOrKeep([this, held] { order += 'k'; });
        gate.close();
        gate.runOrKeep([this, held] { order += 'k'; });
        EXPECT_EQ(held.use_count(), 1);
    });
    gate.runOrKeep(add('a'));
    gate.runOrDrop(add('t'));
    EXPECT_EQ(order, "");
}

TEST_F(GateTest, AStepThatThrowsLeavesTheGateOpen) {
    EXPECT_THROW(gate.runOrDrop([] { throw std::runtime_error("no host"); }), std::runtime_error);
    gate.runOrDrop(add('t'));
    EXPECT_EQ(order, "t");
}
} // namespace
