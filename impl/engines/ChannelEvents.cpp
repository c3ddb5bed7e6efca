#include "engines/ChannelEvents.h"

#include <tavlo/records/OutputRecords.h>

namespace tavlo {

namespace {

const QVariant done(0);

/// Carries out something on the source of a1, if there is one.
template <class Function>
EventHandler onSource(ChannelSet& channels, Function function)
{
    return [&channels, function](EventArguments args) -> std::optional<QVariant> {
        if (TavloPresentChannelSource* const source = channels.source(payload<int>(args.a1)))
            function(*source, args);
        return done;
    };
}

/// Stores the record of a2 in the source of a1.
template <class Record>
EventRow storeRow(TavloEngineEvent event, ChannelSet& channels,
                  void (TavloPresentChannelSource::*setter)(const Record&))
{
    return {event, onSource(channels, [setter](TavloPresentChannelSource& source, EventArguments args) {
                (source.*setter)(payload<Record>(args.a2));
            })};
}

/// Opens or closes the source of a1: what it returns is the event's result.
template <class Function>
EventHandler sourceResult(ChannelSet& channels, Function function)
{
    return [&channels, function](EventArguments args) -> std::optional<QVariant> {
        TavloPresentChannelSource* const source = channels.source(payload<int>(args.a1));
        return source ? function(*source, args) : done;
    };
}

/// Carries out something with the program, if there is one.
template <class Function>
EventHandler onProgram(ChannelSet& channels, Function function)
{
    return [&channels, function](EventArguments args) -> std::optional<QVariant> {
        if (TavloPresentChannelPGM* const program = channels.program())
            function(*program, args);
        return done;
    };
}

/// Carries out something on the channel of a1.
template <class Function>
EventHandler onChannel(ChannelSet& channels, Function function)
{
    return [&channels, function](EventArguments args) -> std::optional<QVariant> {
        if (TavloPresentChannelRich* const channel = channels.find(payload<int>(args.a1)))
            function(*channel, args);
        return done;
    };
}

/// The same, or on every channel where a1 is 65535.
template <class Function>
EventHandler onChannels(ChannelSet& channels, Function function)
{
    return [&channels, function](EventArguments args) -> std::optional<QVariant> {
        const int wanted = payload<int>(args.a1);
        for (const auto& channel : channels.all()) {
            if (wanted == static_cast<int>(TavloPresentChannelIDAll) || channel->channelId() == wanted)
                function(*channel, args);
        }
        return done;
    };
}

/// Labels tell which overlays show a channel.
void refreshLabels(const ChannelSet& channels)
{
    for (TavloPresentChannelSource* const source : channels.sources())
        source->refreshLabel();
}

/// An event about an item of a kind that no channel holds: it is found nowhere.
std::optional<QVariant> findNothing(EventArguments) { return done; }

/// The same, of an event that brings a scene file along, which ends here.
std::optional<QVariant> endSerialize(EventArguments args)
{
    const auto address = static_cast<quintptr>(payload<qulonglong>(args.a4));
    const InterfacePtr<IUnknownEx> serialize(reinterpret_cast<IUnknownEx*>(address));
    return done;
}

} // namespace

std::vector<EventRow> sourceEventRows(ChannelSet& channels)
{
    using Source = TavloPresentChannelSource;
    return {
        {TavloEventOpenSource, sourceResult(channels,
                                            [](Source& source, EventArguments args) {
                                                return source.openSource(payload<tagTavloPresentSourceInfo>(args.a2));
                                            })},
        {TavloEventCloseSource,
         sourceResult(channels, [](Source& source, EventArguments) { return source.closeSource(); })},
        storeRow(TavloEventSetPictureProcess, channels, &Source::setPictureProcess),
        storeRow(TavloEventSetChromaKey, channels, &Source::setChromaKey),
        storeRow(TavloEventSetLumaKey, channels, &Source::setLumaKey),
        storeRow(TavloEventSetCrop, channels, &Source::setCrop),
        storeRow(TavloEventSetColorAdjust, channels, &Source::setColorAdjust),
        storeRow(TavloEventSetPictureMisc, channels, &Source::setPictureMisc),
        {TavloEventSetLayoutElement,
         onChannels(channels,
                    [](TavloPresentChannelRich& channel, EventArguments args) {
                        channel.setLayoutElement(payload<int>(args.a2), payload<tagTavloShowLayoutElement>(args.a3));
                    })},
    };
}

std::vector<EventRow> outputEventRows(ChannelSet& channels)
{
    return {
        {TavloEventStartOutput, onProgram(channels,
                                          [](TavloPresentChannelPGM& program, EventArguments args) {
                                              const auto param = payload<tagTavloPresentOutputParam>(args.a3);
                                              if (program.outputTarget())
                                                  program.outputTarget()->startOutput(args.a1, args.a2,
                                                                                      QVariant::fromValue(param));
                                          })},
        {TavloEventStopOutput, onProgram(channels,
                                         [](TavloPresentChannelPGM& program, EventArguments args) {
                                             if (program.outputTarget())
                                                 program.outputTarget()->stopOutput(args.a1, args.a2, false);
                                         })},
    };
}

std::vector<EventRow> switchEventRows(ChannelSet& channels, std::function<void()> markHighlight)
{
    const auto select = [&channels, markHighlight](EventArguments args) -> std::optional<QVariant> {
        const auto pane = payload<quint32>(args.a1);
        const int channelId = payload<int>(args.a2);
        if (pane == TavloPresentChannelIDPVM && channels.preview())
            channels.preview()->setShownChannel(channelId);
        if (pane == TavloPresentChannelIDPVM && channels.program())
            channels.program()->setNextChannel(channelId);
        if (pane == TavloPresentChannelIDPGM && channels.program())
            channels.program()->setProgramChannel(channelId);
        markHighlight();
        return done;
    };
    return {
        {TavloEventSetTransitionPos,
         onProgram(channels, [](TavloPresentChannelPGM& program,
                                EventArguments args) { program.setFader(qreal{payload<float>(args.a2)}); })},
        {TavloEventTransition, onProgram(channels,
                                         [markHighlight](TavloPresentChannelPGM& program, EventArguments args) {
                                             program.startTransition(
                                                 payload<tagTavloPresentTransitionEffectParam>(args.a3),
                                                 payload<int>(args.a2));
                                             markHighlight();
                                         })},
        {TavloEventSelectChannel, select},
    };
}

std::vector<EventRow> itemEventRows(ChannelSet& channels)
{
    using Channel = TavloPresentChannelRich;
    return {
        {TavloEventEnterPresent, endSerialize},
        {TavloEventExitPresent, findNothing},
        {TavloEventReenterPresent, findNothing},
        {TavloEventDisplayPresentItem, findNothing},
        {TavloEventEnterComponent, endSerialize},
        {TavloEventExitComponent, findNothing},
        {TavloEventUpdateComponent, findNothing},
        {TavloEventSetPresentText, findNothing},
        {TavloEventPlacementChanged, findNothing}, // for the host, who hears of it with the report
        {TavloEventSetPresentPlacement,
         [&channels](EventArguments args) -> std::optional<QVariant> {
             const auto placement = payload<tagTavloShowPresentPlacement>(args.a2);
             for (const auto& channel : channels.all())
                 channel->setPresentPlacement(placement);
             return done;
         }},
        {TavloEventAddLogo, onChannel(channels,
                                      [](Channel& channel, EventArguments args) {
                                          channel.addLogo(payload<tagTavloShowLogoInfo>(args.a2), LayerLogos);
                                      })},
        {TavloEventRemoveLogo,
         onChannel(channels,
                   [](Channel& channel, EventArguments args) { channel.removeLogo(payload<QString>(args.a2)); })},
        {TavloEventUpdateLogo,
         onChannels(channels, [](Channel& channel,
                                 EventArguments args) { channel.updateLogo(payload<tagTavloShowLogoInfo>(args.a2)); })},
        {TavloEventAddOverlay, onChannel(channels,
                                         [&channels](Channel& channel, EventArguments args) {
                                             channel.addOverlay(payload<tagTavloShowLogoInfo>(args.a2), LayerOverlays);
                                             refreshLabels(channels);
                                         })},
        {TavloEventRemoveOverlay, onChannel(channels,
                                            [&channels](Channel& channel, EventArguments args) {
                                                channel.removeOverlay(payload<QString>(args.a2));
                                                refreshLabels(channels);
                                            })},
        {TavloEventUpdateOverlay, onChannels(channels,
                                             [](Channel& channel, EventArguments args) {
                                                 channel.updateOverlay(payload<tagTavloShowLogoInfo>(args.a2));
                                             })},
        {TavloEventAddText, onChannel(channels,
                                      [](Channel& channel, EventArguments args) {
                                          channel.addText(payload<tagTavloShowTextInfo>(args.a2), LayerTexts);
                                      })},
        {TavloEventRemoveText,
         onChannel(channels,
                   [](Channel& channel, EventArguments args) { channel.removeText(payload<QString>(args.a2)); })},
        {TavloEventReplaceText, onChannel(channels,
                                          [](Channel& channel, EventArguments args) {
                                              const auto info = payload<tagTavloShowTextInfo>(args.a2);
                                              channel.removeText(info.uuid);
                                              channel.addText(info, LayerTexts);
                                          })},
        {TavloEventSetTextValue, findNothing},
        {TavloEventSetBlendLayer,
         onChannel(channels,
                   [](Channel& channel, EventArguments args) { channel.setBlendLayer(payload<QString>(args.a2)); })},
        {TavloEventSetChannelFilter,
         onChannel(channels,
                   [](Channel& channel, EventArguments args) { channel.setChannelFilter(payload<int>(args.a2)); })},
    };
}

std::vector<EventRow> channelEventRows(ChannelSet& channels)
{
    using Channel = TavloPresentChannelRich;
    return {
        {TavloEventSetChannelAudioEffect, onChannel(channels,
                                                    [](Channel& channel, EventArguments args) {
                                                        channel.setAudioEffect(
                                                            payload<tagTavloAudioEffectParam>(args.a2));
                                                    })},
    };
}

} // namespace tavlo
