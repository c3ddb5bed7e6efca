#pragma once

#include <QString>

namespace tavlo {

/// Makes the folder of a playlist, `index.m3u8`.
/// \param clear  takes away the list that is there and the segments of it, `index123.ts`; all else stays
void prepareHlsFolder(const QString& folder, bool clear);

} // namespace tavlo
