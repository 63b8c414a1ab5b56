#include "platform/SharedBytes.h"

#include <utility>

namespace companion {

SharedBytes sharedBytes(std::string text)
{
    struct Owner {
        explicit Owner(std::string taken)
            : text(std::move(taken))
        {
        }
        const std::string text;
        const std::string_view bytes = text;
    };
    const auto owner = std::make_shared<const Owner>(std::move(text));
    return {owner, &owner->bytes};
}

SharedBytes sharedBytes(std::unique_ptr<const char[]> memory, std::size_t size)
{
    struct Owner {
        const std::unique_ptr<const char[]> memory;
        const std::string_view bytes;
    };
    const std::string_view bytes(memory.get(), size);
    const std::shared_ptr<const Owner> owner(new Owner{std::move(memory), bytes});
    return {owner, &owner->bytes};
}

} // namespace companion
