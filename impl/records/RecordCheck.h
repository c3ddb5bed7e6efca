#pragma once

#include "records/RecordFields.h"
#include "records/RecordReader.h"
#include "records/StringLists.h"
#include "records/ValueText.h"

#include <tavlo/TavloPresentUtil.h>

#include <QSet>

namespace tavlo {

/// Collects what is wrong in an XML text, and knows where in the record the check stands.
class XmlFindings
{
public:
    /// Stands in a field as long as it lives.
    class Field
    {
    public:
        Field(XmlFindings& findings, const QString& key) : _findings(findings) { findings._path.append(key); }
        ~Field() { _findings._path.removeLast(); }
        Q_DISABLE_COPY_MOVE(Field)

    private:
        XmlFindings& _findings;
    };

    void report(const QDomElement& element, const QString& text)
    {
        _list.append({element.lineNumber(), element.columnNumber(), _path.join(QLatin1Char('/')), text});
    }

    /// Reports attributes other than those named, and text between the tags.
    void reportExtras(const QDomElement& element, const QStringList& knownAttributes);

    /// Reports elements inside an element that carries a value only.
    void reportChildren(const QDomElement& element);

    QList<TavloXmlFinding> take() { return std::move(_list); }

private:
    QStringList _path;
    QList<TavloXmlFinding> _list;
};

template <TavloRecord T>
void checkRecord(const QDomElement& element, XmlFindings& findings, const QStringList& knownAttributes = {});
template <TavloRecord T>
void checkList(const QDomElement& element, XmlFindings& findings);
void checkStrings(const QDomElement& element, XmlFindings& findings);

/// Visits the fields of one record for one child element, as the reader does, and reports what the reader would lose.
template <TavloRecord T>
class RecordCheck
{
public:
    RecordCheck(const QDomElement& child, XmlFindings& findings, QSet<QString>& seen)
        : _child(child), _tag(child.tagName()), _findings(findings), _seen(seen)
    {}

    /// Whether some field was named by the child's tag.
    bool isKnown() const { return _known; }

    template <class M>
    void field(QLatin1StringView key, M T::*)
    {
        if (_tag != key)
            return;
        enter(_tag);
        check<M>();
    }

    template <class M>
    void readOnly(QLatin1StringView key, M T::*member)
    {
        field(key, member);
    }

    template <class M, size_t size>
    void numbered(QLatin1StringView prefix, std::array<M, size> T::*)
    {
        if (!isNumberedKey(_tag, prefix))
            return;
        bool isNumber = false;
        const int index = numberOfKey(_tag, prefix, &isNumber);
        enter(prefix + QString::number(index));
        if (!isNumber || !_tag.startsWith(prefix))
            _findings.report(_child, QStringLiteral("element counts as %1").arg(prefix + QString::number(index)));
        if (index < 0 || index >= static_cast<int>(size)) {
            _findings.report(_child, QStringLiteral("is ignored: the last index is %1").arg(size - 1));
            return;
        }
        check<M>();
    }

    template <TavloListRecord M>
    void list(QLatin1StringView key, QList<M> T::*)
    {
        if (_tag != key)
            return;
        enter({}); // a second list is appended, nothing is lost
        checkList<M>(_child, _findings);
    }

    template <TavloRecord M>
    void repeated(QLatin1StringView key, QList<M> T::*)
    {
        if (_tag != key)
            return;
        enter({});
        checkRecord<M>(_child, _findings);
    }

    template <class N, TavloRecord M>
    void valued(QLatin1StringView key, N T::*, M T::*)
    {
        if (_tag != key)
            return;
        enter(_tag);
        checkValue<N>();
        checkRecord<M>(_child, _findings, {QStringLiteral("value")});
    }

    template <class M>
    void unsaved(M T::*)
    {}

private:
    /// \param slot  names what the element fills; empty where several elements add up
    void enter(const QString& slot)
    {
        _known = true;
        if (slot.isEmpty())
            return;
        if (_seen.contains(slot))
            _findings.report(_child, QStringLiteral("stands again; the last one counts"));
        _seen.insert(slot);
    }

    template <class M>
    void check()
    {
        if constexpr (TavloRecord<M>) {
            checkRecord<M>(_child, _findings);
        } else if constexpr (std::is_same_v<M, QStringList>) {
            checkStrings(_child, _findings);
        } else {
            checkValue<M>();
            const bool typed = std::is_same_v<M, QVariant>;
            _findings.reportExtras(_child, typed ? QStringList{"value", "type"} : QStringList{"value"});
            _findings.reportChildren(_child);
        }
    }

    template <class M>
    void checkValue()
    {
        const QString text = _child.attribute(QStringLiteral("value"));
        QString complaint;
        if (!_child.hasAttribute(QStringLiteral("value")))
            complaint = QStringLiteral("has no attribute \"value\" and counts as empty");
        else if constexpr (std::is_same_v<M, QVariant>)
            complaint = complainAboutVariant(_child.attribute(QStringLiteral("type")), text);
        else
            complaint = complainAbout(text, M{});
        if (!complaint.isEmpty())
            _findings.report(_child, complaint);
    }

    const QDomElement& _child;
    const QString _tag;
    XmlFindings& _findings;
    QSet<QString>& _seen;
    bool _known = false;
};

template <TavloRecord T>
void checkRecord(const QDomElement& element, XmlFindings& findings, const QStringList& knownAttributes)
{
    findings.reportExtras(element, knownAttributes);
    QSet<QString> seen;
    forEachChild(element, [&](const QDomElement& child) {
        const XmlFindings::Field field(findings, child.tagName());
        RecordCheck<T> check(child, findings, seen);
        RecordFields<T>::visit(check);
        if (!check.isKnown())
            findings.report(child,
                            QStringLiteral("is no field of %1 and is ignored").arg(QLatin1String(recordName<T>)));
    });
}

template <TavloRecord T>
void checkList(const QDomElement& element, XmlFindings& findings)
{
    const QLatin1StringView tag(listEntryTag<T>);
    findings.reportExtras(element, {});
    forEachChild(element, [&](const QDomElement& child) {
        const XmlFindings::Field field(findings, child.tagName());
        if (child.tagName() == tag)
            checkRecord<T>(child, findings);
        else
            findings.report(child, QStringLiteral("is no \"%1\" and adds an entry with the defaults").arg(tag));
    });
}

} // namespace tavlo
