#pragma once

#include "platform/MainQueue.h"
#include "platform/ServiceBrowser.h"

#include <string>
#include <vector>

namespace companion {

/// Reports panels given on the command line as if they had been announced and resolved, beside what another browser
/// finds: for networks that block multicast. A listed panel is there for good, whether or not it is announced and
/// withdrawn as well. Main thread only.
class ListedPanels : public ServiceBrowserFactory {
public:
    ListedPanels(std::vector<std::string> names, ServiceBrowserFactory& others, MainQueue& mainQueue);

    std::unique_ptr<ServiceBrowser> makeServiceBrowser() override;

private:
    std::vector<std::string> m_names;
    ServiceBrowserFactory& m_others;
    MainQueue& m_mainQueue;
};

} // namespace companion
