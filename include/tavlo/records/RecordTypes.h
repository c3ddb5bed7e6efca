#pragma once

#include <tavlo/Export.h>

/// Every record that has an XML form. A new record is a new row here, a structure in one of the headers beside this
/// one, and a description of its fields in impl/records/fields.
#define TAVLO_FOR_EACH_RECORD(X)                                                                                       \
    X(tagTavloVideoInfo)                                                                                               \
    X(tagTavloAudioInfo)                                                                                               \
    X(tagTavloMediaFormatInfo)                                                                                         \
    X(tagTavloPresentEngineInfo)                                                                                       \
    X(tagTavloPresentSourceInfo)                                                                                       \
    X(tagTavloMusicLRCStyle)                                                                                           \
    X(tagTavloRCFileInfo)                                                                                              \
    X(tagTavloEQualizerParam)                                                                                          \
    X(tagTavloAudioProcessParamDelay)                                                                                  \
    X(tagTavloAudioProcessParamPitch)                                                                                  \
    X(tagTavloAudioProcessParamVolcalCut)                                                                              \
    X(tagTavloAudioProcessParamNoiseSuprress)                                                                          \
    X(tagTavloAudioProcessParamNoiseGate)                                                                              \
    X(tagTavloAudioEffectParam)                                                                                        \
    X(tagTavloPresentAudioPreviewParam)                                                                                \
    X(tagTavloPresentAudioMixerParam)                                                                                  \
    X(tagTavloPresentPictureProcess)                                                                                   \
    X(tagTavloPresentPictureChromaKey)                                                                                 \
    X(tagTavloPresentPictureLumaKey)                                                                                   \
    X(tagTavloPresentPictureCrop)                                                                                      \
    X(tagTavloPresentPictureColorAdjust)                                                                               \
    X(tagTavloPresentPictureMisc)                                                                                      \
    X(tagTavloPresentPictureFilterParam)                                                                               \
    X(tagTavloVideoProcessDrawText)                                                                                    \
    X(tagTavloVideoProcessLogo)                                                                                        \
    X(tagTavloVideoProcess3dTrans)                                                                                     \
    X(tagTavloVideoEffectParam)                                                                                        \
    X(tagPresentItemAnimationInfo)                                                                                     \
    X(tagTavloShowDisplayItemInfo)                                                                                     \
    X(tagTavloShowTextStyle)                                                                                           \
    X(tagTavloShowTextInfo)                                                                                            \
    X(tagTavloShowLogoInfo)                                                                                            \
    X(tagTavloShowLayoutElement)                                                                                       \
    X(tagTavloShowLayoutInfo)                                                                                          \
    X(tagTavloShowPresentTimelineInfo)                                                                                 \
    X(tagTavloShowViewportCamera)                                                                                      \
    X(tagTavloShowObjectProperty)                                                                                      \
    X(tagTavloShowComponentProperties)                                                                                 \
    X(tagTavloShowPresentInfo)                                                                                         \
    X(tagTavloShowComponentInfo)                                                                                       \
    X(tagTavloCloudTourConfig)                                                                                         \
    X(tagTavloPresentControlledCommand)                                                                                \
    X(tagTavloPresentControlledConfig)                                                                                 \
    X(tagTavloPresentHDMIOutputInfo)                                                                                   \
    X(tagTavloPresentOutputParam)

/// The records that stand in lists, and the tag of an entry.
#define TAVLO_FOR_EACH_LIST_RECORD(X)                                                                                  \
    X(tagTavloShowDisplayItemInfo, "displayItemInfo")                                                                  \
    X(tagTavloShowObjectProperty, "Property")                                                                          \
    X(tagTavloShowPresentTimelineInfo, "timeline")                                                                     \
    X(tagTavloShowViewportCamera, "camera")

#define TAVLO_DECLARE(Record) struct Record;
TAVLO_FOR_EACH_RECORD(TAVLO_DECLARE)
#undef TAVLO_DECLARE

namespace tavlo {

template <class T>
inline constexpr bool isRecord = false;

/// The record's name.
template <class T>
inline constexpr const char* recordName = nullptr;

/// The tag of an entry in a list of that record; null where no list of it exists.
template <class T>
inline constexpr const char* listEntryTag = nullptr;

#define TAVLO_DECLARE(Record)                                                                                          \
    template <>                                                                                                        \
    inline constexpr bool isRecord<Record> = true;                                                                     \
    template <>                                                                                                        \
    inline constexpr const char* recordName<Record> = #Record;
TAVLO_FOR_EACH_RECORD(TAVLO_DECLARE)
#undef TAVLO_DECLARE

#define TAVLO_DECLARE(Record, tag)                                                                                     \
    template <>                                                                                                        \
    inline constexpr const char* listEntryTag<Record> = tag;
TAVLO_FOR_EACH_LIST_RECORD(TAVLO_DECLARE)
#undef TAVLO_DECLARE

} // namespace tavlo

template <class T>
concept TavloRecord = tavlo::isRecord<T>;

template <class T>
concept TavloListRecord = TavloRecord<T> && tavlo::listEntryTag<T>
!= nullptr;

/// Records are equal when all their fields are, those without an XML form too. A NaN equals a NaN. Any thread.
template <TavloRecord T>
bool operator==(const T& a, const T& b);
