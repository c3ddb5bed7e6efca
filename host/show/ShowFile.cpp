#include "show/ShowFile.h"

#include "Console.h"
#include "show/CueArguments.h"

#include <QDir>
#include <QDomDocument>
#include <QFileInfo>

#include <algorithm>

namespace tavlo::host {
namespace {

/// Walks a show's elements, fills the show and keeps what is wrong, with the path of keys to it.
class Reader
{
public:
    explicit Reader(const QString& path) : _folder(QFileInfo(path).absoluteDir()) {}

    void readShow(const QDomElement& root)
    {
        if (root.tagName() != QLatin1String("show"))
            report(root, QStringLiteral("is no \"show\""));
        forEach(root, [this](const QDomElement& child, const QString& tag) {
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
        checkNumbers(root);
        std::ranges::stable_sort(_file.show.cues, {}, &Cue::time);
    }

    ShowFile take() { return std::move(_file); }

private:
    template <class Function>
    void forEach(const QDomElement& element, Function function)
    {
        for (QDomElement child = element.firstChildElement(); !child.isNull(); child = child.nextSiblingElement()) {
            _path.append(child.tagName());
            function(child, child.tagName());
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
        if (good && value >= static_cast<double>(least) && value <= static_cast<double>(most))
            number = static_cast<Number>(value);
        else
            report(element, QStringLiteral("\"%1\" is no number from %2 to %3").arg(text).arg(least).arg(most));
    }

    void readSource(const QDomElement& element)
    {
        ShowSource source;
        source.channel = static_cast<int>(_file.show.sources.size());
        forEach(element, [this, &source](const QDomElement& child, const QString& tag) {
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
        for (QStringList* const paths : {&source.info.moviePathList, &source.info.imagePathList}) {
            for (QString& path : *paths) {
                path = resolved(path);
                if (!path.contains(QLatin1String("://")) && !QFileInfo::exists(path))
                    report(element, QStringLiteral("there is no file \"%1\"").arg(path));
            }
        }
        if (TavloPresentUtil::isEmptySource(source.info))
            report(element, QStringLiteral("opens nothing"));
        _file.show.sources.push_back(source);
    }

    void readOutput(const QDomElement& element)
    {
        ShowOutput output;
        forEach(element, [this, &output](const QDomElement& child, const QString& tag) {
            int number = 0;
            if (tag == QLatin1String("index")) {
                readNumber(child, output.index, 0, TavloPresentOutputIndexCount - 1);
            } else if (tag == QLatin1String("type")) {
                readNumber(child, number, 0, TavloPresentOutputTypeCount - 1);
                output.type = static_cast<TavloPresentOutputType>(number);
            } else if (tag == QLatin1String("outputParam")) {
                output.param.reset(static_cast<quint32>(output.index), false);
                readRecord(child, output.param);
            } else {
                report(child, QStringLiteral("is no part of an output"));
            }
        });
        output.param.recordDir = resolved(output.param.recordDir);
        _file.show.outputs.push_back(output);
    }

    void readCue(const QDomElement& element)
    {
        Cue cue;
        const QDomElement name = element.firstChildElement(QStringLiteral("event"));
        const CueEvent* const event = cueEvent(name.attribute(QStringLiteral("value")));
        if (!event) {
            report(
                name.isNull() ? element : name,
                QStringLiteral("\"%1\" is no event that a cue can post").arg(name.attribute(QStringLiteral("value"))));
            return;
        }
        cue.event = event->code;
        forEach(element, [&](const QDomElement& child, const QString& tag) {
            const int place = tag.size() == 2 && tag[0] == u'a' ? tag[1].digitValue() : 0;
            if (tag == QLatin1String("time"))
                readNumber(child, cue.time, 0.0, 1e9);
            else if (place >= 1 && place <= 4)
                readArgument(child, event->arguments[static_cast<std::size_t>(place - 1)],
                             cue.arguments[static_cast<std::size_t>(place - 1)]);
            else if (tag != QLatin1String("event"))
                report(child, QStringLiteral("is no part of a cue"));
        });
        _file.show.cues.push_back(cue);
    }

    void readArgument(const QDomElement& element, const CueArgument& argument, QVariant& value)
    {
        if (!argument.read) {
            report(element, QStringLiteral("is not read by this event"));
            return;
        }
        report(argument.check(element));
        value = argument.read(element);
    }

    /// What only the whole show tells.
    void checkNumbers(const QDomElement& root)
    {
        const tagTavloVideoInfo& video = _file.show.engine.videoInfo;
        if (video.width < 16 || video.height < 16 || video.fpsNum < 1 || video.fpsDen < 1)
            report(root, QStringLiteral("engineInfo/videoInfo makes no picture"));
        if (_file.show.sources.empty())
            report(root, QStringLiteral("has no source"));
        for (const ShowSource& source : _file.show.sources) {
            if (source.channel >= static_cast<int>(_file.show.engine.channelCount))
                report(root, QStringLiteral("channel %1 is none of the engine's %2")
                                 .arg(source.channel)
                                 .arg(_file.show.engine.channelCount));
        }
    }

    QString resolved(const QString& path) const
    {
        return path.isEmpty() || path.contains(u':') ? path : _folder.absoluteFilePath(path);
    }

    const QDir _folder;
    QStringList _path;
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
