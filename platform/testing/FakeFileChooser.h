#pragma once

#include "platform/FileChooser.h"
#include "platform/testing/Transcript.h"

namespace companion::testing {

/// Answers at once with the choice that the test sets; writes "open panel in downloads: png jpg".
class FakeFileChooser : public FileChooser {
public:
    explicit FakeFileChooser(Transcript& transcript)
        : m_transcript(transcript)
    {
    }

    std::optional<FileUrl> runOpenPanel(
        const std::vector<std::string>& allowedFileTypes, UserFolder startingFolder) override
    {
        std::string line =
            startingFolder == UserFolder::downloads ? "open panel in downloads:" : "open panel:";
        for (const std::string& type : allowedFileTypes)
            line += " " + type;
        m_transcript.add(line);
        return choice;
    }

    /// Nothing is what a user who cancels chooses.
    std::optional<FileUrl> choice;

private:
    Transcript& m_transcript;
};

} // namespace companion::testing
