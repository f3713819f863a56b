#pragma once
// What the dialogs share to lay out their controls at design measures in
// twips and to draw the outlines of their shapes.
#include <QPainter>
#include <QRect>
#include <QString>
#include <QWidget>

#include "platform/qt/qtplatform.h"

namespace velmoric::qt {

// Twips to the nearest pixel, each measure on its own.
inline QRect pixels(const QRect& twips) {
    return {twipsToPixels(twips.x()), twipsToPixels(twips.y()), twipsToPixels(twips.width()),
            twipsToPixels(twips.height())};
}

// Names a control after its design name and puts it at its place.
template <typename Control>
Control* place(Control* control, const char* name, const QRect& twips) {
    control->setObjectName(QString::fromLatin1(name));
    control->setGeometry(pixels(twips));
    return control;
}

// A shape drawn as a one-pixel black outline inside its bounds, nothing inside.
class Outline : public QWidget {
public:
    explicit Outline(QWidget* parent) : QWidget(parent) { setAttribute(Qt::WA_TransparentForMouseEvents); }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setPen(Qt::black);
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
};

}  // namespace velmoric::qt
