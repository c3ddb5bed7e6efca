#pragma once

#include <array>
#include <cstdint>
#include <cstdlib>

namespace tavlo {

/// The numbers that the C library's `rand` gives after `srand(seed)`, without touching the process's own sequence,
/// which belongs to the host and its threads.
class SeededRandom
{
public:
    explicit SeededRandom(unsigned seed) { initstate_r(seed, _state.data(), _state.size(), &_data); }
    SeededRandom(const SeededRandom&) = delete;
    SeededRandom& operator=(const SeededRandom&) = delete;

    /// 0..RAND_MAX
    int next()
    {
        std::int32_t value = 0;
        random_r(&_data, &value);
        return value;
    }

    /// 0..count - 1; `count` is above 0.
    int below(int count) { return next() % count; }

private:
    std::array<char, 128> _state{}; // the size that `rand` itself works with
    random_data _data{};            // has to be zero before initstate_r
};

} // namespace tavlo
