#include "tests/ui/DocumentsPortal.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace companion::testing {

namespace {

std::vector<std::string> commandFor(const QStringList& files, bool isSilent)
{
    std::vector<std::string> command = {DOCUMENTS_PORTAL, isSilent ? "silent" : "answering"};
    for (const QString& file : files)
        command.push_back(file.toStdString());
    return command;
}

} // namespace

DocumentsPortal::DocumentsPortal(const QStringList& files, bool isSilent)
    : m_process(commandFor(files, isSilent))
{
    if (!m_process.waitForOutput("ready"))
        throw std::runtime_error("the portal is not on the bus: " + m_process.output());
}

} // namespace companion::testing
