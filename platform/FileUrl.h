#pragma once

#include <optional>
#include <string>

namespace companion {

/// A file of this computer, named by a URL as in RFC 8089. Any thread.
class FileUrl {
public:
    /// The file that `text` names: an absolute path on no host or on "localhost". Nothing for other schemes and
    /// hosts, invalid percent-encoding, and a path that holds a NUL.
    static std::optional<FileUrl> fromText(const std::string& text);

    /// `path` is absolute; the URL's text is percent-encoded.
    static FileUrl fromPath(const std::string& path);

    /// The absolute URL, for example "file:///home/ada/a%20b.png".
    const std::string& text() const { return m_text; }

    /// The path for the file system, percent-decoded: bytes, and UTF-8 only where the name is.
    const std::string& path() const { return m_path; }

    /// The file's name as UTF-8, with U+FFFD in place of invalid bytes.
    std::string lastPathComponent() const;

    bool operator==(const FileUrl&) const = default;

private:
    FileUrl(std::string text, std::string path);

    std::string m_text;
    std::string m_path;
};

} // namespace companion
