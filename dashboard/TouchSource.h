#pragma once

namespace companion {

/// Whose touches are listened to: everybody's, or those that come from the paired panel's address.
enum class TouchSource { any, panel };

} // namespace companion
