#pragma once

namespace tavlo::host {

/// Control-C and its kin, as long as the object lives: the first one asks the program to end what it does, a second one
/// within two seconds ends the program at once. One object at a time.
class StopSignals
{
public:
    StopSignals();
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    bool asked() const;
};

} // namespace tavlo::host
