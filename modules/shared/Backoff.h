#pragma once

#include <algorithm>
#include <chrono>
#include <random>

namespace tavlo {

/// Pauses between attempts: 2 s, doubled each time up to 60 s, each a quarter longer or shorter by chance, so that many
/// senders do not come back to a server at once.
class Backoff
{
public:
    static constexpr std::chrono::milliseconds first{2'000}, longest{60'000};

    explicit Backoff(unsigned seed = std::random_device{}()) : _random(seed) {}

    std::chrono::milliseconds next()
    {
        const auto pause = _pause;
        _pause = std::min(_pause * 2, longest);
        const double factor = std::uniform_real_distribution<double>(0.75, 1.25)(_random);
        return std::min(std::chrono::milliseconds(static_cast<long long>(static_cast<double>(pause.count()) * factor)),
                        longest);
    }

    /// The next pause is the first again.
    void reset() { _pause = first; }

private:
    std::minstd_rand _random;
    std::chrono::milliseconds _pause = first;
};

} // namespace tavlo
