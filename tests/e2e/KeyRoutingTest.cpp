// Which keys reach the host's key callbacks, with and without a text field holding the
// keyboard. Key codes in the host's lines are the library's (GLFW's): K 75, 8 56, 9 57, Tab 258.

#include "HostCase.h"

namespace e2e {
namespace {

class KeyRouting : public HostCase {
protected:
    /// Holds the key long enough for the server to repeat it many times.
    void Hold(const std::string& keysym)
    {
        ASSERT_TRUE(x->RepeatsWhenHeld(keysym))
            << "the X server does not repeat held keys; this would prove nothing";
        x->KeyDown(keysym);
        XSession::Pause(1500ms);
        x->KeyUp(keysym);
    }
};

TEST_F(KeyRouting, KeysReachTheHostWithTheirModifiersEvenWhileAnEditBoxHasTheKeyboard)
{
    ASSERT_NO_FATAL_FAILURE(OpenHost());
    Rest();

    for (const auto& [modifier, bits] : {std::pair{"", "0000"}, {"Shift_L", "1000"}, {"Control_L", "0100"}}) {
        if (*modifier != '\0')
            x->KeyDown(modifier);
        x->Tap("k");
        if (*modifier != '\0')
            x->KeyUp(modifier);
        EXPECT_TRUE(WaitForLines(std::string("keyup 75 ") + bits, 1)) << Output();
        EXPECT_EQ(CountLines(std::string("keydown 75 ") + bits), 1u) << Output();
    }

    // Held: the host hears of it once.
    ASSERT_NO_FATAL_FAILURE(Hold("k"));
    EXPECT_TRUE(WaitForLines("keyup 75 0000", 2)) << Output();
    EXPECT_EQ(CountLines("keydown 75 0000"), 2u) << "a held key's repeats reached the host\n" << Output();

    // A focused edit box still lets keys through to the host.
    ASSERT_NEAR(MarkerDiameter(start), 3.0, 1.0) << "points start 3 px wide";
    // A double click into the "Point size" field selects its value.
    const Rect box = FindPointSizeField(start);
    ASSERT_GT(box.Width(), 0);
    x->DoubleClick(Button::Left, box.x0 + 10, (box.y0 + box.y1) / 2);

    // A digit edits the field (the points grow to 9 px) and reaches the host as well.
    x->Tap("9");
    EXPECT_TRUE(WaitForLines("keydown 57 0000", 1)) << "the digit did not reach the host\n" << Output();
    EXPECT_TRUE(WaitForLines("keyup 57 0000", 1)) << "the digit's release did not reach the host\n"
                                                  << Output();
    ExpectMarkerDiameter(9.0, "after-9");

    // A held digit: the field gets the repeats, the host only the first press.
    ASSERT_NO_FATAL_FAILURE(Hold("8"));
    EXPECT_TRUE(WaitForLines("keyup 56 0000", 1)) << Output();
    EXPECT_EQ(CountLines("keydown 56 0000"), 1u) << "a held key's repeats reached the host\n" << Output();

    // Tab still opens the layout chooser, and the host still hears it.
    const Picture before = WaitForQuiet();
    const Rect top{0, 0, layout.area.x1, layout.area.y1 / 2 - 110};
    x->Tap("Tab");
    EXPECT_TRUE(WaitForLines("keydown 258 0000", 1)) << Output();
    EXPECT_TRUE(WaitForLines("keyup 258 0000", 1)) << Output();
    const Picture dimmed =
        Keep("after-tab",
             WaitForSettled(
                 [&](const Picture& p) { return MeanBrightness(p, top) < 0.5 * MeanBrightness(before, top); },
                 15s));
    EXPECT_FALSE(dimmed.Empty()) << "Tab did not open the layout chooser while the field had the keyboard";

    x->Tap("Tab");
    EXPECT_TRUE(WaitForLines("keydown 258 0000", 2)) << Output();
    const Picture undimmed =
        Keep("after-second-tab",
             WaitForSettled(
                 [&](const Picture& p) { return MeanBrightness(p, top) > 0.8 * MeanBrightness(before, top); },
                 15s));
    EXPECT_FALSE(undimmed.Empty()) << "a second Tab did not close the layout chooser";
}

} // namespace
} // namespace e2e
