#pragma once

#include "TavloOutputModule/Target.h"

#include <QString>

#include <deque>

namespace tavlo {

struct RecordSettings
{
    QString folder;
    QString name;
    QString timeFormat;
    qint64 period = 0; ///< seconds of a file; 0: one file
    quint32 mode = 2;  ///< 0 MPEG-TS, 1 Matroska, 2 MP4
    qint64 keep = 0;   ///< seconds after which a segment of the folder goes; 0: never
};

/// Writes files, one behind the other, each of which begins with a key picture. No packet is lost between two of them.
///
/// A file that was not closed plays up to what was written half a second before. A disk that is full or gone is tried
/// again every two seconds.
class RecordTarget final : public Target
{
public:
    RecordTarget(std::string name, const StreamFormat& format, RecordSettings settings);

private:
    void take(const CodedPacketPtr& packet) override;
    void close() override;
    std::chrono::milliseconds patience() const override { return std::chrono::minutes(1); }

    bool beginsFile(const CodedPacket& packet) const;
    void openFile(const CodedPacket& packet);
    void writePacket(const CodedPacket& packet);
    void closeFile();
    void fail(const std::string& text);
    void removeOldFiles() const;

    const RecordSettings _settings;

    // target's thread
    std::unique_ptr<Muxer> _muxer;
    QString _path;
    qint64 _origin = 0;               ///< dts of the file's first packet
    std::deque<CodedPacketPtr> _lead; ///< sound in front of the first key picture, which decoding needs
    std::chrono::steady_clock::time_point _retryAt{};
    bool _failureTold = false;
};

} // namespace tavlo
