#pragma once

#include "platform/FileReader.h"
#include "platform/testing/Transcript.h"

#include <map>

namespace companion::testing {

/// Has the files that the test gives it, and no problem with others than it says; writes "read /home/ada/a.png".
class FakeFileReader : public FileReader {
public:
    explicit FakeFileReader(Transcript& transcript)
        : m_transcript(transcript)
    {
    }

    std::optional<FileProblem> problemWith(const std::string& path) override
    {
        const auto found = problems.find(path);
        return found == problems.end() ? std::nullopt : std::optional(found->second);
    }

    FileBytes readFile(const std::string& path) override
    {
        m_transcript.add("read " + path);
        const auto found = files.find(path);
        return found == files.end() ? nullptr : found->second;
    }

    std::map<std::string, FileBytes> files;
    std::map<std::string, FileProblem> problems;

private:
    Transcript& m_transcript;
};

} // namespace companion::testing
