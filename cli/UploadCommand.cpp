#include "cli/UploadCommand.h"

#include "cli/Text.h"
#include "panel/FileTypes.h"
#include "platform/Text.h"

#include <chrono>
#include <utility>

namespace companion::cli {

namespace {

constexpr std::chrono::milliseconds betweenProgress{100};

/// As text: UTF-8, with U+FFFD for what is none.
std::string lastComponent(const std::string& path)
{
    return lenientUtf8(path.substr(path.rfind('/') + 1));
}

/// A file's name is sent as it stands, in a header field.
bool isSendable(const std::string& fileName)
{
    return !fileName.empty() && fileName.find_first_of("\r\n") == std::string::npos;
}

Result fileFailure(const std::string& path, const std::string& why)
{
    return {ExitStatus::badUsage, "cannot send " + path + ": " + why, {{"file", path}}};
}

} // namespace

UploadCommand::UploadCommand(
    PanelRequestTools tools, PanelRequestOptions options, const Tools& uploadTools, std::string path)
    : PanelRequestCommand(tools, std::move(options))
    , m_requestTools(tools)
    , m_tools(uploadTools)
    , m_path(std::move(path))
    , m_fileName(lastComponent(m_path))
{
}

std::optional<Result> UploadCommand::send(const std::string& address)
{
    const FileBytes bytes = m_tools.fileReader.readFile(m_path);
    if (!bytes)
        return fileFailure(m_path, m_tools.whyNotReadable(m_path));
    if (!isSendable(m_fileName))
        return fileFailure(m_path, "a line break in its name cannot be sent");
    m_size = bytes->size();

    const std::string extension = fileExtension(m_fileName);
    UploadDataToHost upload(
        {m_requestTools.httpSession, m_tools.console, m_requestTools.search.mainQueue, m_alert});
    upload.initWith(
        fileTypeText(fileCategory(extension, panelFileTypes()), extension), bytes, m_fileName, address);
    upload.upload(progress());
    return std::nullopt;
}

HttpProgress UploadCommand::progress() const
{
    const auto width = m_tools.output.progressWidth();
    if (!width)
        return {};
    using SteadyClock = std::chrono::steady_clock;
    return [&output = m_tools.output, width = *width, next = SteadyClock::time_point()](
               std::uint64_t sent, std::uint64_t total) mutable {
        const auto now = SteadyClock::now();
        if (now >= next || sent >= total) {
            next = now + betweenProgress;
            output.showProgress(progressBar(sent, total, width));
        }
        return true;
    };
}

Result UploadCommand::resultOfAnswer(int status, const std::string& body)
{
    const Json json = {{"file", m_path}, {"size", m_size}};
    if (status == 200)
        return {ExitStatus::done, m_fileName + " (" + byteText(m_size) + "): " + m_alert.words, json};
    Result refusal = refusalByStatus(status, body);
    refusal.json = json;
    return refusal;
}

} // namespace companion::cli
