#include "show/ShowFile.h"

#include "Console.h"
#include "show/CueArguments.h"

#include <QDir>
#include <QDomDocument>
#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <type_traits>
#include <vector>

namespace tavlo::host {
namespace {

/// What a number was to name, in words.
QString kindOf(CueMeaning meaning, quint32 channels)
{
    switch (meaning) {
    case CueMeaning::OutputIndex:
        return QStringLiteral("output: they go from 0 to %1").arg(TavloPresentOutputIndexCount - 1);
    case CueMeaning::OutputType:
        return QStringLiteral("type of an output");
    case CueMeaning::Bus:
        return QStringLiteral("PVM or PGM");
    default:
        return QStringLiteral("channel here: the engine makes %1 for sources").arg(channels);
    }
}

/// Walks a show's elements, fills the show and keeps what is wrong, with the path of keys to it.
class Reader
{
public:
    explicit Reader(const QString& path) : _folder(QFileInfo(path).absoluteDir()) {}

    void readShow(const QDomElement& root)
    {
        if (root.tagName() != QLatin1String("show"))
            report(root, QStringLiteral("is no \"show\""));
        forEach(root, {QStringLiteral("source"), QStringLiteral("output"), QStringLiteral("cue")},
                [this](const QDomElement& child, const QString& tag) {
                    if (tag == QLatin1String("seconds"))
                        readNumber(child, _file.show.seconds, 0.0, 1e9);
                    else if (tag == QLatin1String("engineInfo"))
                        readRecord(child, _file.show.engine);
                    else if (tag == QLatin1String("audioMixer"))
                        readRecord(child, _file.show.mixer);
                    else if (tag == QLatin1String("source"))
                        readSource(child);
                    else if (tag == QLatin1String("output"))
                        readOutput(child);
                    else if (tag == QLatin1String("cue"))
                        readCue(child);
                    else
                        report(child, QStringLiteral("is no part of a show"));
                });
        checkWhole(root);
        std::ranges::stable_sort(_file.show.cues, {}, &Cue::time);
        std::ranges::stable_sort(_file.findings, {}, &TavloXmlFinding::line);
    }

    ShowFile take() { return std::move(_file); }

private:
    /// A number whose meaning depends on how many channels the engine has.
    struct Named
    {
        QDomElement element;
        QString field;
        CueMeaning meaning;
        quint32 number;
    };

    /// Calls for each child. \param repeatable  the tags that may stand there more than once
    template <class Function>
    void forEach(const QDomElement& element, const QStringList& repeatable, Function function)
    {
        QStringList seen;
        for (QDomElement child = element.firstChildElement(); !child.isNull(); child = child.nextSiblingElement()) {
            const QString tag = child.tagName();
            _path.append(tag);
            if (seen.contains(tag))
                report(child, QStringLiteral("stands here twice"));
            if (!repeatable.contains(tag))
                seen.append(tag);
            function(child, tag);
            _path.removeLast();
        }
    }

    void report(const QDomElement& element, const QString& text)
    {
        _file.findings.append({element.lineNumber(), element.columnNumber(), _path.join(u'/'), text});
    }

    void report(QList<TavloXmlFinding> findings)
    {
        for (TavloXmlFinding& finding : findings) {
            finding.field = _path.join(u'/') + (finding.field.isEmpty() ? QString() : u'/' + finding.field);
            _file.findings.append(finding);
        }
    }

    template <class Record>
    void readRecord(const QDomElement& element, Record& record)
    {
        report(TavloPresentUtil::checkDomElement(element, QLatin1String(tavlo::recordName<Record>)));
        QDomElement source = element;
        TavloPresentUtil::readDomElement(source, record);
    }

    template <class Number>
    void readNumber(const QDomElement& element, Number& number, Number least, Number most)
    {
        bool good = false;
        const QString text = element.attribute(QStringLiteral("value"));
        const double value = text.toDouble(&good);
        const bool fits = std::is_floating_point_v<Number> || value == std::floor(value);
        if (good && fits && value >= static_cast<double>(least) && value <= static_cast<double>(most))
            number = static_cast<Number>(value);
        else
            report(element, QStringLiteral("\"%1\" is no number from %2 to %3").arg(text).arg(least).arg(most));
    }

    void readSource(const QDomElement& element)
    {
        ShowSource source;
        source.channel = static_cast<int>(_file.show.sources.size());
        forEach(element, {}, [this, &source](const QDomElement& child, const QString& tag) {
            if (tag == QLatin1String("channel"))
                readNumber(child, source.channel, 0, TavloMixedChannelLimit - 1);
            else if (tag == QLatin1String("sourceInfo"))
                readRecord(child, source.info);
            else if (tag == QLatin1String("pictureFilter"))
                readRecord(child, source.picture);
            else if (tag == QLatin1String("audioEffect"))
                readRecord(child, source.audioEffect);
            else
                report(child, QStringLiteral("is no part of a source"));
        });
        resolve(element, source.info);
        if (std::ranges::find(_file.show.sources, source.channel, &ShowSource::channel) != _file.show.sources.end())
            report(element, QStringLiteral("channel %1 has a source already").arg(source.channel));
        _named.push_back({element, _path.join(u'/'), CueMeaning::Source, static_cast<quint32>(source.channel)});
        _file.show.sources.push_back(source);
    }

    void readOutput(const QDomElement& element)
    {
        ShowOutput output;
        if (const QDomElement index = element.firstChildElement(QStringLiteral("index")); !index.isNull())
            output.index = index.attribute(QStringLiteral("value")).toInt();
        output.param.reset(static_cast<quint32>(output.index), false);
        forEach(element, {}, [this, &output](const QDomElement& child, const QString& tag) {
            int number = 0;
            if (tag == QLatin1String("index")) {
                readNumber(child, output.index, 0, TavloPresentOutputIndexCount - 1);
            } else if (tag == QLatin1String("type")) {
                readNumber(child, number, 0, TavloPresentOutputTypeCount - 1);
                output.type = static_cast<TavloPresentOutputType>(number);
                if (!isOutputType(number))
                    report(child, QStringLiteral("%1 is no type of an output").arg(number));
            } else if (tag == QLatin1String("outputParam")) {
                readRecord(child, output.param);
            } else {
                report(child, QStringLiteral("is no part of an output"));
            }
        });
        resolve(output.param);
        _file.show.outputs.push_back(output);
    }

    void readCue(const QDomElement& element)
    {
        Cue cue;
        const QDomElement name = element.firstChildElement(QStringLiteral("event"));
        const QString text = name.attribute(QStringLiteral("value"));
        const CueEvent* const event = cueEvent(text);
        if (!event || !event->isMade) {
            report(name.isNull() ? element : name,
                   event ? QStringLiteral("this build makes no items: \"%1\" would do nothing").arg(text)
                         : QStringLiteral("\"%1\" is no event that a cue can post").arg(text));
            return;
        }
        cue.event = event->code;
        forEach(element, {}, [&](const QDomElement& child, const QString& tag) {
            const int place = tag.size() == 2 && tag[0] == u'a' ? tag[1].digitValue() : 0;
            if (tag == QLatin1String("time"))
                readNumber(child, cue.time, 0.0, 1e9);
            else if (place >= 1 && place <= 4)
                readArgument(child, event->arguments[static_cast<std::size_t>(place - 1)],
                             cue.arguments[static_cast<std::size_t>(place - 1)]);
            else if (tag != QLatin1String("event"))
                report(child, QStringLiteral("is no part of a cue"));
        });
        checkWhatIsThere(element, *event);
        _file.show.cues.push_back(cue);
    }

    void checkWhatIsThere(const QDomElement& element, const CueEvent& event)
    {
        QStringList wanted{QStringLiteral("time")};
        for (std::size_t i = 0; i < event.arguments.size(); ++i) {
            if (event.arguments[i].read && !event.arguments[i].mayLack)
                wanted.append(QStringLiteral("a%1").arg(i + 1));
        }
        for (const QString& tag : wanted) {
            if (element.firstChildElement(tag).isNull())
                report(element, QStringLiteral("has no \"%1\"").arg(tag));
        }
    }

    void readArgument(const QDomElement& element, const CueArgument& argument, QVariant& value)
    {
        if (!argument.read) {
            report(element, QStringLiteral("is not read by this event"));
            return;
        }
        const QList<TavloXmlFinding> findings = argument.check(element);
        report(findings);
        value = argument.read(element);
        if (!findings.isEmpty())
            return;
        if (value.userType() == qMetaTypeId<tagTavloPresentSourceInfo>())
            value = resolvedRecord<tagTavloPresentSourceInfo>(element, value);
        else if (value.userType() == qMetaTypeId<tagTavloPresentOutputParam>())
            value = resolvedRecord<tagTavloPresentOutputParam>(element, value);
        else if (argument.meaning == CueMeaning::ReadFile || argument.meaning == CueMeaning::WrittenFile)
            value = resolvedPath(element, value.toString(), argument.meaning);
        else if (argument.meaning != CueMeaning::Plain)
            _named.push_back({element, _path.join(u'/'), argument.meaning, value.toUInt()});
    }

    /// What only the whole show tells.
    void checkWhole(const QDomElement& root)
    {
        if (const QString fault = pictureFault(_file.show); !fault.isEmpty())
            report(root, QStringLiteral("engineInfo: ") + fault);
        if (_file.show.sources.empty())
            report(root, QStringLiteral("has no source"));
        const quint32 channels = _file.show.engine.channelCount;
        for (const Named& named : _named) {
            if (!names(named.meaning, named.number, channels))
                _file.findings.append(
                    {named.element.lineNumber(), named.element.columnNumber(), named.field,
                     QStringLiteral("%1 is no %2").arg(named.number).arg(kindOf(named.meaning, channels))});
        }
    }

    // Paths

    template <class Record>
    QVariant resolvedRecord(const QDomElement& element, const QVariant& value)
    {
        auto record = value.value<Record>();
        if constexpr (std::is_same_v<Record, tagTavloPresentSourceInfo>)
            resolve(element, record);
        else
            resolve(record);
        return QVariant::fromValue(record);
    }

    void resolve(const QDomElement& element, tagTavloPresentSourceInfo& info)
    {
        if (const QString fault = sourceFault(info); !fault.isEmpty())
            report(element, fault);
        for (QStringList* const paths : {&info.moviePathList, &info.imagePathList}) {
            for (QString& path : *paths)
                path = resolvedPath(element, path, CueMeaning::ReadFile);
        }
    }

    void resolve(tagTavloPresentOutputParam& param) const
    {
        for (QString* const folder : {&param.recordDir, &param.tsRecordDir, &param.hlsDir})
            *folder = resolved(*folder);
    }

    QString resolvedPath(const QDomElement& element, const QString& text, CueMeaning meaning)
    {
        const QString path = resolved(text);
        const bool isWritten = meaning == CueMeaning::WrittenFile;
        if (isWritten && !QFileInfo(path).absoluteDir().exists())
            report(element, QStringLiteral("there is no folder \"%1\"").arg(QFileInfo(path).absolutePath()));
        if (!isWritten && !path.isEmpty() && !path.contains(QLatin1String("://")) && !QFileInfo::exists(path))
            report(element, QStringLiteral("there is no file \"%1\"").arg(path));
        return path;
    }

    QString resolved(const QString& path) const
    {
        return path.isEmpty() || path.contains(u':') ? path : _folder.absoluteFilePath(path);
    }

    const QDir _folder;
    QStringList _path;
    std::vector<Named> _named;
    ShowFile _file;
};

} // namespace

ShowFile readShow(const QString& text, const QString& path)
{
    QDomDocument document;
    TavloXmlFinding fault;
    if (!TavloPresentUtil::parseXml(text, document, fault))
        return {{}, {fault}};
    Reader reader(path);
    reader.readShow(document.documentElement());
    return reader.take();
}

void printFindings(const QString& path, const QList<TavloXmlFinding>& findings)
{
    for (const TavloXmlFinding& finding : findings) {
        out() << path << ':' << finding.line << ':' << finding.column << ": "
              << (finding.field.isEmpty() ? QString() : finding.field + QStringLiteral(": ")) << finding.text << '\n';
    }
    out().flush();
}

} // namespace tavlo::host
