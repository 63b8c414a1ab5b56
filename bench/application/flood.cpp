// Sends touch records to a UDP port of loopback, evenly, and says how many seconds that took. All of them move the pointer, and none
// farther than two pixels from one point of a screen of 1280 × 800.
//
//     bench_flood PORT RECORDS RECORDS_A_SECOND [X Y]        as fast as can be where the rate is 0
#include <arpa/inet.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <sys/socket.h>
#include <thread>

using Clock = std::chrono::steady_clock;

int main(int argc, char** argv)
{
    if (argc < 4)
        return 2;
    const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(std::atoi(argv[1])));
    const long records = std::atol(argv[2]);
    const double rate = std::atof(argv[3]);
    const double x = argc > 5 ? std::atof(argv[4]) : 1240;
    const double y = argc > 5 ? std::atof(argv[5]) : 770;

    const auto start = Clock::now();
    for (long i = 0; i < records; ++i) {
        char record[64];
        const int size = std::snprintf(record, sizeof record, "MOVE,%.3f,%.3f,0",
            (x + static_cast<double>(i % 5) - 2) * 32767 / 1280,
            (y + static_cast<double>(i / 5 % 5) - 2) * 32767 / 800);
        sendto(descriptor, record, static_cast<std::size_t>(size), 0,
            reinterpret_cast<const sockaddr*>(&address), sizeof address);
        const std::chrono::duration<double> due(rate > 0 ? static_cast<double>(i + 1) / rate : 0);
        if (rate > 0)
            std::this_thread::sleep_until(start + std::chrono::duration_cast<Clock::duration>(due));
    }
    std::printf("%.3f\n", std::chrono::duration<double>(Clock::now() - start).count());
}
