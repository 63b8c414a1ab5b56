#include "views/MaskingView.h"

#include "platform/testing/FakeLog.h"

#include <gtest/gtest.h>

namespace companion::testing {

namespace {

/// Writes "button on" and "button off".
class FakeSubview : public MaskedSubview {
public:
    FakeSubview(Transcript& transcript, std::string name, bool canBeEnabled = true)
        : m_transcript(transcript)
        , m_name(std::move(name))
        , m_canBeEnabled(canBeEnabled)
    {
    }

    bool canBeEnabled() const override { return m_canBeEnabled; }
    void setEnabled(bool enabled) override { m_transcript.add(m_name + (enabled ? " on" : " off")); }

private:
    Transcript& m_transcript;
    const std::string m_name;
    const bool m_canBeEnabled;
};

} // namespace

class MaskingViewTest : public ::testing::Test {
protected:
    Transcript transcript;
    FakeSystemLog log{transcript};
    FakeSubview button{transcript, "button"};
    FakeSubview image{transcript, "image", /*canBeEnabled=*/false};
    FakeSubview field{transcript, "field"};
    std::vector<MaskedSubview*> subviews{&button, &image, &field};
    MaskingView view{log, [this] { return subviews; }};
};

TEST_F(MaskingViewTest, MaskIsOffAtFirst)
{
    EXPECT_FALSE(view.maskEnabled());
    view.setMaskEnabled(true);
    EXPECT_TRUE(view.maskEnabled());
}

TEST_F(MaskingViewTest, EveryRedrawDisablesTheSubviewsInOrderWhateverTheMask)
{
    for (const bool mask : {false, true}) {
        view.setMaskEnabled(mask);
        view.didDraw();
        EXPECT_EQ(transcript.take(", "), "button off, field off");
    }
}

TEST_F(MaskingViewTest, EnablingLastsUntilTheNextRedraw)
{
    view.enableSubViews();
    EXPECT_EQ(transcript.take(", "), "button on, field on");
    view.didDraw();
    EXPECT_EQ(transcript.take(", "), "button off, field off");
}

TEST_F(MaskingViewTest, SubviewsAreThoseOfTheMoment)
{
    subviews = {&field};
    view.setSubViewsEnabled(true);
    EXPECT_EQ(transcript.take(", "), "field on");
    subviews.clear();
    view.disableSubViews();
    EXPECT_EQ(transcript.take(", "), "");
}

TEST_F(MaskingViewTest, HitTestAnswersNoViewWhileMasking)
{
    EXPECT_EQ(view.hitTest(&button), &button);
    view.setMaskEnabled(true);
    EXPECT_EQ(view.hitTest(&button), nullptr);
    view.setMaskEnabled(false);
    EXPECT_EQ(view.hitTest(&field), &field);
}

TEST_F(MaskingViewTest, ClickIsLogged)
{
    view.mouseDown();
    EXPECT_EQ(transcript.take(), "log Mouse down");
}

} // namespace companion::testing
