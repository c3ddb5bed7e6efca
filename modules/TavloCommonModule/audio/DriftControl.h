#pragma once

namespace tavlo {

/// Finds by how much a sound has to be shortened so that what waits of it stays level: a source's clock and the mix's
/// differ by some millionths.
///
/// The first two seconds tell how much usually waits, and that is to stay. What waits is smoothed over as long, so that
/// the coming and going of blocks does not count, and goes into a proportional-integral control of critical damping: a
/// step of 200 millionths is followed within a minute and is off by less than two milliseconds meanwhile. Nobody hears a
/// pitch that moves by so little.
class DriftControl
{
public:
    /// Begins anew; the drift found so far is kept. \param least, most seconds, between which what is to wait lies
    void restart(double least, double most);

    /// One step. \param waiting, interval seconds \return the share to leave out, within 0.2 %
    double update(double waiting, double interval);

    double trim() const { return _trim; }

    /// Seconds that are to wait.
    double wanted() const { return _wanted; }

private:
    double _least = 0.0;    ///< seconds
    double _most = 0.0;     ///< seconds
    double _wanted = 0.0;   ///< seconds
    double _time = 0.0;     ///< seconds since it began, no further than needed
    double _smoothed = 0.0; ///< seconds
    double _drift = 0.0;
    double _trim = 0.0;
};

} // namespace tavlo
