#include "TavloOutputModule/RecordTarget.h"

#include "TavloOutputModule/Mp4Index.h"
#include "TavloOutputModule/RecordPath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>

#include <array>
#include <utility>

namespace tavlo {

namespace {

constexpr qint64 queueLimit = 10'000'000; // microseconds
constexpr std::chrono::seconds retryPause{2};
constexpr qint64 roomToBegin = qint64{8} << 20; // bytes; a full disk is not tried with every picture
constexpr size_t leadCount = 2;                 // AAC needs the block before the first one

struct Mode
{
    const char* format;
    const char* suffix;
    std::vector<std::pair<std::string, std::string>> options;
};

const Mode& modeOf(quint32 mode)
{
    static const std::array<Mode, 3> modes{
        Mode{"mpegts", "ts", {}},
        Mode{"matroska", "mkv", {{"cluster_time_limit", "500"}}},
        Mode{"mp4",
             "mp4",
             {{"movflags", "empty_moov+default_base_moof+frag_keyframe+frag_discont"}, // tracks may begin later
              {"use_editlist", "0"},
              {"frag_duration", "400000"},
              {"strict", "-1"}}},
    };
    return modes[mode < modes.size() ? mode : 2];
}

bool isMp4(quint32 mode) { return mode >= 2; }

} // namespace

RecordTarget::RecordTarget(std::string name, const StreamFormat& format, RecordSettings settings)
    : Target(std::move(name), format, queueLimit), _settings(std::move(settings))
{}

void RecordTarget::take(const CodedPacketPtr& packet)
{
    if (beginsFile(*packet)) {
        closeFile();
        openFile(*packet);
    }
    if (_muxer) {
        writePacket(*packet);
        return;
    }
    countDropped(*packet);
    if (!packet->video) {
        _lead.push_back(packet);
        if (_lead.size() > leadCount)
            _lead.pop_front();
    }
}

bool RecordTarget::beginsFile(const CodedPacket& packet) const
{
    if (!_format.canBegin(packet))
        return false;
    if (!_muxer)
        return std::chrono::steady_clock::now() >= _retryAt;
    return _settings.period > 0 && packet.dts() - _origin >= _settings.period * 1'000'000;
}

void RecordTarget::openFile(const CodedPacket& packet)
{
    const QString name = recordFileName(_settings.name, _settings.timeFormat, QDateTime::currentDateTime());
    const Mode& mode = modeOf(_settings.mode);
    QString reason;
    _path = makeRecordFile(_settings.folder, name, QLatin1String(mode.suffix), reason);
    if (_path.isEmpty())
        return fail(reason.toStdString());
    const QStorageInfo disk(_path);
    std::string error = "the disk is full";
    if (!disk.isValid() || disk.bytesAvailable() >= roomToBegin)
        _muxer = Muxer::open({mode.format, _path.toStdString(), mode.options}, _format, _limits, error);
    if (!_muxer) {
        QFile::remove(_path);
        return fail(_path.toStdString() + ": " + error);
    }
    _failureTold = false;
    countOpening();
    setState(State::Running);
    tell("records to " + _path.toStdString());
    _origin = packet.dts();
    std::erase_if(_lead, [&](const CodedPacketPtr& early) { return early->dts() > packet.dts(); });
    for (const CodedPacketPtr& early : _lead)
        _origin = std::min(_origin, early->dts());
    for (const CodedPacketPtr& early : std::exchange(_lead, {}))
        if (_muxer)
            writePacket(*early);
    removeOldFiles();
}

void RecordTarget::writePacket(const CodedPacket& packet)
{
    std::string error;
    if (_muxer->write(packet, _origin, error)) {
        countWritten(packet);
        return;
    }
    countDropped(packet);
    _muxer.reset();
    fail(_path.toStdString() + ": " + error);
}

void RecordTarget::closeFile()
{
    if (!_muxer)
        return;
    std::string error;
    const bool finished = _muxer->finish(error);
    _muxer.reset();
    QString reason = QString::fromStdString(error);
    if (finished && (!isMp4(_settings.mode) || indexFragmentedMp4(_path, reason)))
        return;
    tell(_path.toStdString() + ": the end could not be written: " + reason.toStdString());
}

void RecordTarget::close()
{
    closeFile();
    _lead.clear();
}

void RecordTarget::fail(const std::string& text)
{
    _retryAt = std::chrono::steady_clock::now() + retryPause;
    setState(State::Waiting);
    if (!std::exchange(_failureTold, true))
        tell((_limits.isEnding() ? "cannot record: " : "cannot record, and tries again: ") + text);
}

void RecordTarget::removeOldFiles() const
{
    if (_settings.keep <= 0)
        return;
    const QDateTime oldest = QDateTime::currentDateTime().addSecs(-_settings.keep);
    for (const QString& path : segmentsIn(_settings.folder)) {
        const QFileInfo file(path);
        if (file.lastModified() < oldest && QFile::remove(path))
            QDir().rmdir(file.path()); // refused as long as anything is in it
    }
}

} // namespace tavlo
