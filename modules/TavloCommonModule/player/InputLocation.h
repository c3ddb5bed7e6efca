#pragma once

#include <QList>
#include <QString>

#include <map>
#include <optional>

struct tagTavloMediaFormatInfo;
struct tagTavloSourcePlayerInfo;

namespace tavlo {

/// Where an input is and how it has to be opened.
struct InputLocation
{
    /// How an input behaves in time.
    enum class Pace
    {
        File,     ///< is there whenever it is read
        Remote,   ///< a file on a server, or a live stream in the form of one: its header tells
        RealTime, ///< comes as it is made
        Device,   ///< the same, from this machine
    };

    /// Who reads it.
    enum class Reader
    {
        Ffmpeg,
        Ndi,
        Gstreamer,
    };

    QString name;   ///< as people know it, for the log; without a password
    QString url;    ///< as its reader takes it, or a camera's name
    QString format; ///< the demultiplexer, empty to find out
    QString sound;  ///< of a card whose sound is a thing of its own
    QString host;   ///< where only some of its machines are meant
    QString place;  ///< what only one can have at a time; empty when others don't mind
    Pace pace = Pace::File;
    Reader reader = Reader::Ffmpeg;
    QString protocols;                  ///< that the input, and all it refers to, may open; separated by commas
    std::map<QString, QString> options; ///< of its reader
    int cachingMilliseconds = 0;
    bool isCamera = false;     ///< its file is looked for each time that it is opened: a plug may change it
    bool picturesOnly = false; ///< of a pair of devices, the one for pictures
    bool soundOnly = false;
};

/// What a record asks for.
struct InputPlan
{
    QList<InputLocation> entries;        ///< played one after the other
    std::optional<InputLocation> second; ///< a device for sound that is read beside the only entry
    QString refusal;                     ///< why nothing can be opened; empty when it can
};

/// Understands a record: kinds, addresses, names of devices. Nothing is opened.
InputPlan planInput(const tagTavloSourcePlayerInfo& info, const tagTavloMediaFormatInfo& wanted);

/// The location of one path or address of a list. A refusal when it is an address of no known protocol.
std::optional<InputLocation> mediaLocation(const QString& pathOrUrl, int cachingMilliseconds);

/// Capture devices by a record of that kind: one for pictures, one for sound, either may be missing.
InputPlan captureInput(const tagTavloSourcePlayerInfo& info, const tagTavloMediaFormatInfo& wanted);

/// The file of a camera by its file, its stable id below /dev/v4l, or the name that its driver gives it. A name that is
/// not found is kept: the device may be plugged in later.
QString cameraFile(const QString& name);

/// A Decklink card by a record of that kind: its number, mode and connections.
InputPlan decklinkInput(const tagTavloSourcePlayerInfo& info);

} // namespace tavlo
