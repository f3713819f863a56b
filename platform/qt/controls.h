#pragma once
// What the dialogs share to lay out their controls at design measures in
// twips and to draw the outlines of their shapes.
#include <QFont>
#include <QFontDatabase>
#include <QPainter>
#include <QPalette>
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

// The forms' sans serif of 8.25 points, a narrow face where the system has
// one: the measures were made for it, and a wide face cuts captions short.
inline QFont designFont(bool bold = false) {
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setFamilies({QStringLiteral("MS Sans Serif"), QStringLiteral("Arial"), QStringLiteral("Liberation Sans"),
                      QStringLiteral("Nimbus Sans"), QStringLiteral("Helvetica"), font.family()});
    font.setPointSizeF(8.25);
    font.setBold(bold);
    return font;
}

// The colour a form shows behind its controls.
inline void setBackground(QWidget* form, QRgb colour) {
    QPalette colours = form->palette();
    colours.setColor(QPalette::Window, QColor::fromRgb(colour));
    form->setPalette(colours);
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
