#include "app/StopReason.h"

namespace companion {

namespace {

constexpr struct {
    std::string_view partOfText;
    std::string_view sentence;
} sentences[] = {
    {"upload has no data", "The file to be sent could no longer be read."},
    {"upload has no panel address", "A file was to be sent, but no panel was paired any more."},
    {"no panel address", "A panel was needed, but none was paired."},
    {"not UTF-8", "The panel sent an answer that is not text."},
    {"no main screen", "This computer had no screen that touches could go to."},
    {"mouse event cannot be made", "A touch could not be turned into mouse input."},
    {"out of range", "This computer's clock shows a time that cannot be right."},
    {"bad_alloc", "This computer had no memory left."},
};

std::string sentenceAbout(std::string_view what)
{
    for (const auto& [part, sentence] : sentences) {
        if (what.find(part) != std::string_view::npos)
            return std::string(sentence);
    }
    return "It met an error of its own: " + std::string(what);
}

} // namespace

std::string stopReason(std::string_view what)
{
    return sentenceAbout(what) + "\n\nIt has been started again. Pick your panel to go on.";
}

} // namespace companion
