#pragma once

#include <string>
#include <string_view>

namespace companion::simulator {

/// A file that is being uploaded: it has a hidden, temporary name until it is complete, and is removed if it never is.
class UploadFile {
public:
    /// Writes to `folder`; with "" it keeps nothing and always succeeds.
    explicit UploadFile(std::string folder);
    ~UploadFile();
    UploadFile(const UploadFile&) = delete;
    UploadFile& operator=(const UploadFile&) = delete;

    /// After a failure, does nothing.
    void write(std::string_view data);

    /// Gives the file its name, or a numbered one if that is taken: no file is ever replaced. Returns the name that
    /// was used; "" if nothing is kept or after a failure.
    std::string finish(const std::string& name);

    /// The system's message for the first failure; "" if there was none.
    const std::string& problem() const { return m_problem; }

private:
    void open();
    void fail();
    std::string reserveName(const std::string& name);

    std::string m_folder;
    std::string m_temporaryPath;
    std::string m_problem;
    int m_fd = -1;
};

/// A safe file name made of the one that a client sent: the part after the last "/" or "\\", in UTF-8 without control
/// characters, not hidden (a leading "." is preceded by "_"), not empty, and at most 200 bytes with its extension kept.
std::string safeFileName(std::string_view offered);

/// The name with a number before its extension: "a.png" and 2 give "a (2).png"; 1 changes nothing.
std::string numberedFileName(const std::string& name, unsigned number);

} // namespace companion::simulator
