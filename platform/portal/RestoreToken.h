#pragma once

#include <optional>
#include <string>

namespace companion {

/// What the desktop gives out with a consent, to be shown instead of asking again; each is good for one use. Kept in
/// memory, and in a file that only this user can read if one is named.
class RestoreToken {
public:
    explicit RestoreToken(std::optional<std::string> file = std::nullopt);

    /// Where it is kept between runs: below $XDG_STATE_HOME, or below ~/.local/state (XDG Base Directory
    /// Specification).
    static std::string defaultFile();

    bool isKeptOnDisk() const { return m_file.has_value(); }
    const std::string& value() const { return m_value; } ///< "" when there is none.

    /// "" forgets it. An error in one line when the file cannot be written, else nothing.
    std::optional<std::string> set(const std::string& value);

private:
    const std::optional<std::string> m_file;
    std::string m_value;
};

} // namespace companion
