#pragma once

namespace tavlo {

/// Chooses the losses that the log tells: the first one behind a while without any, and then one of a hundred, since what
/// stays full would fill the log. One thread.
class LossRow
{
public:
    static constexpr int quiet = 25; ///< good ones, behind which the next loss is a first one

    void good()
    {
        _good = _good < quiet ? _good + 1 : quiet;
        if (_good == quiet)
            _lost = 0;
    }

    /// Counts a loss. \return whether it is to be told
    bool isTold()
    {
        _good = 0;
        return _lost++ % 100 == 0;
    }

private:
    int _good = 0;
    unsigned _lost = 0;
};

} // namespace tavlo
