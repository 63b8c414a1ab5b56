#include "simulator/Panel.h"

#include "simulator/Announcer.h"
#include "simulator/InstanceName.h"
#include "simulator/UploadExchange.h"

#include <filesystem>
#include <functional>
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
    , m_touches(m_state, options.address, options.touchPort)
    , m_touchControl(m_state, m_touches, m_log, std::move(recording))
    , m_servicePort(m_state, m_log, m_touchControl, options.uploads)
    , m_uploadFolder(usableFolder(options.uploads))
    , m_service(options.address, options.servicePort,
          [this](const Request& request) {
              return collectBody(request, std::bind_front(&ServicePort::answer, &m_servicePort));
          })
    , m_upload(options.address, options.uploadPort,
          [this](const Request& request) { return openUpload(request, m_state, m_log, m_uploadFolder); })
{
    m_state.setPorts(m_service.port(), m_upload.port());
    const InstanceName name = instanceName(options);
    m_log.write(name.text() + " on " + options.address + ":" + std::to_string(m_service.port())
        + ", uploads on " + std::to_string(m_upload.port()));
    if (!options.noAnnounce)
        m_announcer = std::make_unique<Announcer>(m_state, m_log, name);
}

Panel::~Panel() = default;

} // namespace companion::simulator
