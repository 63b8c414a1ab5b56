#include "simulator/Page.h"

#include "simulator/CollectingExchange.h"
#include "simulator/PanelState.h"
#include "simulator/PictureType.h"

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

/// For the page: all of it comes from here, and it is framed by nobody.
std::vector<HeaderField> pageFields()
{
    return {
        {"Content-Security-Policy",
            "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; "
            "base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
        {"Cross-Origin-Resource-Policy", "same-origin"}, {"Referrer-Policy", "no-referrer"},
        {"Cache-Control", "no-cache"}};
}

/// For what strangers have sent: whatever it is, it is shown as a picture or not at all.
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

/// Nothing unless it is a plain file.
std::shared_ptr<const OpenFile> openPlainFile(const std::string& path, std::uint64_t& size)
{
    auto file = std::make_shared<const OpenFile>(
        ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat information { };
    if (file->fd() < 0 || fstat(file->fd(), &information) != 0 || !S_ISREG(information.st_mode))
        return nullptr;
    size = static_cast<std::uint64_t>(information.st_size);
    return file;
}

std::string_view pictureTypeOf(const OpenFile& file)
{
    std::array<char, pictureTypeBytes> bytes{};
    const ssize_t count = pread(file.fd(), bytes.data(), bytes.size(), 0);
    return pictureType({bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))});
}

} // namespace

Page::Page(const PanelState& state, std::string uploads)
    : m_state(state)
    , m_uploads(std::move(uploads))
{
}

bool Page::hasPath(const std::string& path)
{
    return pageFile(path) || path.starts_with(picturesPath);
}

std::unique_ptr<Exchange> Page::open(const Request& request) const
{
    if (request.method() != "GET")
        return wrongMethod("GET");
    const PageFile* const file = pageFile(request.path());
    return std::make_unique<FixedExchange>(
        file ? fileAnswer(*file) : pictureAnswer(request.path().substr(picturesPath.size())));
}

/// Only names that the panel has given itself are looked for, so none leads out of the folder.
Answer Page::pictureAnswer(const std::string& storedName) const
{
    const auto uploads = m_state.snapshot().uploads;
    const bool isStored = std::any_of(uploads.begin(), uploads.end(), [&](const UploadRecord& upload) {
        return !upload.storedName.empty() && upload.storedName == storedName;
    });
    std::uint64_t size = 0;
    const auto file = isStored ? openPlainFile(m_uploads + "/" + storedName, size) : nullptr;
    if (!file)
        return lineAnswer(404, "there is no such upload");
    const std::string_view type = pictureTypeOf(*file);
    if (type.empty())
        return lineAnswer(415, "this upload is no picture");
    return {200, FileBody{file, size}, std::string(type), pictureFields()};
}

} // namespace companion::simulator
