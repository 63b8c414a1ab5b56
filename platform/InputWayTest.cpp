#include "platform/InputWay.h"

#include <gtest/gtest.h>

namespace companion::testing {

TEST(InputWayTest, X11HasXTestAlone)
{
    EXPECT_EQ(inputWays(/*isWaylandSession=*/false), std::vector{InputWay::xtest});
    EXPECT_EQ(inputChoiceText(/*isWaylandSession=*/false, InputWay::xtest, {}),
        "Touches are injected with the XTEST extension of the X server");
}

TEST(InputWayTest, WaylandPrefersTheVirtualPointerToThePortalToXTest)
{
    EXPECT_EQ(inputWays(/*isWaylandSession=*/true),
        (std::vector{InputWay::virtualPointer, InputWay::portal, InputWay::xtest}));
}

TEST(InputWayTest, TheChoiceNamesWhyWhatComesBeforeItWasNotPicked)
{
    EXPECT_EQ(inputChoiceText(/*isWaylandSession=*/true, InputWay::xtest,
                  {{InputWay::virtualPointer, "no virtual pointer"}, {InputWay::portal, "no portal"}}),
        "On Wayland touches reach X11 programs only; an X11 session has no such limit (no virtual pointer; no portal)");
}

TEST(InputWayTest, WithoutAnyWayThereIsAdviceOnWaylandOnly)
{
    EXPECT_EQ(noInputWayText({{InputWay::xtest, "no X display"}}), "Cannot inject input: no X display");
    EXPECT_EQ(noInputWayText({{InputWay::portal, "no portal"}, {InputWay::xtest, "no X display"}}),
        "Cannot inject input: no portal; no X display; install xdg-desktop-portal and its backend for this desktop");
}

} // namespace companion::testing
