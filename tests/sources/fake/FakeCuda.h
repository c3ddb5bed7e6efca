#pragma once

#include <cstdint>
#include <vector>

/// What the fake driver was asked for.
struct FakeCuda
{
    struct Copy
    {
        uint64_t address, pitch, width, height, row;
        bool mapped;   ///< the texture was CUDA's at that moment
        void* context; ///< that was entered
    };

    unsigned devices = 1; ///< that GL draws on
    int depth = 0;        ///< contexts entered and not left
    int retained = 0;     ///< of the device's own context
    void* context = nullptr;
    unsigned texture = 0; ///< that it knows
    int registered = 0, mapped = 0;
    int failing = 0; ///< result of the next copies
    std::vector<Copy> copies;
};

extern "C" FakeCuda* fakeCuda();
