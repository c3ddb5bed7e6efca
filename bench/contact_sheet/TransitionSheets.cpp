#include "Sheets.h"

#include "Sheet.h"

#include "drawing/TransitionTable.h"
#include "support/DrawStage.h"

#include <array>
#include <cstdio>

namespace {

using namespace tavlo;

constexpr std::array positions{0.0F, 0.1F, 0.25F, 0.4F, 0.5F, 0.6F, 0.75F, 0.9F, 1.0F};

/// A picture with a top, a left and a detail: a slope of colour, a letter, a fine grid in a corner.
QImage makePicture(QSize size, QColor top, QColor bottom, const QString& letter)
{
    QImage picture(size, QImage::Format_RGBA8888);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient slope(0, 0, size.width() / 3.0, size.height());
    slope.setColorAt(0, top);
    slope.setColorAt(1, bottom);
    painter.fillRect(picture.rect(), slope);
    painter.setPen(QPen(Qt::white, 2));
    painter.drawRect(QRect(QPoint(3, 3), size - QSize(7, 7)));
    for (int i = 0; i < size.height() / 3; i += 5)
        painter.drawLine(size.width() * 2 / 3, size.height() / 2 + i, size.width() - 10, size.height() / 2 + i);
    painter.setBrush(Qt::yellow);
    painter.drawEllipse(QPoint(size.width() / 4, size.height() / 3), size.height() / 9, size.height() / 9);
    painter.setFont(QFont(QStringLiteral("Sans"), size.height() / 3));
    painter.drawText(picture.rect(), Qt::AlignCenter, letter);
    return picture;
}

class Show
{
public:
    explicit Show(QSize size)
        : _size(size),
          _outgoing(_stage.upload(makePicture(size, QColor(180, 30, 20), QColor(90, 10, 90), QStringLiteral("A")))),
          _incoming(_stage.upload(makePicture(size, QColor(20, 60, 170), QColor(20, 150, 60), QStringLiteral("B"))))
    {}

    const QString& fault() const { return _stage.fault(); }

    bool writeAll(const QDir& folder)
    {
        Sheet sheet(9, (static_cast<int>(transitionRows().size()) + 8) / 9, _size);
        for (const TransitionRow& row : transitionRows())
            sheet.add(frame(row, 0.5F), QStringLiteral("%1 %2").arg(row.kind).arg(QLatin1String(row.name)));
        return sheet.save(folder.filePath(QStringLiteral("all.png")));
    }

    bool writeFamily(const QDir& folder, const QString& family)
    {
        QList<const TransitionRow*> rows;
        for (const TransitionRow& row : transitionRows()) {
            if (QLatin1String(row.name).startsWith(family + u'_'))
                rows.append(&row);
        }
        Sheet sheet(static_cast<int>(positions.size()), static_cast<int>(rows.size()), _size);
        for (const TransitionRow* row : rows) {
            for (const float position : positions)
                sheet.add(frame(*row, position),
                          QStringLiteral("%1  %2").arg(QLatin1String(row->name)).arg(static_cast<double>(position)));
        }
        return sheet.save(folder.filePath(family + QStringLiteral(".png")));
    }

private:
    QImage frame(const TransitionRow& row, float position)
    {
        return _stage.drawTransition(row.kind, position, _outgoing, _incoming, _size);
    }

    DrawStage _stage;
    QSize _size;
    graphics::TexturePtr _outgoing, _incoming;
};

} // namespace

bool writeTransitionSheets(const QDir& folder, QSize size)
{
    Show show(size);
    if (!show.fault().isEmpty()) {
        std::fprintf(stderr, "%s\n", qPrintable(show.fault()));
        return false;
    }
    bool written = show.writeAll(folder);
    for (const char* family : {"erase", "fade", "glide", "stretch", "blur", "distortion", "color", "lumas"})
        written = written && show.writeFamily(folder, QLatin1String(family));
    return written;
}
