#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

namespace tavlo {

/// A folder of the settings as one of this machine: a drive letter, where there are no drives, stands for the user's
/// folder of movies.
QString resolvedFolder(const QString& folder);

/// The name with `${TIME}` written out; its slashes make folders, and steps to a parent folder are left out.
/// \param timeFormat  as QDateTime knows it
QString recordFileName(const QString& name, const QString& timeFormat, const QDateTime& time);

/// Makes a new, empty file and the folders to it. A name that is there already gets a counter: "name_1.mp4".
/// \param suffix  without its dot
/// \return the path; empty, the reason in `error`, when it cannot be made
QString makeRecordFile(const QString& folder, const QString& name, const QString& suffix, QString& error);

/// How segments are named that go when they are old.
inline constexpr const char* segmentTimeFormat = "yyyy-MM-dd/hh_mm_ss";

/// The files of a folder that bear such a name, with or without a counter; all else there is somebody else's.
QStringList segmentsIn(const QString& folder);

} // namespace tavlo
