// What other programs and panels hand over as URLs: the file that a drop or the documents portal names, and the URL of a
// request.
#include "platform/FileUrl.h"
#include "platform/HttpSession.h"
#include "platform/Text.h"
#include "tests/fuzz/Require.h"

#include <algorithm>

using namespace companion;

namespace {

void checkFile(const FileUrl& url)
{
    require(url.path().starts_with('/'));
    require(url.path().find('\0') == std::string::npos);
    const std::string name = url.lastPathComponent();
    require(!name.empty() && isValidUtf8(name));
    require(name == "/" || name.find('/') == std::string::npos);
    require(FileUrl::fromText(FileUrl::fromPath(url.path()).text())->path() == url.path());
}

bool isVisibleAscii(char c)
{
    return c > 0x20 && c < 0x7F;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (const auto file = FileUrl::fromText(text))
        checkFile(*file);
    if (text.find('\0') == std::string::npos)
        checkFile(FileUrl::fromPath("/" + text));
    if (const auto url = urlFromText(text))
        require(url->text == text && std::all_of(text.begin(), text.end(), isVisibleAscii));
    return 0;
}
