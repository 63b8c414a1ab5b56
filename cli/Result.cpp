#include "cli/Result.h"

namespace companion::cli {

void report(const Result& result, const std::string& command, bool isJson, Output& output)
{
    const bool isDone = result.status == ExitStatus::done;
    if (isJson) {
        JsonObject whole;
        whole.add("command", command).addNumber("exitStatus", static_cast<int>(result.status));
        if (isDone)
            whole.addNull("error");
        else
            whole.add("error", result.text);
        output.print(whole.addMembers(result.json).text());
    }
    if (result.text.empty())
        return;
    if (!isDone)
        output.complain("panelctl: " + result.text);
    else if (!isJson)
        output.print(result.text);
}

} // namespace companion::cli
