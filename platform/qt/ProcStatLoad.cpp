// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/ProcStatLoad.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <sstream>
#include <thread>
#include <utility>

namespace lumavex {

ProcStatLoad::ProcStatLoad(std::string path) : path_(std::move(path)) {}

std::uint32_t ProcStatLoad::processorCount() const
{
    return std::max(1U, std::thread::hardware_concurrency());
}

std::optional<std::vector<std::int32_t>> ProcStatLoad::sample()
{
    std::ifstream file(path_);
    std::vector<std::int32_t> ticks;
    for (std::string line; std::getline(file, line);) {
        if (!line.starts_with("cpu") || line.size() < 4 || !std::isdigit(static_cast<unsigned char>(line[3])))
            continue;
        std::istringstream fields(line);
        std::string name;
        std::int64_t user = 0, nice = 0, system = 0, idle = 0, wait = 0, irq = 0, softirq = 0, steal = 0;
        fields >> name >> user >> nice >> system >> idle >> wait >> irq >> softirq >> steal;
        // The counters are 32 bits wide and wrap; callers subtract them in 32 bits.
        for (const std::int64_t value : {user, system + irq + softirq + steal, idle + wait, nice})
            ticks.push_back(static_cast<std::int32_t>(static_cast<std::uint32_t>(value)));
    }
    if (ticks.empty())
        return std::nullopt;
    return ticks;
}

} // namespace lumavex
