#include "show/CueArguments.h"

#include "show/Show.h"

#include <tavlo/TavloEngineEvents.h>
#include <tavlo/TavloTransitionKinds.h>
#include <tavlo/records/OutputRecords.h>
#include <tavlo/records/PictureRecords.h>
#include <tavlo/records/ShowRecords.h>
#include <tavlo/records/SourceRecords.h>

#include <QSize>

#include <algorithm>
#include <cmath>
#include <optional>

namespace tavlo::host {
namespace {

constexpr int randomTransition = 65535;

QString valueOf(const QDomElement& element) { return element.attribute(QStringLiteral("value")); }

TavloXmlFinding finding(const QDomElement& element, const QString& text)
{
    return {element.lineNumber(), element.columnNumber(), {}, text};
}

/// A channel by its name: "PVM", "PGM", "TCH-S-0" and up; nothing for a text that is none.
std::optional<TavloPresentChannelID> channelNamed(const QString& text)
{
    for (const TavloPresentChannelID bus : {TavloPresentChannelIDPVM, TavloPresentChannelIDPGM}) {
        if (text == TavloPresentUtil::toPathString(bus))
            return bus;
    }
    const TavloPresentChannelID source = TavloPresentUtil::fromPathString(text); // 0 for "TCH-" and nonsense
    return text == QStringLiteral("TCH-S-%1").arg(source) ? std::optional(source) : std::nullopt;
}

/// A number out of a text; channels may go by their names.
template <class T>
T number(const QString& text, bool& good)
{
    if constexpr (std::is_floating_point_v<T>) {
        const T value = text.toFloat(&good);
        good = good && std::isfinite(value);
        return value;
    } else {
        const T value = std::is_signed_v<T> ? static_cast<T>(text.toInt(&good)) : static_cast<T>(text.toUInt(&good));
        if (good)
            return value;
        const auto channel = channelNamed(text);
        good = channel.has_value();
        return static_cast<T>(channel.value_or(0));
    }
}

/// What is wrong with an element that has to hold a value; nothing, if `good`.
QList<TavloXmlFinding> valueFindings(const QDomElement& element, bool good, const char* kind)
{
    if (!element.hasAttribute(QStringLiteral("value")))
        return {finding(element, QStringLiteral("has no attribute \"value\""))};
    if (good)
        return {};
    return {finding(element, QStringLiteral("\"%1\" is no %2").arg(valueOf(element), QLatin1String(kind)))};
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
                return valueFindings(element, good, std::is_floating_point_v<T> ? "number" : "number or channel");
            }};
}

const CueArgument whole = numberArgument<int>();
const CueArgument count = numberArgument<quint32>();
const CueArgument real = numberArgument<float>();

const CueArgument text{nullptr, [](const QDomElement& element) { return QVariant(valueOf(element)); },
                       [](const QDomElement& element) { return valueFindings(element, true, "text"); }};

QSize sizeOf(const QDomElement& element, bool& good)
{
    const QStringList parts = valueOf(element).split(u',');
    bool height = false;
    const QSize size(parts.value(0).toInt(&good), parts.value(1).toInt(&height));
    good = good && height && parts.size() == 2;
    return size;
}

const CueArgument size{nullptr,
                       [](const QDomElement& element) {
                           bool good = false;
                           return QVariant(sizeOf(element, good));
                       },
                       [](const QDomElement& element) {
                           bool good = false;
                           sizeOf(element, good);
                           return valueFindings(element, good, "size such as \"640,360\"");
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
            good = good && param.duration >= 0.0F && std::isfinite(param.duration);
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

const CueArgument source = whole.as(CueMeaning::Source);
const CueArgument channel = whole.as(CueMeaning::Channel);
const CueArgument channelOrAll = whole;
const CueArgument bus = whole.as(CueMeaning::Bus);
const CueArgument outputIndex = whole.as(CueMeaning::OutputIndex);
const CueArgument outputType = whole.as(CueMeaning::OutputType);
const CueArgument timeline = record<tagTavloShowPresentTimelineInfo>().orDefault();
const CueArgument logo = record<tagTavloShowLogoInfo>();
const CueArgument textItem = record<tagTavloShowTextInfo>();
const CueArgument nothing{};

// The rows that end in false wait for the makers of their items (docs/channels.md).
const std::array events{
    CueEvent{TavloEventSetAudioMixer, {nothing, record<tagTavloPresentAudioMixerParam>(), {}, {}}},
    CueEvent{TavloEventSetChannelAudioEffect, {channel, record<tagTavloAudioEffectParam>(), {}, {}}},
    CueEvent{TavloEventSaveChannelPicture,
             {whole.as(CueMeaning::Picture), text.as(CueMeaning::WrittenFile), size.orDefault(), {}}},
    CueEvent{TavloEventOpenSource, {source, record<tagTavloPresentSourceInfo>(), {}, {}}},
    CueEvent{TavloEventCloseSource, {source, {}, {}, {}}},
    CueEvent{TavloEventSetPictureProcess, {source, record<tagTavloPresentPictureProcess>(), {}, {}}},
    CueEvent{TavloEventSetChromaKey, {source, record<tagTavloPresentPictureChromaKey>(), {}, {}}},
    CueEvent{TavloEventSetLumaKey, {source, record<tagTavloPresentPictureLumaKey>(), {}, {}}},
    CueEvent{TavloEventSetCrop, {source, record<tagTavloPresentPictureCrop>(), {}, {}}},
    CueEvent{TavloEventSetColorAdjust, {source, record<tagTavloPresentPictureColorAdjust>(), {}, {}}},
    CueEvent{TavloEventSetPictureMisc, {source, record<tagTavloPresentPictureMisc>(), {}, {}}},
    CueEvent{TavloEventStartOutput, {outputIndex, outputType, record<tagTavloPresentOutputParam>(), {}}},
    CueEvent{TavloEventStopOutput, {outputIndex, outputType, {}, {}}},
    CueEvent{TavloEventSetTransitionPos, {nothing, real, {}, {}}},
    CueEvent{TavloEventTransition, {nothing, count.as(CueMeaning::Source), transition.orDefault(), {}}},
    CueEvent{TavloEventSelectChannel, {bus, source, {}, {}}},
    CueEvent{TavloEventEnterPresent, {channel, record<tagTavloShowPresentInfo>(), timeline, {}}, false},
    CueEvent{TavloEventExitPresent, {channel, text, timeline, {}}, false},
    CueEvent{TavloEventReenterPresent, {channelOrAll, text, timeline, {}}, false},
    CueEvent{TavloEventDisplayPresentItem, {channelOrAll, text, record<tagTavloShowDisplayItemInfo>(), text}, false},
    CueEvent{TavloEventEnterComponent, {channel, record<tagTavloShowComponentInfo>(), {}, {}}, false},
    CueEvent{TavloEventExitComponent, {channel, text, {}, {}}, false},
    CueEvent{TavloEventUpdateComponent, {nothing, record<tagTavloShowComponentInfo>(), {}, {}}, false},
    CueEvent{TavloEventSetPresentText, {channel, text, text, text}, false},
    CueEvent{TavloEventAddLogo, {channel, logo, {}, {}}, false},
    CueEvent{TavloEventRemoveLogo, {channel, text, {}, {}}, false},
    CueEvent{TavloEventUpdateLogo, {channelOrAll, logo, {}, {}}, false},
    CueEvent{TavloEventAddOverlay, {channel, logo, {}, {}}, false},
    CueEvent{TavloEventRemoveOverlay, {channel, text, {}, {}}, false},
    CueEvent{TavloEventUpdateOverlay, {channelOrAll, logo, {}, {}}, false},
    CueEvent{TavloEventAddText, {channel, textItem, {}, {}}, false},
    CueEvent{TavloEventRemoveText, {channel, text, {}, {}}, false},
    CueEvent{TavloEventReplaceText, {channel, textItem, {}, {}}, false},
    CueEvent{TavloEventSetTextValue, {channel, text, text, {}}, false},
    CueEvent{TavloEventSetBlendLayer, {bus, text.as(CueMeaning::ReadFile), {}, {}}},
    CueEvent{TavloEventSetChannelFilter, {bus, whole, {}, {}}},
    CueEvent{TavloEventSetLayoutElement, {channelOrAll, whole, record<tagTavloShowLayoutElement>(), {}}, false},
};

} // namespace

CueArgument CueArgument::as(CueMeaning wanted) const
{
    CueArgument argument = *this;
    argument.meaning = wanted;
    return argument;
}

CueArgument CueArgument::orDefault() const
{
    CueArgument argument = *this;
    argument.mayLack = true;
    return argument;
}

bool names(CueMeaning meaning, quint32 number, quint32 sourceChannels)
{
    const bool isSource = number < sourceChannels;
    const bool isBus = number == TavloPresentChannelIDPVM || number == TavloPresentChannelIDPGM;
    switch (meaning) {
    case CueMeaning::Source:
        return isSource;
    case CueMeaning::Channel:
        return isSource || isBus;
    case CueMeaning::Picture:
        return isSource || isBus || number == TavloPresentChannelIDCanvas;
    case CueMeaning::Bus:
        return isBus;
    case CueMeaning::OutputIndex:
        return number < static_cast<quint32>(TavloPresentOutputIndexCount);
    case CueMeaning::OutputType:
        return isOutputType(static_cast<int>(number));
    default:
        return true;
    }
}

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
