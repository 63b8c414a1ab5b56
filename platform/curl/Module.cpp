#include "platform/curl/CurlHttpSession.h"

/// What the application looks up in the module.
extern "C" companion::HttpSession* makeHttpSession(companion::SystemLog& log)
{
    return new companion::CurlHttpSession(log);
}
