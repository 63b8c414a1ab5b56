// wayland-pointer DESCRIPTOR: the mouse of the person at the computer. Reads lines "OUTPUT WIDTH HEIGHT X Y" (a motion, in
// points of that output of so many), "press" and "release" from that descriptor, and answers each with a line "done" once
// the compositor has processed it; "ready" comes first.
#include "platform/wayland/VirtualPointerConnection.h"

#include <chrono>
#include <fstream>
#include <iostream>
#include <string>

using namespace companion;
using namespace std::chrono_literals;

namespace {

bool obey(const std::string& word, std::istream& rest, VirtualPointerConnection& pointer)
{
    Size area;
    Point at;
    if (word == "press" || word == "release") {
        pointer.setLeftButtonDown(word == "press");
    } else if (rest >> area.width >> area.height >> at.x >> at.y) {
        pointer.selectOutput(word);
        pointer.move(toOutputPosition(at, area));
    }
    return pointer.sync(20s);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    std::ifstream commands(std::string("/dev/fd/") + argv[1]);
    std::string whyNot;
    const auto pointer = VirtualPointerConnection::open("", whyNot);
    if (!pointer || !pointer->waitUntilReady(20s, whyNot) || !pointer->sync(20s)) {
        std::cerr << whyNot << '\n';
        return 1;
    }
    std::cout << "ready" << std::endl;
    for (std::string word; commands >> word;) {
        if (!obey(word, commands, *pointer))
            return 1;
        std::cout << "done" << std::endl;
    }
    return 0;
}
