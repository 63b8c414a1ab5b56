#include "app/HttpModule.h"

#include "platform/FatalError.h"

#include <QCoreApplication>
#include <QLibrary>

namespace companion {

std::unique_ptr<HttpSession> httpSessionOfModule(SystemLog& log)
{
    QLibrary module(
        QCoreApplication::applicationDirPath() + QStringLiteral("/../lib/panel-companion/http.so"));
    const auto makeSession =
        reinterpret_cast<HttpSession* (*)(SystemLog&)>(module.resolve("makeHttpSession"));
    if (!makeSession)
        fatalError("A part of the application is missing: " + module.errorString().toStdString());
    return std::unique_ptr<HttpSession>(makeSession(log));
}

} // namespace companion
