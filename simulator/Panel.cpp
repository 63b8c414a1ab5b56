#include "simulator/Panel.h"

#include "simulator/Announcer.h"
#include "simulator/InstanceName.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace companion::simulator {

namespace {

PanelSnapshot startOf(const Options& options)
{
    PanelSnapshot start;
    start.model = options.model;
    start.name = options.name;
    start.address = options.address;
    start.touchPort = options.touchPort;
    return start;
}

InstanceName instanceName(const Options& options)
{
    return {options.model, options.name, hexAddress(options.address).value_or("")};
}

const std::string& usableFolder(const std::string& folder)
{
    std::error_code error;
    if (!folder.empty())
        std::filesystem::create_directories(folder, error);
    if (error)
        throw std::system_error(error, "cannot keep uploads in " + folder);
    return folder;
}

} // namespace

Panel::Panel(const Options& options, std::optional<Gesture> recording)
    : m_state(startOf(options))
    , m_touches(m_state, options.address, options.touchPort, [this] { m_held.wakeAll(); })
    , m_replay(m_state, m_touches, m_log, std::move(recording))
    , m_touchControl(m_state, m_touches, m_replay)
    , m_control(m_state, m_touchControl, m_held, m_log)
    , m_page(m_state, options.uploads)
    , m_servicePort(m_state, m_log, m_control, m_page, m_replay)
    , m_uploadPort(m_state, m_log, usableFolder(options.uploads))
    , m_service(options.address, options.servicePort, m_held,
          [this](const Request& request) { return m_servicePort.open(request); })
    , m_upload(options.address, options.uploadPort, m_held,
          [this](const Request& request) { return m_uploadPort.open(request); })
{
    m_state.setPorts(m_service.port(), m_upload.port());
    const InstanceName name = instanceName(options);
    m_log.write(name.text() + " on " + options.address + ":" + std::to_string(m_service.port())
        + ", uploads on " + std::to_string(m_upload.port()));
    if (options.announces)
        m_announcer = std::make_unique<Announcer>(m_state, m_log, name);
}

Panel::~Panel()
{
    m_announcer.reset();
    m_held.stop();
}

} // namespace companion::simulator
