#pragma once

#include <string>

#include <QString>

class QCoreApplication;

namespace companion {

/// From now on texts are shown in the first of the desktop's languages that there is a translation for, in English if
/// English comes before it or there is none. The toolkit's own dialogs follow where its translations are installed.
void useDesktopLanguage(QCoreApplication& application);

/// A text of the logic, which knows English only, as a person is shown it. What is not in the catalogue stays as it is.
QString shown(const std::string& english);

} // namespace companion
