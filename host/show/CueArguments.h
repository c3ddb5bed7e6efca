#pragma once

#include <tavlo/TavloPresentUtil.h>

#include <QDomElement>
#include <QVariant>

#include <array>

namespace tavlo::host {

/// How one argument of an event is written in a show file: as a value, or as a record's element.
struct CueArgument
{
    const char* record = nullptr;                           ///< the record's type; null for a value
    QVariant (*read)(const QDomElement& element) = nullptr; ///< null where the event takes nothing
    /// What is wrong with the element; empty where everything is read as it stands.
    QList<TavloXmlFinding> (*check)(const QDomElement& element) = nullptr;
};

/// An event that a cue can post.
struct CueEvent
{
    qulonglong code = 0;
    std::array<CueArgument, 4> arguments;
};

/// The event of that name, such as "TavloEventTransition"; null for one that no cue can post.
const CueEvent* cueEvent(const QString& name);

/// The number of a transition that is given as a number, a name such as "fade_Normal", or "random"; -1 for no such one.
int transitionNumber(const QString& text);

} // namespace tavlo::host
