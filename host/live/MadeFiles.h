#pragma once

#include "show/Show.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace tavlo::host {

/// Finds out which files a run makes, by what is there before and after it: a recording takes another name where its own
/// is in use, and a picture is written by the engine's own threads.
class MadeFiles
{
public:
    /// Looks at what is there already.
    /// \param picture  that will be saved; empty for none
    MadeFiles(const Show& show, const QString& picture);

    /// The recordings that are new, in the order of their names.
    QStringList recordings() const;

    /// Whether the picture has been written since.
    bool hasPicture() const;

private:
    /// Where an output records, and what its files are called.
    struct Place
    {
        QString folder, prefix, suffix;
        QStringList before;

        QStringList files() const;
    };

    const QString _picture;
    const quint64 _pictureBefore;
    std::vector<Place> _places;
};

} // namespace tavlo::host
