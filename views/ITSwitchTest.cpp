#include "views/ITSwitch.h"

#include "platform/testing/FakeLog.h"

#include <gmock/gmock.h>

namespace companion::testing {

namespace {

using ::testing::ElementsAre;

constexpr Color teal{28 / 255.0, 189 / 255.0, 157 / 255.0, 0.75};
constexpr Color plum{0.4, 0.1, 0.3, 0.9};

class RecordingLayers : public ITSwitchLayers {
public:
    explicit RecordingLayers(Transcript& transcript)
        : m_transcript(transcript)
    {
    }

    void reloadLayerSize() override { m_transcript.add("sizes"); }
    void reloadLayer() override { m_transcript.add("look"); }

private:
    Transcript& m_transcript;
};

std::string text(const BoundValue& value)
{
    if (const bool* flag = std::get_if<bool>(&value))
        return *flag ? "true" : "false";
    return std::get<std::string>(value);
}

/// A switch of 61 × 27 points at an odd place, whose on half begins at 30.5.
class ITSwitchTest : public ::testing::Test {
protected:
    ITSwitchTest()
    {
        control.setFrame({{211, 97}, {61, 27}});
        control.setLayers(&layers);
        control.setAction([this](ITSwitch& sender) {
            EXPECT_EQ(&sender, &control);
            transcript.add(sender.checked() ? "action on" : "action off");
        });
        transcript.clear();
    }

    ~ITSwitchTest() override { control.setLayers(nullptr); }

    void click()
    {
        control.mouseDown();
        control.mouseUp();
    }

    void dragTo(Point pointer)
    {
        control.mouseDown();
        control.mouseDragged(pointer);
        control.mouseUp();
    }

    /// What the action said since the last call.
    std::string actions()
    {
        std::string text;
        for (const std::string& line : transcript.lines()) {
            if (line.starts_with("action"))
                text += line + ";";
        }
        transcript.clear();
        return text;
    }

    void bindChecked(Binding binding) { control.bind("checked", std::move(binding)); }

    std::string transcriptOfChecking()
    {
        control.setChecked(true);
        return transcript.take("; ");
    }

    Transcript transcript;
    FakeSystemLog log{transcript};
    ValueTransformer transformer{
        true, [](const BoundValue& value) { return std::string(std::get<bool>(value) ? "yes" : "no"); }};
    ValueTransformerRegistry transformers{{"YesNo", &transformer}};
    ITSwitch control{log, transformers};
    RecordingLayers layers{transcript};
    const std::function<void(const BoundValue&, const std::string&)> object =
        [this](const BoundValue& value, const std::string& keyPath) {
            transcript.add("write " + text(value) + " to " + keyPath);
        };
};

} // namespace

TEST_F(ITSwitchTest, StartsOffEnabledAndUntouched)
{
    EXPECT_FALSE(control.checked());
    EXPECT_TRUE(control.isEnabled());
    EXPECT_FALSE(control.isActive());
    EXPECT_FALSE(control.hasDragged());
    EXPECT_FALSE(control.isDraggingTowardsOn());
    EXPECT_EQ(control.tintColor(), teal);
    EXPECT_EQ(control.disabledBorderColor(), (Color{0, 0, 0, 0.2}));
    EXPECT_TRUE(control.acceptsFirstMouse());
}

TEST_F(ITSwitchTest, WhatDrawsItIsToldToLayOutTheSizesAndThenTheLook)
{
    control.setLayers(&layers);
    EXPECT_EQ(transcript.take(), "sizes\nlook");
}

TEST_F(ITSwitchTest, AFrameChangesTheSizesOnly)
{
    control.setFrame({{0, 0}, {80, 40}});
    EXPECT_EQ(transcript.take(), "sizes");
}

TEST_F(ITSwitchTest, SettingFromCodeRedrawsEvenIfUnchangedAndNeverSendsTheAction)
{
    control.setChecked(true);
    EXPECT_TRUE(control.checked());
    control.setChecked(true);
    control.setChecked(false);
    EXPECT_EQ(transcript.take(), "look\nlook\nlook");
}

TEST_F(ITSwitchTest, ColoursAndEnablingRedraw)
{
    control.setTintColor(plum);
    control.setDisabledBorderColor(plum);
    control.setEnabled(false);
    EXPECT_EQ(transcript.take(), "look\nlook\nlook");
    EXPECT_EQ(control.tintColor(), plum);
    EXPECT_EQ(control.disabledBorderColor(), plum);
    control.setTintColor(std::nullopt);
    control.setDisabledBorderColor(std::nullopt);
    EXPECT_EQ(control.tintColor(), teal);
    EXPECT_EQ(control.disabledBorderColor(), (Color{0, 0, 0, 0.2}));
}

TEST_F(ITSwitchTest, TheKnobIsTheInnerWidthByTheGoldenRatioInSinglePrecision)
{
    const Rect knob = control.rectForKnob();
    EXPECT_EQ(knob.origin, (Point{2, 2}));
    EXPECT_EQ(knob.size.height, 23);
    EXPECT_EQ(knob.size.width, 57 / static_cast<double>(1.618034F));
    EXPECT_NE(knob.size.width, 57 / 1.618034);
}

TEST_F(ITSwitchTest, APressedKnobIsTheInnerWidthBy1Point38)
{
    control.mouseDown();
    EXPECT_EQ(control.rectForKnob(), (Rect{{2, 2}, {57 / 1.38, 23}}));
    control.setChecked(true);
    EXPECT_EQ(control.rectForKnob(), (Rect{{61 - 57 / 1.38 - 2, 2}, {57 / 1.38, 23}}));
}

TEST_F(ITSwitchTest, TheKnobLiesAtTheRightWhenOn)
{
    control.setChecked(true);
    const Rect knob = control.rectForKnob();
    EXPECT_DOUBLE_EQ(knob.origin.x + knob.size.width + 2, 61);
    EXPECT_EQ(knob.origin.y, 2);
}

TEST_F(ITSwitchTest, ADraggedKnobFollowsThePointerAndNotTheState)
{
    control.setChecked(true);
    control.mouseDown();
    control.mouseDragged({30.4, 0});
    EXPECT_EQ(control.rectForKnob().origin.x, 2);
    control.mouseDragged({30.5, -900});
    EXPECT_EQ(control.rectForKnob().origin.x, 61 - 57 / 1.38 - 2);
}

TEST_F(ITSwitchTest, CornersAreHalfOfEachLayersOwnHeight)
{
    const ITSwitch::Geometry geometry = control.geometry();
    EXPECT_EQ(geometry.knob, control.rectForKnob());
    EXPECT_EQ(geometry.knobInside, (Rect{{0, 0}, geometry.knob.size}));
    EXPECT_EQ(geometry.trackCornerRadius, 13.5);
    EXPECT_EQ(geometry.knobCornerRadius, 11.5);
    EXPECT_EQ(geometry.knobInsideCornerRadius, 11.5);
    EXPECT_EQ(control.focusRingCornerRadius(), 13.5);
}

TEST_F(ITSwitchTest, OffItIsABorderWithATintedKnob)
{
    const ITSwitch::Look look = control.look();
    EXPECT_EQ(look.trackBorder, teal);
    EXPECT_EQ(look.trackFill, clear);
    EXPECT_EQ(look.knobInside, teal);
}

TEST_F(ITSwitchTest, OnItIsFilledWithTheTintAndTheKnobIsWhite)
{
    control.setTintColor(plum);
    control.setChecked(true);
    const ITSwitch::Look look = control.look();
    EXPECT_EQ(look.trackBorder, plum);
    EXPECT_EQ(look.trackFill, plum);
    EXPECT_EQ(look.knobInside, white);
}

TEST_F(ITSwitchTest, ADragTowardsOnLooksOn)
{
    control.mouseDown();
    control.mouseDragged({40, 3});
    EXPECT_EQ(control.look().trackFill, teal);
    control.setChecked(true);
    control.mouseDragged({20, 3});
    EXPECT_EQ(control.look().trackFill, clear);
}

TEST_F(ITSwitchTest, ADisabledSwitchIsDrawnAtHalfOpacity)
{
    EXPECT_EQ(control.look().opacity, 1.0);
    control.setEnabled(false);
    EXPECT_EQ(control.look().opacity, 0.5);
}

TEST_F(ITSwitchTest, ItOvershootsIn400MillisecondsExceptInADrag)
{
    EXPECT_EQ(ITSwitch::animationDuration, std::chrono::milliseconds(400));
    EXPECT_EQ(control.look().timing, (TimingFunction{0.25, 1.5, 0.5, 1}));
    control.mouseDown();
    EXPECT_EQ(control.look().timing, (TimingFunction{0.25, 1.5, 0.5, 1}));
    control.mouseDragged({40, 3});
    EXPECT_EQ(control.look().timing, std::nullopt);
    control.mouseUp();
    EXPECT_EQ(control.look().timing, (TimingFunction{0.25, 1.5, 0.5, 1}));
}

TEST_F(ITSwitchTest, AClickTogglesAndSendsTheActionOnce)
{
    click();
    EXPECT_EQ(transcript.take(), "look\nlook\naction on\nlook");
    click();
    EXPECT_EQ(actions(), "action off;");
    EXPECT_FALSE(control.isActive());
}

TEST_F(ITSwitchTest, ADragToTheOtherHalfTogglesAndToTheSameHalfDoesNothing)
{
    dragTo({30.4, 9});
    EXPECT_EQ(actions(), "");
    dragTo({30.5, 9});
    EXPECT_EQ(actions(), "action on;");
    dragTo({60, 9});
    EXPECT_EQ(actions(), "");
    EXPECT_TRUE(control.checked());
    dragTo({-400, 9});
    EXPECT_EQ(actions(), "action off;");
}

TEST_F(ITSwitchTest, AReleaseOutsideStillTogglesAndClearsTheGesture)
{
    dragTo({9000, -9000});
    EXPECT_EQ(actions(), "action on;");
    EXPECT_FALSE(control.isActive());
    EXPECT_FALSE(control.hasDragged());
    EXPECT_FALSE(control.isDraggingTowardsOn());
}

TEST_F(ITSwitchTest, AGestureThatIsCancelledChangesNothingAndSendsNoAction)
{
    control.mouseDown();
    control.mouseDragged({40, 3});
    transcript.clear();
    control.cancelGesture();
    EXPECT_FALSE(control.isActive());
    EXPECT_FALSE(control.hasDragged());
    EXPECT_FALSE(control.isDraggingTowardsOn());
    EXPECT_FALSE(control.checked());
    EXPECT_EQ(transcript.take("; "), "look");
}

TEST_F(ITSwitchTest, OnlyTheLastPlaceOfADragCounts)
{
    control.mouseDown();
    control.mouseDragged({55, 9});
    control.mouseDragged({5, 9});
    control.mouseUp();
    EXPECT_EQ(actions(), "");
}

TEST_F(ITSwitchTest, ADisabledSwitchIgnoresTheMouse)
{
    control.setEnabled(false);
    transcript.clear();
    click();
    dragTo({55, 9});
    EXPECT_EQ(transcript.take(), "");
    EXPECT_FALSE(control.checked());
    EXPECT_FALSE(control.isActive());
    EXPECT_FALSE(control.hasDragged());
}

TEST_F(ITSwitchTest, WithoutAnActionAClickOnlyToggles)
{
    control.setAction(nullptr);
    click();
    EXPECT_TRUE(control.checked());
}

TEST_F(ITSwitchTest, TheActionMayUncheckTheSwitchAgain)
{
    control.setAction([this](ITSwitch& sender) {
        transcript.add("action");
        sender.setChecked(false);
    });
    click();
    EXPECT_EQ(transcript.take(), "look\nlook\naction\nlook\nlook");
    EXPECT_FALSE(control.checked());
}

TEST_F(ITSwitchTest, ArrowKeysSwitchOnlyTheirOwnWay)
{
    control.moveLeft();
    EXPECT_EQ(transcript.take(), "");
    control.moveRight();
    EXPECT_EQ(transcript.take(), "look\naction on");
    control.moveRight();
    EXPECT_EQ(transcript.take(), "");
    control.moveLeft();
    EXPECT_EQ(transcript.take(), "look\naction off");
}

TEST_F(ITSwitchTest, TheSpaceBarTogglesOnlyTheFirstResponder)
{
    EXPECT_FALSE(control.performKeyEquivalent(/*isSpaceBar=*/true, /*isFirstResponder=*/false));
    EXPECT_FALSE(control.performKeyEquivalent(/*isSpaceBar=*/false, /*isFirstResponder=*/true));
    EXPECT_EQ(transcript.take(), "");
    EXPECT_TRUE(control.performKeyEquivalent(/*isSpaceBar=*/true, /*isFirstResponder=*/true));
    EXPECT_EQ(transcript.take(), "look\naction on");
    EXPECT_TRUE(control.performKeyEquivalent(/*isSpaceBar=*/true, /*isFirstResponder=*/true));
    EXPECT_EQ(actions(), "action off;");
}

TEST_F(ITSwitchTest, ItTakesPartInTabbingWithFullKeyboardAccessOnly)
{
    EXPECT_TRUE(control.canBecomeKeyView(/*isFullKeyboardAccessEnabled=*/true));
    EXPECT_FALSE(control.canBecomeKeyView(/*isFullKeyboardAccessEnabled=*/false));
}

TEST_F(ITSwitchTest, AScreenReaderFindsACheckBoxWhoseValueIs0Or1)
{
    EXPECT_EQ(ITSwitch::accessibilityRole, "check box");
    EXPECT_EQ(control.accessibilityValue(), 0);
    control.setChecked(true);
    EXPECT_EQ(control.accessibilityValue(), 1);
}

TEST_F(ITSwitchTest, AttributesAndActionsAreThePlatformsAndItsOwnWithoutChildren)
{
    EXPECT_THAT(control.accessibilityAttributeNames({"role", "children", "enabled"}),
        ElementsAre("role", "enabled", "value", "description"));
    EXPECT_THAT(control.accessibilityActionNames({"show menu"}), ElementsAre("show menu", "press"));
    EXPECT_THAT(control.accessibilityActionNames({"press"}), ElementsAre("press"));
}

TEST_F(ITSwitchTest, OnlyTheValueIsSettable)
{
    EXPECT_EQ(control.accessibilityIsAttributeSettable("value"), true);
    EXPECT_EQ(control.accessibilityIsAttributeSettable("enabled"), false);
    EXPECT_EQ(control.accessibilityIsAttributeSettable("description"), false);
    EXPECT_EQ(control.accessibilityIsAttributeSettable("role"), std::nullopt);
}

TEST_F(ITSwitchTest, SettingTheValueSendsTheActionOnlyWhenItChanges)
{
    control.accessibilitySetValue(true);
    EXPECT_EQ(actions(), "action on;");
    control.accessibilitySetValue(true);
    EXPECT_EQ(actions(), "");
    control.accessibilitySetValue(false);
    EXPECT_EQ(actions(), "action off;");
}

TEST_F(ITSwitchTest, APressByAScreenReaderTogglesAndSendsTheAction)
{
    control.accessibilityPerformPress();
    EXPECT_EQ(actions(), "action on;");
    control.accessibilityPerformPress();
    EXPECT_EQ(actions(), "action off;");
}

TEST_F(ITSwitchTest, AChangeIsWrittenToTheBoundObjectBeforeTheRedraw)
{
    bindChecked({object, "settings.touch", nullptr, std::nullopt});
    EXPECT_EQ(transcriptOfChecking(), "write true to settings.touch; look");
    EXPECT_EQ(transcriptOfChecking(), "look") << "unchanged, so not published again";
    click();
    EXPECT_EQ(transcript.take("; "), "look; write false to settings.touch; look; action off; look");
}

TEST_F(ITSwitchTest, WithoutABindingOrUnderAnotherNameNothingIsWritten)
{
    control.bind("enabled", {object, "settings.touch", nullptr, std::nullopt});
    EXPECT_EQ(transcriptOfChecking(), "look");
    bindChecked({object, "settings.touch", nullptr, std::nullopt});
    control.unbind("checked");
    control.setChecked(false);
    EXPECT_EQ(transcript.take(), "look");
}

TEST_F(ITSwitchTest, ATransformerIsReversedWhetherGivenOrNamed)
{
    bindChecked({object, "touch", &transformer, std::nullopt});
    EXPECT_EQ(transcriptOfChecking(), "write yes to touch; look");
    control.setChecked(false);
    transcript.clear();
    bindChecked({object, "touch", nullptr, "YesNo"});
    EXPECT_EQ(transcriptOfChecking(), "write yes to touch; look");
    control.setChecked(false);
    transcript.clear();
    bindChecked({object, "touch", &transformer, "Missing"});
    EXPECT_EQ(transcriptOfChecking(), "write yes to touch; look") << "the given one is meant";
}

TEST_F(ITSwitchTest, AnUnknownTransformerNameIsNoTransformer)
{
    bindChecked({object, "touch", nullptr, "Missing"});
    EXPECT_EQ(transcriptOfChecking(), "write true to touch; look");
}

TEST_F(ITSwitchTest, ATransformerWithoutReverseIsLoggedAndTheValueWrittenAsItIs)
{
    transformer.allowsReverseTransformation = false;
    bindChecked({object, "touch", &transformer, std::nullopt});
    EXPECT_EQ(transcriptOfChecking(),
        "log WARNING: binding \"checked\" has value transformer, but it doesn't allow reverse "
        "transformations "
        "in -[ITSwitch propagateValue:forBinding:]; write true to touch; look");
}

TEST_F(ITSwitchTest, AMissingObjectOrKeyPathIsLoggedAndNothingIsWritten)
{
    bindChecked({nullptr, "touch", nullptr, std::nullopt});
    EXPECT_EQ(transcriptOfChecking(),
        "log ERROR: NSObservedObjectKey was nil for binding \"checked\" in "
        "-[ITSwitch propagateValue:forBinding:]; look");
    control.setChecked(false);
    transcript.clear();
    bindChecked({object, std::nullopt, nullptr, std::nullopt});
    EXPECT_EQ(transcriptOfChecking(),
        "log ERROR: NSObservedKeyPathKey was nil for binding \"checked\" in "
        "-[ITSwitch propagateValue:forBinding:]; look");
}

} // namespace companion::testing
