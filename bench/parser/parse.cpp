// Reads so many touch records and their two numbers each, for callgrind; the difference of two run lengths is what
// the records cost.
//
//     bench_parse RECORDS
#include "touchback/Number.h"
#include "touchback/TouchMessage.h"

#include <cstdio>
#include <cstdlib>
#include <string>

using namespace companion;

int main(int argc, char** argv)
{
    const int records = argc > 1 ? std::atoi(argv[1]) : 1000;
    double sum = 0;
    char record[64];
    for (int i = 0; i < 1000; ++i) {
        const int size =
            std::snprintf(record, sizeof record, "MOVE,%d,%d,17000000%05d;", 8000 + i * 13, 31000 - i * 7, i);
        for (int k = 0; k < records / 1000; ++k) {
            const auto message = parseTouchMessage({record, static_cast<std::size_t>(size)});
            sum +=
                parseNumber(message->xCoordinate).value_or(0) + parseNumber(message->yCoordinate).value_or(0);
        }
    }
    std::printf("%g\n", sum);
}
