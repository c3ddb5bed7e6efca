#pragma once

#include <QString>

namespace tavlo {

/// Closes an MP4 file that was written in fragments as a plain one with an index of all samples, in place: the index is
/// appended, and then the fragments become plain data by one write of 16 bytes. At every moment the file plays.
///
/// False, the reason in `error`, when the file is no such one or cannot be written; it stays as it was then.
bool indexFragmentedMp4(const QString& path, QString& error);

} // namespace tavlo
