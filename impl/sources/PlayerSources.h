#pragma once

#include "sources/TavloPresentSourceMediaVLC.h"

namespace tavlo {

/// Turns the fields of a source's record into what the player opens, and into the format to ask of it.
/// \return the source's name for people
using DescribePlay = QString(const tagTavloPresentSourceInfo& info, tagTavloSourcePlayerInfo& player,
                             tagTavloMediaFormatInfo& wanted);

DescribePlay describeMovieList, describeUrl, describeDevice, describeDecklink, describeCamera, describeCard;

/// A source of a kind that a player plays: all but the description is the base's. Frame thread.
template <DescribePlay* describe>
class PlayerSource : public TavloPresentSourceMediaVLC
{
public:
    using TavloPresentSourceMediaVLC::TavloPresentSourceMediaVLC;

    bool openSource(const tagTavloPresentSourceInfo& info) override
    {
        if (!TavloPresentSourceMediaVLC::openSource(info))
            return false;
        _playerInfo.enabled = 1;
        _playerInfo.hwDecode = info.HWDecode;
        _playerInfo.deinterlaceMode = static_cast<qint32>(info.deinterlaceMode);
        setName(describe(info, _playerInfo, _outputFormat));
        if (_playerInfo.kind == TavloSourcePlayerKindTvmp && keepsGraphicsMemory())
            _playerInfo.kind = TavloSourcePlayerKindTvmpCuda;
        return true;
    }
};

} // namespace tavlo

/// A list of files.
class TavloPresentSourceMediaVLCMovieList final : public tavlo::PlayerSource<&tavlo::describeMovieList>
{
public:
    using PlayerSource::PlayerSource;

    /// The name for people follows the list. Player's threads.
    void OnMediaSourcePlayerState(qint32 state, qint32 index, qint32 count) override;
};

/// A network stream, or any other location.
using TavloPresentSourceMediaVLCURL = tavlo::PlayerSource<&tavlo::describeUrl>;

/// A capture device with a sound device. It alone keeps the size and layout that the record asks for.
using TavloPresentSourceMediaVLCDev = tavlo::PlayerSource<&tavlo::describeDevice>;

/// An input of a Decklink card.
using TavloPresentSourceMediaVLCDecklink = tavlo::PlayerSource<&tavlo::describeDecklink>;

/// A network camera.
using TavloPresentSourceMediaVLCHikvision = tavlo::PlayerSource<&tavlo::describeCamera>;

/// A capture card of its maker's driver.
using TavloPresentSourceMediaVLCMW = tavlo::PlayerSource<&tavlo::describeCard>;
