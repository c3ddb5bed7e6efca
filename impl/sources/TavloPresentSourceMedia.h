#pragma once

#include "sources/TavloPresentSource.h"

#include <QReadWriteLock>

/// Base of the sources that decode: what they draw needs no clear of the channel between two pictures.
class TavloPresentSourceMedia : public TavloPresentSource
{
    Q_OBJECT

public:
    using TavloPresentSource::TavloPresentSource;

    bool openSource(const tagTavloPresentSourceInfo& info) override;
    void closeSource() override;

protected:
    ~TavloPresentSourceMedia() override = default;

    /// Guards what the decoder's threads tell.
    QReadWriteLock _mediaLock;
    tagTavloMediaFormatInfo _mediaFormat; ///< what the decoder delivers
};
