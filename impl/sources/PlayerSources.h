#pragma once

#include "sources/TavloPresentSourceMediaVLC.h"

// The kinds of sources that a player plays. Each turns the fields of its record into what the player opens and into a
// name for people; all else is the base's. Frame thread.

/// A list of files.
class TavloPresentSourceMediaVLCMovieList final : public TavloPresentSourceMediaVLC
{
    Q_OBJECT

public:
    using TavloPresentSourceMediaVLC::TavloPresentSourceMediaVLC;
    bool openSource(const tagTavloPresentSourceInfo& info) override;

    /// The name for people follows the list. Player's threads.
    void OnMediaSourcePlayerState(qint32 state, qint32 index, qint32 count) override;
};

/// A network stream, or any other location.
class TavloPresentSourceMediaVLCURL final : public TavloPresentSourceMediaVLC
{
    Q_OBJECT

public:
    using TavloPresentSourceMediaVLC::TavloPresentSourceMediaVLC;
    bool openSource(const tagTavloPresentSourceInfo& info) override;
};

/// A capture device with a sound device. It alone keeps the size and layout that the record asks for.
class TavloPresentSourceMediaVLCDev final : public TavloPresentSourceMediaVLC
{
    Q_OBJECT

public:
    using TavloPresentSourceMediaVLC::TavloPresentSourceMediaVLC;
    bool openSource(const tagTavloPresentSourceInfo& info) override;
};

/// An input of a Decklink card.
class TavloPresentSourceMediaVLCDecklink final : public TavloPresentSourceMediaVLC
{
    Q_OBJECT

public:
    using TavloPresentSourceMediaVLC::TavloPresentSourceMediaVLC;
    bool openSource(const tagTavloPresentSourceInfo& info) override;
};

/// A network camera.
class TavloPresentSourceMediaVLCHikvision final : public TavloPresentSourceMediaVLC
{
    Q_OBJECT

public:
    using TavloPresentSourceMediaVLC::TavloPresentSourceMediaVLC;
    bool openSource(const tagTavloPresentSourceInfo& info) override;
};

/// A capture card of its maker's driver.
class TavloPresentSourceMediaVLCMW final : public TavloPresentSourceMediaVLC
{
    Q_OBJECT

public:
    using TavloPresentSourceMediaVLC::TavloPresentSourceMediaVLC;
    bool openSource(const tagTavloPresentSourceInfo& info) override;
};
