#include <gtest/gtest.h>

#include "palettes/channeldisplay.h"

namespace tirn {
namespace {

using States = std::vector<int>;

std::vector<ChannelDisplay> displays(const States& states)
{
    std::vector<ChannelDisplay> all;
    for (const int state : states)
        all.push_back({static_cast<ChannelState>(state), 10, 20});
    return all;
}

States stepped(const States& states, bool* changed = nullptr)
{
    std::vector<ChannelDisplay> channels = displays(states);
    const bool any = stepChannels(channels);
    if (changed != nullptr)
        *changed = any;
    States result;
    for (const ChannelDisplay& channel : channels)
        result.push_back(static_cast<int>(channel.state));
    return result;
}

TEST(StepChannels, LeavesSteadyChannelsAlone)
{
    bool changed = true;
    EXPECT_EQ(stepped({0, 1, 0}, &changed), (States{0, 1, 0}));
    EXPECT_FALSE(changed);
    EXPECT_EQ(stepped({}, &changed), States{});
}

TEST(StepChannels, TurnsFlashesOnAndOff)
{
    bool changed = false;
    EXPECT_EQ(stepped({2, 3, 0, 2}, &changed), (States{3, 2, 0, 3}));
    EXPECT_TRUE(changed);
}

TEST(StepChannels, SwapsPalettes)
{
    std::vector<ChannelDisplay> channels = displays({6, 0});
    EXPECT_TRUE(stepChannels(channels));
    EXPECT_EQ(channels[0], (ChannelDisplay{ChannelState::PaletteSwap, 20, 10, true}));
    EXPECT_EQ(channels[1], (ChannelDisplay{ChannelState::Shown, 10, 20}));
}

TEST(StepChannels, HandsTheRotatingFlashOnAndAround)
{
    EXPECT_EQ(stepped({4, 5, 5}), (States{5, 4, 5}));
    EXPECT_EQ(stepped({5, 4, 5}), (States{5, 5, 4}));
    EXPECT_EQ(stepped({5, 5, 4}), (States{4, 5, 5}));
    EXPECT_EQ(stepped({5, 0, 4, 1}), (States{4, 0, 5, 1}));
    EXPECT_EQ(stepped({4, 0, 2, 5}), (States{5, 0, 3, 4}));
}

TEST(StepChannels, KeepsASingleRotatingFlashShown)
{
    bool changed = true;
    EXPECT_EQ(stepped({4}, &changed), States{4});
    EXPECT_FALSE(changed);
    EXPECT_EQ(stepped({0, 4, 1}), (States{0, 4, 1}));
}

TEST(StepChannels, WaitingChannelsAloneStayHidden) { EXPECT_EQ(stepped({5, 5}), (States{5, 5})); }

/// A channel of palette 5 that swaps with palette 7, after so many swaps.
ChannelDisplay swapping(int swaps)
{
    ChannelDisplay channel;
    choosePalette(channel, 5);
    chooseSecondPalette(channel, 7);
    chooseState(channel, ChannelState::PaletteSwap);
    for (int swap = 0; swap < swaps; ++swap)
        swapPalettes({&channel, 1});
    return channel;
}

TEST(ChosenPalettes, StayWhileTheyTakeTurns)
{
    for (const int swaps : {0, 1, 2, 3}) {
        const ChannelDisplay channel = swapping(swaps);
        EXPECT_EQ(channel.palette, swaps % 2 == 0 ? 5 : 7);
        EXPECT_EQ(channel.alternatePalette, swaps % 2 == 0 ? 7 : 5);
        EXPECT_EQ(chosenPalette(channel), 5);
        EXPECT_EQ(secondPalette(channel), 7);
    }
}

TEST(ChosenPalettes, TheChosenOneIsDrawnWhenSwappingEnds)
{
    for (const int swaps : {0, 1, 2}) {
        for (const ChannelState state : {ChannelState::Shown, ChannelState::Hidden, ChannelState::FlashOn}) {
            ChannelDisplay channel = swapping(swaps);
            chooseState(channel, state);
            EXPECT_EQ(channel, (ChannelDisplay{state, 7, 5})) << swaps;
        }
        ChannelDisplay again = swapping(swaps);
        chooseState(again, ChannelState::PaletteSwap);
        EXPECT_EQ(again, swapping(swaps)) << "the same state again changes nothing";
    }
}

TEST(ChosenPalettes, AnotherChoiceIsDrawnAtOnce)
{
    for (const int swaps : {0, 1}) {
        ChannelDisplay channel = swapping(swaps);
        choosePalette(channel, 9);
        EXPECT_EQ(channel, (ChannelDisplay{ChannelState::PaletteSwap, 7, 9}));
        channel = swapping(swaps);
        choosePalette(channel, 5);
        EXPECT_EQ(channel, (ChannelDisplay{ChannelState::PaletteSwap, 7, 5})) << "the same one, too";
        channel = swapping(swaps);
        chooseSecondPalette(channel, 9);
        EXPECT_EQ(channel, (ChannelDisplay{ChannelState::PaletteSwap, 9, 5}));
    }
}

TEST(FlashSteps, EachPartChangesItsOwnStatesOnly)
{
    std::vector<ChannelDisplay> channels = displays({2, 3, 4, 5, 6});
    turnFlashes(channels);
    EXPECT_EQ(channels[0].state, ChannelState::FlashOff);
    EXPECT_EQ(channels[1].state, ChannelState::FlashOn);
    EXPECT_EQ(channels[2].state, ChannelState::RotatingFlashOn);
    EXPECT_EQ(channels[4].palette, 20);
    rotateFlash(channels);
    EXPECT_EQ(channels[2].state, ChannelState::RotatingFlashWaiting);
    EXPECT_EQ(channels[3].state, ChannelState::RotatingFlashOn);
    EXPECT_EQ(channels[4].palette, 20);
    swapPalettes(channels);
    EXPECT_EQ(channels[4].palette, 10);
    EXPECT_EQ(channels[0], (ChannelDisplay{ChannelState::FlashOff, 10, 20}));
}

} // namespace
} // namespace tirn
