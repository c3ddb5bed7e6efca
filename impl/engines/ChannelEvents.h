#pragma once

#include "engines/ChannelSet.h"
#include "frame/EventTable.h"

namespace tavlo {

// The rows that engines share. Each takes channels that outlive the table.

/// TavloEventOpenSource to TavloEventSetPictureMisc, and the elements of layout sources.
std::vector<EventRow> sourceEventRows(ChannelSet& channels);

/// The outputs of the program.
std::vector<EventRow> outputEventRows(ChannelSet& channels);

/// Takes and selection. \param markHighlight  has the marks of preview and program drawn anew
std::vector<EventRow> switchEventRows(ChannelSet& channels, std::function<void()> markHighlight);

/// What is shown on channels beside their pictures.
std::vector<EventRow> itemEventRows(ChannelSet& channels);

/// Effect on a channel's sound, and its picture as a file.
std::vector<EventRow> channelEventRows(ChannelSet& channels);

} // namespace tavlo
