#pragma once

#include "tests/support/PrivateBus.h"

#include <QDBusConnection>
#include <string>
#include <vector>

namespace companion::testing {

/// Announces many services through the daemon of a bus, until the object goes. Blocks while it does.
class ServicePublisher {
public:
    explicit ServicePublisher(const PrivateBus& bus);
    ~ServicePublisher();
    ServicePublisher(const ServicePublisher&) = delete;
    ServicePublisher& operator=(const ServicePublisher&) = delete;

    /// All of them on `host`, which need not exist; "" is the daemon's own. Throws what the daemon says against it.
    void publish(const std::vector<std::string>& names, const std::string& host = "");

private:
    QString call(
        const QString& path, const QString& interface, const QString& method, const QVariantList& arguments);

    QString m_connectionName;
    QDBusConnection m_bus;
};

} // namespace companion::testing
