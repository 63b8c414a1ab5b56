#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <variant>

namespace companion {

/// What travels along a binding: the state, or what a transformer makes of it.
using BoundValue = std::variant<bool, std::string>;

/// Turns the view's values back into the object's, where that is allowed.
struct ValueTransformer {
    bool allowsReverseTransformation = false;
    std::function<BoundValue(const BoundValue&)> reverseTransformedValue;
};

/// Transformers by name; they outlive the bindings that name them.
using ValueTransformerRegistry = std::map<std::string, const ValueTransformer*>;

/// Where a view's value goes when it changes.
struct Binding {
    std::function<void(const BoundValue&, const std::string& keyPath)>
        setValueForKeyPath; ///< Of the bound object.
    std::optional<std::string> observedKeyPath;
    const ValueTransformer* valueTransformer = nullptr;
    std::optional<std::string> valueTransformerName; ///< Looked up when no transformer is given itself.
};

} // namespace companion
