#include "cli/Command.h"

namespace companion::cli {

void report(const Result& result, const std::string& command, bool isJson, Output& output)
{
    const bool isDone = result.status == ExitStatus::done;
    if (isJson) {
        Json whole = {{"command", command}, {"exitStatus", static_cast<int>(result.status)},
            {"error", isDone ? Json() : Json(result.text)}};
        if (!result.json.is_null())
            whole.update(result.json);
        output.print(jsonText(whole));
    }
    if (result.text.empty())
        return;
    if (!isDone)
        output.complain("panelctl: " + result.text);
    else if (!isJson)
        output.print(result.text);
}

} // namespace companion::cli
