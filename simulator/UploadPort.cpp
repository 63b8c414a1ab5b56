#include "simulator/UploadPort.h"

#include "simulator/CollectingExchange.h"
#include "simulator/UploadExchange.h"

#include <utility>

namespace companion::simulator {

UploadPort::UploadPort(PanelState& state, EventLog& log, std::string folder)
    : m_state(state)
    , m_log(log)
    , m_folder(std::move(folder))
{
}

std::unique_ptr<Exchange> UploadPort::open(const Request& request)
{
    if (request.path() != "/uploadfile")
        return unknownPath(request);
    if (request.method() != "POST")
        return wrongMethod("POST");
    return std::make_unique<UploadExchange>(request, m_state, m_log, m_folder);
}

} // namespace companion::simulator
