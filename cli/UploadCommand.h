#pragma once

#include "cli/PanelRequestCommand.h"
#include "panel/UploadDataToHost.h"
#include "platform/FileReader.h"

#include <functional>

namespace companion::cli {

/// `upload FILE`: sends a file, as the application does.
class UploadCommand : public PanelRequestCommand {
public:
    struct Tools {
        FileReader& fileReader;
        Console& console;
        Output& output;
        std::function<std::string(const std::string& path)> whyNotReadable; ///< The system's words.
    };

    UploadCommand(
        PanelRequestTools tools, PanelRequestOptions options, const Tools& uploadTools, std::string path);

protected:
    std::optional<Result> send(const std::string& address) override;
    Result resultOfAnswer(int status, const std::string& body) override;
    bool isShort() const override { return false; }

private:
    /// Nobody is there to press "OK": the words of the alert go into the result.
    class NotedAlert : public Alerts {
    public:
        bool runModal(const std::string&, const std::string& informativeText) override
        {
            words = informativeText;
            return true;
        }

        std::string words;
    };

    HttpProgress progress() const;

    PanelRequestTools m_requestTools;
    Tools m_tools;
    const std::string m_path;
    const std::string m_fileName;
    std::size_t m_size = 0;
    NotedAlert m_alert;
};

} // namespace companion::cli
