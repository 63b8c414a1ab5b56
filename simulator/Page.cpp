#include "simulator/Page.h"

#include "simulator/PanelState.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace companion::simulator {

namespace {

constexpr std::string_view picturesPath = "/simulator/uploads/";

struct PageFile {
    std::string_view path;
    const char* resource;
    const char* type;
};

constexpr std::array<PageFile, 5> pageFiles{{
    {"/", ":/page/index.html", "text/html; charset=utf-8"},
    {"/simulator/page.css", ":/page/page.css", "text/css; charset=utf-8"},
    {"/simulator/page.js", ":/page/page.js", "text/javascript; charset=utf-8"},
    {"/simulator/touch.js", ":/page/touch.js", "text/javascript; charset=utf-8"},
    {"/simulator/icon.svg", ":/page/icon.svg", "image/svg+xml"},
}};

const PageFile* pageFile(const std::string& path)
{
    const auto found = std::find_if(
        pageFiles.begin(), pageFiles.end(), [&path](const PageFile& file) { return file.path == path; });
    return found == pageFiles.end() ? nullptr : found;
}

/// The page loads everything from here, and no other page may frame it.
std::vector<HeaderField> pageFields()
{
    return {
        {"Content-Security-Policy",
            "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; "
            "base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
        {"Cross-Origin-Resource-Policy", "same-origin"}, {"Referrer-Policy", "no-referrer"},
        {"Cache-Control", "no-cache"}};
}

/// Uploads come from strangers: a browser shows them as pictures or not at all.
std::vector<HeaderField> pictureFields()
{
    return {{"Content-Security-Policy", "default-src 'none'; sandbox"},
        {"Cross-Origin-Resource-Policy", "same-origin"}, {"Cache-Control", "no-cache"}};
}

Answer fileAnswer(const PageFile& file)
{
    QFile resource(file.resource);
    if (!resource.open(QIODevice::ReadOnly))
        return lineAnswer(500, "the page is missing in this program");
    return {200, resource.readAll().toStdString(), file.type, pageFields()};
}

/// Without a file unless `path` is a regular one.
FileBody openRegularFile(const std::string& path)
{
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    std::shared_ptr<std::FILE> file(fd < 0 ? nullptr : fdopen(fd, "rb"), [](std::FILE* opened) {
        if (opened)
            std::fclose(opened);
    });
    struct stat information { };
    if (!file || fstat(fd, &information) != 0 || !S_ISREG(information.st_mode))
        return {};
    return {file, static_cast<std::uint64_t>(information.st_size)};
}

/// Only names that the panel itself has assigned are looked for, so none leads out of the folder.
Answer pictureAnswer(const PanelState& state, const std::string& folder, const std::string& storedName)
{
    const auto uploads = state.snapshot().uploads;
    const auto upload = std::find_if(uploads.begin(), uploads.end(),
        [&](const UploadRecord& each) { return !each.storedName.empty() && each.storedName == storedName; });
    const FileBody body = upload != uploads.end() ? openRegularFile(folder + "/" + storedName) : FileBody();
    if (!body.file)
        return lineAnswer(404, "there is no such upload");
    if (upload->pictureType.empty())
        return lineAnswer(415, "this upload is no picture");
    return {200, body, upload->pictureType, pictureFields()};
}

} // namespace

Answer pageAnswer(const Request& request, const PanelState& state, const std::string& uploads)
{
    const std::string& path = request.path();
    const PageFile* const file = pageFile(path);
    if (!file && !path.starts_with(picturesPath))
        return unknownPath(request);
    if (request.method() != "GET")
        return wrongMethod("GET");
    return file ? fileAnswer(*file) : pictureAnswer(state, uploads, path.substr(picturesPath.size()));
}

} // namespace companion::simulator
