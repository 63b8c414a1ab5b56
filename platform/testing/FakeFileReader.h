#pragma once

#include "platform/FileReader.h"
#include "platform/testing/Transcript.h"

#include <map>

namespace companion::testing {

/// Has the files that the test gives it; writes "read /home/ada/a.png".
class FakeFileReader : public FileReader {
public:
    explicit FakeFileReader(Transcript& transcript)
        : m_transcript(transcript)
    {
    }

    FileBytes readFile(const std::string& path) override
    {
        m_transcript.add("read " + path);
        const auto found = files.find(path);
        return found == files.end() ? nullptr : found->second;
    }

    std::map<std::string, FileBytes> files;

private:
    Transcript& m_transcript;
};

} // namespace companion::testing
