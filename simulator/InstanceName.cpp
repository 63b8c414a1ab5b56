#include "simulator/InstanceName.h"

#include "platform/Text.h"
#include "simulator/Text.h"

#include <arpa/inet.h>
#include <cstdio>

namespace companion::simulator {

namespace {

std::optional<std::string> problemOfPart(const std::string& what, const std::string& text)
{
    if (text.empty())
        return "the " + what + " is empty";
    if (text.find('|') != std::string::npos)
        return "the " + what + " must not contain \"|\"";
    if (replaceControls(text) != text)
        return "the " + what + " must be UTF-8 without control characters";
    return std::nullopt;
}

} // namespace

std::optional<std::string> hexAddress(const std::string& ipv4)
{
    in_addr address{};
    if (inet_pton(AF_INET, ipv4.c_str(), &address) != 1)
        return std::nullopt;
    char hex[9];
    std::snprintf(hex, sizeof hex, "%08X", static_cast<unsigned>(ntohl(address.s_addr)));
    return hex;
}

std::optional<std::string> InstanceName::problem() const
{
    if (auto found = problemOfPart("model", model))
        return found;
    if (auto found = problemOfPart("name", name))
        return found;
    if (const std::size_t size = text().size(); size > maxBytes)
        return "model and name are " + std::to_string(size - maxBytes) + " bytes too long to be announced";
    return std::nullopt;
}

std::string InstanceName::text(unsigned attempt) const
{
    if (attempt <= 1)
        return joined(name);
    const std::string number = " (" + std::to_string(attempt) + ")";
    const std::size_t taken = joined(number).size();
    const std::size_t room = taken < maxBytes ? maxBytes - taken : 0;
    return joined(std::string(cutAtCharacter(name, room)) + number);
}

std::string InstanceName::joined(const std::string& namePart) const
{
    return model + "|" + namePart + "|" + hex;
}

} // namespace companion::simulator
