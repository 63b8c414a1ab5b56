#pragma once

#include <string>
#include <string_view>

namespace companion::simulator {

/// A file that is being uploaded: hidden under a name of its own until it is whole, and gone if it never gets so.
class UploadFile {
public:
    /// Keeps what comes in `folder`; with "" it keeps nothing and always succeeds.
    explicit UploadFile(std::string folder);
    ~UploadFile();
    UploadFile(const UploadFile&) = delete;
    UploadFile& operator=(const UploadFile&) = delete;

    /// After a failure the rest is not written.
    void write(std::string_view data);

    /// Gives the file its name, or a numbered one if there is one of that name already: no file is ever replaced.
    /// The name it got; "" when nothing is kept or `problem` says why not.
    std::string finish(const std::string& name);

    /// The system's words for what went wrong; "" when nothing did.
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
