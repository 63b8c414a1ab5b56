#pragma once

#include "platform/Geometry.h"
#include "platform/Log.h"
#include "views/Binding.h"
#include "views/Color.h"
#include "views/TimingFunction.h"

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace companion {

/// Draws an `ITSwitch`; it reads what to draw from the switch. Main thread only.
class ITSwitchLayers {
public:
    virtual ~ITSwitchLayers() = default;

    /// Sizes have changed: `geometry()` holds at once, without animation.
    virtual void reloadLayerSize() = 0;

    /// The look has changed: `look()` and the knob's place are reached in `ITSwitch::animationDuration`.
    virtual void reloadLayer() = 0;
};

/// The two-state control's model: state, geometry, look, and what the user can do to it. Main thread only.
///
/// A change by the user sends the action once; a change by code never does.
class ITSwitch {
public:
    using Action = std::function<void(ITSwitch& sender)>;

    /// In the coordinates of the track, y downwards or upwards alike; radii in points.
    struct Geometry {
        Rect knob;
        Rect knobInside; ///< In the coordinates of the knob.
        double trackCornerRadius = 0;
        double knobCornerRadius = 0;
        double knobInsideCornerRadius = 0;
    };

    struct Look {
        Color trackBorder;
        Color trackFill;
        Color knobInside;
        double opacity = 1;
        /// Absent while the knob is dragged: the platform's default holds then.
        std::optional<TimingFunction> timing;
    };

    struct Shadow {
        Color color;
        Size offset; ///< Upwards is positive.
        double radius = 0;
        double opacity = 0;
    };

    static constexpr Color defaultTintColor{28 / 255.0, 189 / 255.0, 157 / 255.0, 0.75};
    static constexpr Color defaultDisabledBorderColor{0, 0, 0, 0.2};
    static constexpr Color knobColor = white;
    static constexpr Color initialKnobInsideColor{28 / 255.0, 189 / 255.0, 157 / 255.0, 1};
    static constexpr Shadow knobShadow{{0, 0, 0, 1}, {0, -2}, 1, 0.3};
    static constexpr Shadow knobInsideShadow{{0, 0, 0, 1}, {0, 0}, 1, 0.35};
    static constexpr double borderWidth = 2;
    static constexpr std::chrono::milliseconds animationDuration{400};
    static constexpr TimingFunction overshootingTiming{0.25, 1.5, 0.5, 1};

    /// The log must outlive the switch.
    explicit ITSwitch(SystemLog& log, ValueTransformerRegistry transformers = {});
    ITSwitch(const ITSwitch&) = delete;
    ITSwitch& operator=(const ITSwitch&) = delete;

    /// What draws the switch, or null; it takes itself away before it goes.
    void setLayers(ITSwitchLayers* layers);

    /// Called once for each change by the user; may be empty.
    void setAction(Action action);

    bool checked() const { return m_checked; }

    /// setChecked:
    /// Never sends the action.
    void setChecked(bool checked);

    Color tintColor() const { return m_tintColor.value_or(defaultTintColor); }
    void setTintColor(const std::optional<Color>& color);
    Color disabledBorderColor() const { return m_disabledBorderColor.value_or(defaultDisabledBorderColor); }
    void setDisabledBorderColor(const std::optional<Color>& color);

    bool isEnabled() const { return m_enabled; }
    void setEnabled(bool enabled);

    /// setFrame:
    void setFrame(const Rect& frame);
    const Rect& frame() const { return m_frame; }

    bool isActive() const { return m_active; }
    bool hasDragged() const { return m_dragged; }
    bool isDraggingTowardsOn() const { return m_draggingTowardsOn; }

    Rect rectForKnob() const;
    Geometry geometry() const;
    Look look() const;

    // The pointer is in the switch's own coordinates. A gesture may end outside the switch.
    void mouseDown();
    void mouseDragged(Point pointer);
    void mouseUp();

    /// The gesture ends without its mouse-up, which an alert or a hidden window has kept away: the state stays as it
    /// is, and the action is not sent.
    void cancelGesture();

    /// acceptsFirstMouse:
    /// A click in an inactive window toggles too.
    bool acceptsFirstMouse() const { return true; }

    void moveLeft();
    void moveRight();

    /// performKeyEquivalent:
    /// Whether the key was handled: the space bar, while the switch is its window's first responder.
    bool performKeyEquivalent(bool isSpaceBar, bool isFirstResponder);

    bool canBecomeKeyView(bool isFullKeyboardAccessEnabled) const { return isFullKeyboardAccessEnabled; }

    /// The focus ring is the bounds as a rounded rectangle with this radius.
    double focusRingCornerRadius() const { return m_frame.size.height / 2; }

    // Accessibility. Names are "value", "enabled", "description" and so on.
    static constexpr std::string_view accessibilityRole = "check box";
    std::vector<std::string> accessibilityAttributeNames(std::vector<std::string> platformNames) const;

    /// Nothing for the attributes that the platform answers for.
    std::optional<bool> accessibilityIsAttributeSettable(std::string_view attribute) const;
    int accessibilityValue() const { return m_checked ? 1 : 0; }
    void accessibilitySetValue(bool checked);
    std::vector<std::string> accessibilityActionNames(std::vector<std::string> platformNames) const;
    void accessibilityPerformPress();

    /// Binds "checked", or whatever else is named, to an object's property.
    void bind(const std::string& name, Binding binding);
    void unbind(const std::string& name);

    /// propagateValue:forBinding:
    /// Writes the value to the object that the name is bound to; nothing happens when it is bound to none.
    void propagateValue(BoundValue value, const std::string& bindingName);

private:
    void changeByUser(bool checked);
    bool looksOn() const;
    void reloadLayer();
    void reloadLayerSize();
    void sendAction();
    const ValueTransformer* transformerOf(const Binding& binding) const;
    BoundValue reverseTransformed(BoundValue value, const Binding& binding, const std::string& name) const;

    SystemLog& m_log;
    const ValueTransformerRegistry m_transformers;
    ITSwitchLayers* m_layers = nullptr;
    Action m_action;
    std::map<std::string, Binding> m_bindings;

    std::optional<Color> m_tintColor;
    std::optional<Color> m_disabledBorderColor;
    Rect m_frame;
    bool m_checked = false;
    bool m_enabled = true;
    bool m_active = false;
    bool m_dragged = false;
    bool m_draggingTowardsOn = false;
};

} // namespace companion
