#pragma once

#include <QImage>
#include <QPainter>
#include <QString>

/// A page of pictures with labels, filled row by row.
class Sheet
{
public:
    static constexpr int labelHeight = 16; ///< pixels

    Sheet(int columns, int rows, QSize cell)
        : _cell(cell), _columns(columns),
          _image(columns * (cell.width() + 4), rows * (cell.height() + labelHeight), QImage::Format_RGB32)
    {
        _image.fill(QColor(70, 70, 70));
    }

    void add(const QImage& frame, const QString& label)
    {
        QPainter painter(&_image);
        const QPoint place(_next % _columns * (_cell.width() + 4), _next / _columns * (_cell.height() + labelHeight));
        painter.setPen(Qt::white);
        painter.setFont(QFont(QStringLiteral("Sans"), 7));
        painter.drawText(place + QPoint(1, labelHeight - 4),
                         painter.fontMetrics().elidedText(label, Qt::ElideRight, _cell.width() - 2));
        painter.drawImage(place + QPoint(0, labelHeight), frame);
        ++_next;
    }

    bool save(const QString& path) const { return _image.save(path); }

private:
    QSize _cell;
    int _columns;
    QImage _image;
    int _next = 0;
};
