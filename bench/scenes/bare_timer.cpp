// SPDX-License-Identifier: GPL-3.0-or-later
// bare_timer RATE SECONDS: a thread that only wakes RATE times a second, at absolute times. Prints the largest delay of
// each second in seconds: the limit of the machine itself.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

int main(int argc, char** argv)
{
    using Clock = std::chrono::steady_clock;
    const int rate = argc > 1 ? std::atoi(argv[1]) : 60;
    const int seconds = argc > 2 ? std::atoi(argv[2]) : 10;
    const Clock::time_point origin = Clock::now();
    for (int second = 0; second < seconds; ++second) {
        std::chrono::duration<double> latest{0};
        for (int k = 1; k <= rate; ++k) {
            const Clock::time_point due =
                origin + std::chrono::seconds(second) + std::chrono::nanoseconds(1'000'000'000LL * k / rate);
            std::this_thread::sleep_until(due);
            latest = std::max<std::chrono::duration<double>>(latest, Clock::now() - due);
        }
        std::printf("%.6f\n", latest.count());
        std::fflush(stdout);
    }
    return 0;
}
