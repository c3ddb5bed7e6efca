// Linked into each program that the address sanitizer looks after.
//
// Qt waits for a thread until its work is done and lets it go; what Qt keeps for the thread is freed a moment later, by
// the thread itself. Threads that Qt ends with the process, those of its thread pool above all, may thus be met by the
// search for leaks while they free their last. So the search waits for them.

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <thread>

namespace {

constexpr std::chrono::seconds patience{10}; ///< then the search tells what is left
constexpr std::chrono::milliseconds interval{1};

bool isThreadOfQt(const std::string& name)
{
    return name == "Thread (pooled)" || name == "tavlo-frame" || name == "tavlo-watch";
}

bool hasThreadsOfQt()
{
    std::error_code error; // threads that end while they are listed are left out
    for (std::filesystem::directory_iterator task("/proc/self/task", error), end; task != end; task.increment(error)) {
        std::ifstream file(task->path() / "comm");
        std::string name;
        if (std::getline(file, name) && isThreadOfQt(name))
            return true;
    }
    return false;
}

void awaitThreadsOfQt()
{
    const auto end = std::chrono::steady_clock::now() + patience;
    while (hasThreadsOfQt() && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(interval);
}

// At the end of the process, what was asked for first is done last: behind Qt's pool, before the search for leaks.
[[gnu::constructor]] void askForTheEnd() { std::atexit(awaitThreadsOfQt); }

} // namespace
