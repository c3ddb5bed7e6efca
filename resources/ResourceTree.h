#pragma once

namespace tavlo {

/// Makes the resource tree readable under ":/res/Resources": effect files, luma, mask and filter images. To be called
/// before the first use; further calls do nothing. Any thread.
void initResourceTree();

} // namespace tavlo
