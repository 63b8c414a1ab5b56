#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>

namespace companion {

/// What travels along a binding.
using BoundValue = std::variant<bool, std::int64_t, double, std::string>;

/// The object at the far end of a binding, written to by key path.
class ObservedObject {
public:
    virtual ~ObservedObject() = default;

    virtual void setValueForKeyPath(const BoundValue& value, const std::string& keyPath) = 0;
};

/// Turns the object's values into the view's, and back where that is allowed.
class ValueTransformer {
public:
    virtual ~ValueTransformer() = default;

    virtual bool allowsReverseTransformation() const = 0;

    /// Called only where it is allowed.
    virtual BoundValue reverseTransformedValue(const BoundValue& value) const = 0;
};

/// Transformers by name; they outlive the bindings that name them.
using ValueTransformerRegistry = std::map<std::string, const ValueTransformer*>;

/// Where a view's value goes when the user changes it. What is pointed to outlives the binding.
struct Binding {
    ObservedObject* observedObject = nullptr;
    std::optional<std::string> observedKeyPath;
    const ValueTransformer* valueTransformer = nullptr;
    std::optional<std::string> valueTransformerName; ///< Looked up when no transformer is given itself.
};

} // namespace companion
