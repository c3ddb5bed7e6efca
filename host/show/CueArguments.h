#pragma once

#include <tavlo/TavloPresentUtil.h>

#include <QDomElement>
#include <QVariant>

#include <array>

namespace tavlo::host {

/// What an argument names, where that can be examined.
enum class CueMeaning
{
    Plain,       ///< nothing of the kind
    Source,      ///< a source channel
    Channel,     ///< a source channel, PVM or PGM
    Picture,     ///< the same, or 8192: the whole canvas
    Bus,         ///< PVM or PGM
    OutputIndex, ///< 0 to 3
    OutputType,  ///< a TavloPresentOutputType
    ReadFile,    ///< a file that has to be there; an empty text names none
    WrittenFile, ///< a file in a folder that has to be there
};

/// How one argument of an event is written in a show file: as a value, or as a record's element.
struct CueArgument
{
    const char* record = nullptr;                           ///< the record's type; null for a value
    QVariant (*read)(const QDomElement& element) = nullptr; ///< null where the event takes nothing
    /// What is wrong with the element; empty where everything is read as it stands.
    QList<TavloXmlFinding> (*check)(const QDomElement& element) = nullptr;
    CueMeaning meaning = CueMeaning::Plain;
    bool mayLack = false; ///< the event has a default for it

    CueArgument as(CueMeaning wanted) const;
    CueArgument orDefault() const;
};

/// An event that a cue can post.
struct CueEvent
{
    qulonglong code = 0;
    std::array<CueArgument, 4> arguments;
    bool isMade = true; ///< false: a kind of item that this build does not make
};

/// The event of that name, such as "TavloEventTransition"; null for one that no cue can post.
const CueEvent* cueEvent(const QString& name);

/// Whether a number names something of that kind.
/// \param sourceChannels  how many the engine has
bool names(CueMeaning meaning, quint32 number, quint32 sourceChannels);

/// The number of a transition that is given as a number, a name such as "fade_Normal", or "random"; -1 for no such one.
int transitionNumber(const QString& text);

} // namespace tavlo::host
