// Any announcements in any order, and clicks between them: the list of panels stays usable. The input is lines; the
// first character of each says what happens to the service that the rest names.
#include "discovery/DevicesListViewController.h"
#include "platform/testing/FakeLog.h"
#include "platform/testing/FakeServiceBrowser.h"
#include "tests/fuzz/Require.h"

using namespace companion;
using namespace companion::testing;

namespace {

class ClickedView : public DevicesListView {
public:
    void reloadData() override { }
    void setIconOfCell(std::int64_t, std::int64_t, const std::string&) override { }
    void setDisconnectButtonHeight(double) override { }
    std::int64_t clickedRow() const override { return row; }
    std::int64_t clickedColumn() const override { return row < 0 ? -1 : 0; }

    std::int64_t row = -1;
};

void checkLists(const DevicesListViewController& list)
{
    require(list.relayDeviceIPs().size() == list.relayDeviceHex().size());
    for (std::int64_t row = 0; row < list.numberOfRows(); ++row)
        require(list.viewForRow(row).deviceIPLabel.has_value());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    Transcript transcript;
    FakeSystemLog log(transcript);
    FakeServiceBrowserFactory browsers(transcript);
    ClickedView view;
    DevicesListViewController list(view, browsers, log);
    list.viewDidLoad();

    std::string_view input(reinterpret_cast<const char*>(data), size);
    while (!input.empty()) {
        const std::string_view line = input.substr(0, input.find('\n'));
        input.remove_prefix(std::min(input.size(), line.size() + 1));
        if (line.empty())
            continue;
        const std::string name(line.substr(1));
        switch (line[0]) {
        case '+':
            browsers.findAndResolve(name);
            break;
        case '-':
            browsers.remove(name);
            break;
        case 'c':
            view.row = static_cast<std::int64_t>(name.size()) - 1;
            list.deviceClicked();
            break;
        case 'd':
            list.disconnectDevice();
            break;
        default:
            browsers.find(name);
        }
        checkLists(list);
    }
    return 0;
}
