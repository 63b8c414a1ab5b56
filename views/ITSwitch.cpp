#include "views/ITSwitch.h"

#include <algorithm>
#include <utility>

namespace companion {

namespace {

constexpr double pressedKnobRatio = 1.38;
constexpr double goldenRatio = 1.618034F; // in single precision: the knob's width depends on it
constexpr auto checkedBinding = "checked";
constexpr std::string_view propagateSignature = "-[ITSwitch propagateValue:forBinding:]";

Rect boundsOf(const Rect& frame)
{
    return {{0, 0}, frame.size};
}

void addMissing(std::vector<std::string>& names, const std::string& name)
{
    if (std::find(names.begin(), names.end(), name) == names.end())
        names.push_back(name);
}

std::string aboutBinding(const std::string& what, const std::string& bindingName, const std::string& more)
{
    return what + " \"" + bindingName + "\"" + more + " in " + std::string(propagateSignature);
}

} // namespace

ITSwitch::ITSwitch(SystemLog& log, ValueTransformerRegistry transformers)
    : m_log(log)
    , m_transformers(std::move(transformers))
{
}

void ITSwitch::setLayers(ITSwitchLayers* layers)
{
    m_layers = layers;
    reloadLayerSize();
    reloadLayer();
}

void ITSwitch::setAction(Action action)
{
    m_action = std::move(action);
}

void ITSwitch::setChecked(bool checked)
{
    if (m_checked != checked) {
        m_checked = checked;
        propagateValue(checked, checkedBinding);
    }
    reloadLayer();
}

void ITSwitch::setTintColor(const std::optional<Color>& color)
{
    m_tintColor = color;
    reloadLayer();
}

void ITSwitch::setDisabledBorderColor(const std::optional<Color>& color)
{
    m_disabledBorderColor = color;
    reloadLayer();
}

void ITSwitch::setEnabled(bool enabled)
{
    m_enabled = enabled;
    reloadLayer();
}

void ITSwitch::setFrame(const Rect& frame)
{
    m_frame = frame;
    reloadLayerSize();
}

Rect ITSwitch::rectForKnob() const
{
    const double width = (m_frame.size.width - 2 * borderWidth) / (m_active ? pressedKnobRatio : goldenRatio);
    const double height = m_frame.size.height - 2 * borderWidth;
    const double x = looksOn() ? m_frame.size.width - width - borderWidth : borderWidth;
    return {{x, borderWidth}, {width, height}};
}

ITSwitch::Geometry ITSwitch::geometry() const
{
    const Rect knob = rectForKnob();
    const double knobRadius = knob.size.height / 2;
    return {knob, boundsOf(knob), m_frame.size.height / 2, knobRadius, knobRadius};
}

ITSwitch::Look ITSwitch::look() const
{
    const Color tint = tintColor();
    Look look;
    look.trackBorder = tint;
    look.trackFill = looksOn() ? tint : clear;
    look.knobInside = looksOn() ? white : tint;
    look.opacity = m_enabled ? 1.0 : 0.5;
    if (!m_dragged)
        look.timing = overshootingTiming;
    return look;
}

bool ITSwitch::looksOn() const
{
    return m_dragged ? m_draggingTowardsOn : m_checked;
}

void ITSwitch::mouseDown()
{
    if (!m_enabled)
        return;
    m_active = true;
    reloadLayer();
}

void ITSwitch::mouseDragged(Point pointer)
{
    if (!m_enabled)
        return;
    m_dragged = true;
    m_draggingTowardsOn = pointer.x >= m_frame.size.width / 2;
    reloadLayer();
}

void ITSwitch::mouseUp()
{
    if (!m_enabled)
        return;
    m_active = false;
    changeByUser(m_dragged ? m_draggingTowardsOn : !m_checked);
    m_dragged = false;
    m_draggingTowardsOn = false;
    reloadLayer();
}

void ITSwitch::cancelGesture()
{
    m_active = false;
    m_dragged = false;
    m_draggingTowardsOn = false;
    reloadLayer();
}

void ITSwitch::moveLeft()
{
    if (m_checked)
        changeByUser(false);
}

void ITSwitch::moveRight()
{
    if (!m_checked)
        changeByUser(true);
}

bool ITSwitch::performKeyEquivalent(bool isSpaceBar, bool isFirstResponder)
{
    if (!isSpaceBar || !isFirstResponder)
        return false;
    changeByUser(!m_checked);
    return true;
}

std::vector<std::string> ITSwitch::accessibilityAttributeNames(std::vector<std::string> platformNames) const
{
    for (const auto* name : {"value", "enabled", "description"})
        addMissing(platformNames, name);
    std::erase(platformNames, "children");
    return platformNames;
}

std::optional<bool> ITSwitch::accessibilityIsAttributeSettable(std::string_view attribute) const
{
    if (attribute == "value")
        return true;
    if (attribute == "enabled" || attribute == "description")
        return false;
    return std::nullopt;
}

void ITSwitch::accessibilitySetValue(bool checked)
{
    changeByUser(checked);
}

std::vector<std::string> ITSwitch::accessibilityActionNames(std::vector<std::string> platformNames) const
{
    addMissing(platformNames, "press");
    return platformNames;
}

void ITSwitch::accessibilityPerformPress()
{
    changeByUser(!m_checked);
}

void ITSwitch::bind(const std::string& name, Binding binding)
{
    m_bindings[name] = std::move(binding);
}

void ITSwitch::unbind(const std::string& name)
{
    m_bindings.erase(name);
}

void ITSwitch::propagateValue(BoundValue value, const std::string& bindingName)
{
    const auto bound = m_bindings.find(bindingName);
    if (bound == m_bindings.end())
        return;
    // A copy, since the object may undo the binding when it is written to.
    const Binding binding = bound->second;
    value = reverseTransformed(std::move(value), binding, bindingName);

    if (!binding.setValueForKeyPath) {
        m_log.log(aboutBinding("ERROR: NSObservedObjectKey was nil for binding", bindingName, ""));
        return;
    }
    if (!binding.observedKeyPath) {
        m_log.log(aboutBinding("ERROR: NSObservedKeyPathKey was nil for binding", bindingName, ""));
        return;
    }
    binding.setValueForKeyPath(value, *binding.observedKeyPath);
}

BoundValue ITSwitch::reverseTransformed(
    BoundValue value, const Binding& binding, const std::string& name) const
{
    const ValueTransformer* transformer = transformerOf(binding);
    if (!transformer)
        return value;
    if (!transformer->allowsReverseTransformation) {
        m_log.log(aboutBinding("WARNING: binding", name,
            " has value transformer, but it doesn't allow reverse transformations"));
        return value;
    }
    return transformer->reverseTransformedValue(value);
}

const ValueTransformer* ITSwitch::transformerOf(const Binding& binding) const
{
    if (binding.valueTransformer || !binding.valueTransformerName)
        return binding.valueTransformer;
    const auto found = m_transformers.find(*binding.valueTransformerName);
    return found == m_transformers.end() ? nullptr : found->second;
}

/// The action comes after the state, and after everyone who draws it.
void ITSwitch::changeByUser(bool checked)
{
    const bool changes = m_checked != checked;
    setChecked(checked);
    if (changes)
        sendAction();
}

void ITSwitch::sendAction()
{
    // A copy, since the action may be replaced while it runs.
    if (const Action action = m_action)
        action(*this);
}

void ITSwitch::reloadLayer()
{
    if (m_layers)
        m_layers->reloadLayer();
}

void ITSwitch::reloadLayerSize()
{
    if (m_layers)
        m_layers->reloadLayerSize();
}

} // namespace companion
