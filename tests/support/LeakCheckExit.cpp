// Linked into each program that the address sanitizer looks after.
//
// Some threads are let go when their work is done and not when they have ended: Qt's, those of its thread pool above all,
// and the player's readers and cameras, which the network may hold. What the libraries keep for such a thread is freed a
// moment later, by the thread itself; the search for leaks at the end of the process may meet it doing so. So the search
// waits for them.

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <thread>

namespace {

constexpr std::array letGo{"Thread (pooled)", "tavlo-frame", "tavlo-watch", "tavlo-reader", "tavlo-camera"};
constexpr std::chrono::seconds patience{3}; ///< then the search tells what is left
constexpr std::chrono::milliseconds interval{1};

bool hasThreadsThatEnd()
{
    std::error_code error; // threads that end while they are listed are left out
    for (std::filesystem::directory_iterator task("/proc/self/task", error), end; task != end; task.increment(error)) {
        std::ifstream file(task->path() / "comm");
        std::string name;
        if (std::getline(file, name) && std::ranges::find(letGo, name) != letGo.end())
            return true;
    }
    return false;
}

void awaitThreads()
{
    const auto end = std::chrono::steady_clock::now() + patience;
    while (hasThreadsThatEnd() && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(interval);
}

// At the end of the process, what was asked for first is done last: behind Qt's pool, before the search for leaks.
[[gnu::constructor]] void askForTheEnd() { std::atexit(awaitThreads); }

} // namespace
