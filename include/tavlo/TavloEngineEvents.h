#pragma once

#include <tavlo/Export.h>

#include <QtGlobal>

/// Every event of the main engine and its variants: name and code. The groups are 0x1xxxx engine, window and audio,
/// 0x2xxxx source channels, 0x4xxxx outputs, 0x8xxxx switching and 0x10xxxx show items. What each takes and gives
/// stands in docs/events.md; an engine that lacks one answers -1.
#define TAVLO_ENGINE_EVENTS(X)                                                                                         \
    X(TavloEventCreateEngine, 0x10000)                                                                                 \
    X(TavloEventDestroyEngine, 0x10001)                                                                                \
    X(TavloEventUpdateWindow, 0x10002)                                                                                 \
    X(TavloEventSetAudioMixer, 0x10003)                                                                                \
    X(TavloEventSetChannelAudioEffect, 0x10004)                                                                        \
    X(TavloEventSaveChannelPicture, 0x10005)                                                                           \
    X(TavloEventCreateProgress, 0x10006)  /* to the sink only */                                                       \
    X(TavloEventDestroyProgress, 0x10007) /* to the sink only */                                                       \
    X(TavloEventOpenSource, 0x20000)                                                                                   \
    X(TavloEventCloseSource, 0x20001)                                                                                  \
    X(TavloEventSourceOpened, 0x20002) /* to the sink only */                                                          \
    X(TavloEventSourceClosed, 0x20003) /* to the sink only */                                                          \
    X(TavloEventSetPictureProcess, 0x20004)                                                                            \
    X(TavloEventSetChromaKey, 0x20005)                                                                                 \
    X(TavloEventSetLumaKey, 0x20006)                                                                                   \
    X(TavloEventSetCrop, 0x20007)                                                                                      \
    X(TavloEventSetColorAdjust, 0x20008)                                                                               \
    X(TavloEventSetPictureMisc, 0x20009)                                                                               \
    X(TavloEventUpdateSource, 0x2000a)        /* Air and Matrix */                                                     \
    X(TavloEventGetSourceStatistics, 0x2000b) /* Air */                                                                \
    X(TavloEventStartOutput, 0x40000)                                                                                  \
    X(TavloEventStopOutput, 0x40001)                                                                                   \
    X(TavloEventStartHDMIProjection, 0x40002) /* Matrix */                                                             \
    X(TavloEventStopHDMIProjection, 0x40003)  /* Matrix */                                                             \
    X(TavloEventSetTransitionPos, 0x80000)                                                                             \
    X(TavloEventTransition, 0x80001)                                                                                   \
    X(TavloEventSelectChannel, 0x80002)                                                                                \
    X(TavloEventEnterPresent, 0x100000)                                                                                \
    X(TavloEventExitPresent, 0x100001)                                                                                 \
    X(TavloEventReenterPresent, 0x100002)                                                                              \
    X(TavloEventDisplayPresentItem, 0x100003)                                                                          \
    X(TavloEventEnterComponent, 0x100004)                                                                              \
    X(TavloEventExitComponent, 0x100005)                                                                               \
    X(TavloEventUpdateComponent, 0x100006)                                                                             \
    X(TavloEventSetPresentText, 0x100007)                                                                              \
    X(TavloEventSetPresentValue, 0x100008) /* Air */                                                                   \
    X(TavloEventSetPresentImage, 0x100009) /* Air */                                                                   \
    X(TavloEventPlacementChanged, 0x10000a)                                                                            \
    X(TavloEventSetPresentPlacement, 0x10000b)                                                                         \
    X(TavloEventAddLogo, 0x10000c)                                                                                     \
    X(TavloEventRemoveLogo, 0x10000d)                                                                                  \
    X(TavloEventUpdateLogo, 0x10000e)                                                                                  \
    X(TavloEventAddOverlay, 0x10000f)                                                                                  \
    X(TavloEventRemoveOverlay, 0x100010)                                                                               \
    X(TavloEventUpdateOverlay, 0x100011)                                                                               \
    X(TavloEventAddText, 0x100012)                                                                                     \
    X(TavloEventRemoveText, 0x100013)                                                                                  \
    X(TavloEventReplaceText, 0x100014)                                                                                 \
    X(TavloEventSetTextValue, 0x100015)                                                                                \
    X(TavloEventSetBlendLayer, 0x100016)                                                                               \
    X(TavloEventSetChannelFilter, 0x100017)                                                                            \
    X(TavloEventSourcePlaylistEnd, 0x100018) /* posted by the engine itself */                                         \
    X(TavloEventSetLayoutElement, 0x100019)                                                                            \
    X(TavloEventSetAudioPreview, 0x10001a) /* Matrix */

enum TavloEngineEvent : qulonglong
{
#define TAVLO_EVENT(name, code) name = code,
    TAVLO_ENGINE_EVENTS(TAVLO_EVENT)
#undef TAVLO_EVENT
};

/// The name of an event's code, or null for a code that no engine has. Static. Any thread.
TAVLO_EXPORT const char* TavloEngineEventName(qulonglong event);
