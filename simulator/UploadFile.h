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

} // namespace companion::simulator
