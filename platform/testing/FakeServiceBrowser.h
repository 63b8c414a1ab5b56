#pragma once

#include "platform/ServiceBrowser.h"
#include "platform/testing/Transcript.h"

namespace companion::testing {

/// A service that resolves when the test says so.
class FakeService : public Service {
public:
    explicit FakeService(std::string name, std::string type = "_airplay._tcp", std::string domain = "local.")
        : m_name(std::move(name))
        , m_type(std::move(type))
        , m_domain(std::move(domain))
    {
    }

    std::string name() const override { return m_name; }
    std::string type() const override { return m_type; }
    std::string domain() const override { return m_domain; }
    void setDelegate(ServiceDelegate* delegate) override { m_delegate = delegate; }
    void resolveWithTimeout(std::chrono::milliseconds timeout) override { m_timeout = timeout; }

    ServiceDelegate* delegate() const { return m_delegate; }
    std::chrono::milliseconds timeout() const { return m_timeout; }

    void resolve()
    {
        if (m_delegate)
            m_delegate->netServiceDidResolveAddress(*this);
    }

private:
    std::string m_name;
    std::string m_type;
    std::string m_domain;
    ServiceDelegate* m_delegate = nullptr;
    std::chrono::milliseconds m_timeout = std::chrono::milliseconds::zero();
};

/// Makes browsers that report what the test announces; "browse _airplay._tcp local." in the transcript.
class FakeServiceBrowserFactory : public ServiceBrowserFactory {
public:
    explicit FakeServiceBrowserFactory(Transcript& transcript)
        : m_transcript(transcript)
    {
    }

    std::unique_ptr<ServiceBrowser> makeServiceBrowser() override { return std::make_unique<Browser>(*this); }

    /// Reports a found service to the browser's delegate and hands it back.
    std::shared_ptr<FakeService> find(const std::string& name)
    {
        auto service = std::make_shared<FakeService>(name);
        if (m_delegate)
            m_delegate->netServiceBrowserDidFindService(service, /*moreComing=*/false);
        return service;
    }

    std::shared_ptr<FakeService> findAndResolve(const std::string& name)
    {
        auto service = find(name);
        service->resolve();
        return service;
    }

    /// Reports the removal by an object of its own, as a browser may.
    void remove(const std::string& name)
    {
        if (m_delegate)
            m_delegate->netServiceBrowserDidRemoveService(
                std::make_shared<FakeService>(name), /*moreComing=*/false);
    }

private:
    class Browser : public ServiceBrowser {
    public:
        explicit Browser(FakeServiceBrowserFactory& factory)
            : m_factory(factory)
        {
        }
        ~Browser() override { m_factory.m_delegate = nullptr; }
        Browser(const Browser&) = delete;
        Browser& operator=(const Browser&) = delete;

        void setDelegate(ServiceBrowserDelegate* delegate) override { m_factory.m_delegate = delegate; }
        void searchForServices(const std::string& type, const std::string& domain) override
        {
            m_factory.m_transcript.add("browse " + type + " " + domain);
        }

    private:
        FakeServiceBrowserFactory& m_factory;
    };

    Transcript& m_transcript;
    ServiceBrowserDelegate* m_delegate = nullptr;
};

} // namespace companion::testing
