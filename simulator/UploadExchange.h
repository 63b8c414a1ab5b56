#pragma once

#include "simulator/HttpServer.h"

#include <memory>
#include <string>

namespace companion::simulator {

class EventLog;
class PanelState;

/// Answers a request on the upload port: "/uploadfile", a multipart/form-data body (RFC 7578) with one file part,
/// called "my-file". The file is written to `folder` as it arrives; with "" it is only counted.
std::unique_ptr<Exchange> openUpload(
    const Request& request, PanelState& state, EventLog& log, const std::string& folder);

} // namespace companion::simulator
