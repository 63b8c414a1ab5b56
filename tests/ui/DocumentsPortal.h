#pragma once

#include "tests/support/ChildProcess.h"

#include <QStringList>

namespace companion::testing {

/// org.freedesktop.portal.Documents on this process's session bus, as a sandboxed desktop has it: a process of its own,
/// gone with the object. It hands over `files` for the key "key of the drag", once, as a transfer that stops by itself
/// does, and refuses every other key; or it never answers.
class DocumentsPortal {
public:
    DocumentsPortal(const QStringList& files, bool isSilent);

private:
    ChildProcess m_process;
};

} // namespace companion::testing
