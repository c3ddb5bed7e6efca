#include "show/CueArguments.h"

#include <tavlo/TavloEngineEvents.h>
#include <tavlo/TavloTransitionKinds.h>
#include <tavlo/records/OutputRecords.h>
#include <tavlo/records/PictureRecords.h>
#include <tavlo/records/ShowRecords.h>
#include <tavlo/records/SourceRecords.h>

#include <QSize>

#include <algorithm>

namespace tavlo::host {
namespace {

constexpr int randomTransition = 65535;

QString valueOf(const QDomElement& element) { return element.attribute(QStringLiteral("value")); }

TavloXmlFinding finding(const QDomElement& element, const QString& text)
{
    return {element.lineNumber(), element.columnNumber(), {}, text};
}

/// A number out of a text; channels may be named as in path strings, "PVM" and "PGM" among them.
template <class T>
T number(const QString& text, bool& good)
{
    if constexpr (std::is_floating_point_v<T>) {
        return text.toFloat(&good);
    } else {
        const T value = std::is_signed_v<T> ? static_cast<T>(text.toInt(&good)) : static_cast<T>(text.toUInt(&good));
        if (good)
            return value;
        const TavloPresentChannelID channel = TavloPresentUtil::fromPathString(text);
        good = TavloPresentUtil::toPathString(channel) == text;
        return good ? static_cast<T>(channel) : T{};
    }
}

template <class T>
CueArgument numberArgument()
{
    return {nullptr,
            [](const QDomElement& element) {
                bool good = false;
                return QVariant::fromValue(number<T>(valueOf(element), good));
            },
            [](const QDomElement& element) {
                bool good = false;
                number<T>(valueOf(element), good);
                return good ? QList<TavloXmlFinding>{}
                            : QList{finding(element, QStringLiteral("\"%1\" is no number").arg(valueOf(element)))};
            }};
}

const CueArgument whole = numberArgument<int>();
const CueArgument count = numberArgument<quint32>();
const CueArgument real = numberArgument<float>();

const CueArgument text{nullptr, [](const QDomElement& element) { return QVariant(valueOf(element)); },
                       [](const QDomElement& element) {
                           return element.hasAttribute(QStringLiteral("value"))
                                      ? QList<TavloXmlFinding>{}
                                      : QList{finding(element, QStringLiteral("has no attribute \"value\""))};
                       }};

QSize sizeOf(const QDomElement& element, bool& good)
{
    const QStringList parts = valueOf(element).split(u',');
    bool height = false;
    const QSize size(parts.value(0).toInt(&good), parts.value(1).toInt(&height));
    good = good && height && parts.size() == 2;
    return size;
}

const CueArgument size{
    nullptr,
    [](const QDomElement& element) {
        bool good = false;
        return QVariant(sizeOf(element, good));
    },
    [](const QDomElement& element) {
        bool good = false;
        sizeOf(element, good);
        return good ? QList<TavloXmlFinding>{}
                    : QList{finding(element,
                                    QStringLiteral("\"%1\" is no size such as \"640,360\"").arg(valueOf(element)))};
    }};

template <TavloRecord T>
CueArgument record()
{
    return {tavlo::recordName<T>,
            [](const QDomElement& element) {
                T value;
                QDomElement source = element;
                TavloPresentUtil::readDomElement(source, value);
                return QVariant::fromValue(value);
            },
            [](const QDomElement& element) {
                return TavloPresentUtil::checkDomElement(element, QLatin1String(tavlo::recordName<T>));
            }};
}

/// How a take runs has no form among the records: `effect`, by name or number, `duration` and `easing`.
void visitTransition(const QDomElement& element, tagTavloPresentTransitionEffectParam& param,
                     QList<TavloXmlFinding>& findings)
{
    for (QDomElement child = element.firstChildElement(); !child.isNull(); child = child.nextSiblingElement()) {
        const QString value = valueOf(child);
        bool good = true;
        if (child.tagName() == QLatin1String("effect")) {
            param.effect = transitionNumber(value);
            good = param.effect >= 0;
        } else if (child.tagName() == QLatin1String("duration")) {
            param.duration = value.toFloat(&good);
        } else if (child.tagName() == QLatin1String("easing")) {
            param.easing = value.toInt(&good);
        } else {
            findings.append(finding(child, QStringLiteral("is no field of a transition")));
        }
        if (!good)
            findings.append(finding(child, QStringLiteral("\"%1\" is no %2").arg(value, child.tagName())));
    }
}

const CueArgument transition{"tagTavloPresentTransitionEffectParam",
                             [](const QDomElement& element) {
                                 tagTavloPresentTransitionEffectParam param;
                                 QList<TavloXmlFinding> findings;
                                 visitTransition(element, param, findings);
                                 return QVariant::fromValue(param);
                             },
                             [](const QDomElement& element) {
                                 tagTavloPresentTransitionEffectParam param;
                                 QList<TavloXmlFinding> findings;
                                 visitTransition(element, param, findings);
                                 return findings;
                             }};

const CueArgument timeline = record<tagTavloShowPresentTimelineInfo>();
const CueArgument logo = record<tagTavloShowLogoInfo>();
const CueArgument textItem = record<tagTavloShowTextInfo>();
const CueArgument nothing{};

const std::array events{
    CueEvent{TavloEventSetAudioMixer, {nothing, record<tagTavloPresentAudioMixerParam>(), {}, {}}},
    CueEvent{TavloEventSetChannelAudioEffect, {whole, record<tagTavloAudioEffectParam>(), {}, {}}},
    CueEvent{TavloEventSaveChannelPicture, {whole, text, size, {}}},
    CueEvent{TavloEventOpenSource, {whole, record<tagTavloPresentSourceInfo>(), {}, {}}},
    CueEvent{TavloEventCloseSource, {whole, {}, {}, {}}},
    CueEvent{TavloEventSetPictureProcess, {whole, record<tagTavloPresentPictureProcess>(), {}, {}}},
    CueEvent{TavloEventSetChromaKey, {whole, record<tagTavloPresentPictureChromaKey>(), {}, {}}},
    CueEvent{TavloEventSetLumaKey, {whole, record<tagTavloPresentPictureLumaKey>(), {}, {}}},
    CueEvent{TavloEventSetCrop, {whole, record<tagTavloPresentPictureCrop>(), {}, {}}},
    CueEvent{TavloEventSetColorAdjust, {whole, record<tagTavloPresentPictureColorAdjust>(), {}, {}}},
    CueEvent{TavloEventSetPictureMisc, {whole, record<tagTavloPresentPictureMisc>(), {}, {}}},
    CueEvent{TavloEventStartOutput, {whole, whole, record<tagTavloPresentOutputParam>(), {}}},
    CueEvent{TavloEventStopOutput, {whole, whole, {}, {}}},
    CueEvent{TavloEventSetTransitionPos, {nothing, real, {}, {}}},
    CueEvent{TavloEventTransition, {nothing, count, transition, {}}},
    CueEvent{TavloEventSelectChannel, {whole, whole, {}, {}}},
    CueEvent{TavloEventEnterPresent, {whole, record<tagTavloShowPresentInfo>(), timeline, {}}},
    CueEvent{TavloEventExitPresent, {whole, text, timeline, {}}},
    CueEvent{TavloEventReenterPresent, {whole, text, timeline, {}}},
    CueEvent{TavloEventDisplayPresentItem, {whole, text, record<tagTavloShowDisplayItemInfo>(), text}},
    CueEvent{TavloEventEnterComponent, {whole, record<tagTavloShowComponentInfo>(), {}, {}}},
    CueEvent{TavloEventExitComponent, {whole, text, {}, {}}},
    CueEvent{TavloEventUpdateComponent, {nothing, record<tagTavloShowComponentInfo>(), {}, {}}},
    CueEvent{TavloEventSetPresentText, {whole, text, text, text}},
    CueEvent{TavloEventAddLogo, {whole, logo, {}, {}}},
    CueEvent{TavloEventRemoveLogo, {whole, text, {}, {}}},
    CueEvent{TavloEventUpdateLogo, {whole, logo, {}, {}}},
    CueEvent{TavloEventAddOverlay, {whole, logo, {}, {}}},
    CueEvent{TavloEventRemoveOverlay, {whole, text, {}, {}}},
    CueEvent{TavloEventUpdateOverlay, {whole, logo, {}, {}}},
    CueEvent{TavloEventAddText, {whole, textItem, {}, {}}},
    CueEvent{TavloEventRemoveText, {whole, text, {}, {}}},
    CueEvent{TavloEventReplaceText, {whole, textItem, {}, {}}},
    CueEvent{TavloEventSetTextValue, {whole, text, text, {}}},
    CueEvent{TavloEventSetBlendLayer, {whole, text, {}, {}}},
    CueEvent{TavloEventSetChannelFilter, {whole, whole, {}, {}}},
    CueEvent{TavloEventSetLayoutElement, {whole, whole, record<tagTavloShowLayoutElement>(), {}}},
};

} // namespace

const CueEvent* cueEvent(const QString& name)
{
    const auto found = std::ranges::find_if(
        events, [&name](const CueEvent& event) { return name == QLatin1String(TavloEngineEventName(event.code)); });
    return found != events.end() ? &*found : nullptr;
}

int transitionNumber(const QString& text)
{
    if (text == QLatin1String("random"))
        return randomTransition;
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    if (isNumber)
        return number == randomTransition || TavloPresentUtil::transitionKinds().contains(static_cast<quint32>(number))
                   ? number
                   : -1;
    const quint32 kind = TavloPresentUtil::transitionKind(text);
    return kind > 0 ? static_cast<int>(kind) : -1;
}

} // namespace tavlo::host
