#pragma once
// `Form2`, the help window: a painted desktop with three hot spots, ten page
// buttons, the page text, a fixed picture and the box of the turning wire
// model. The rules live in the core's HelpWindow; this form lays out the
// controls in twips, forwards every event there and then shows what the
// core's members say. Controls carry their design names as object names.
#include <QDialog>
#include <QFrame>
#include <QImage>
#include <QPushButton>
#include <QTimer>
#include <array>
#include <vector>

#include "help/helpwindow.h"

class QLabel;
class QPlainTextEdit;

namespace velmoric {
class Viewer;
}

namespace velmoric::qt {

// Picture1: cleared and drawn anew with each frame of the model.
class WireBox : public QFrame {
public:
    explicit WireBox(QWidget* parent);
    void setFrame(const std::array<PlacedLine, kModelLineCount>& lines);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::array<PlacedLine, kModelLineCount> lines_{};
    bool drawn_ = false;
};

// Command2 to Command7: only the mouse moves them. Any mouse button going
// down or up is reported; a click, a key or a shortcut does nothing.
class RotateButton : public QPushButton {
    Q_OBJECT
public:
    RotateButton(const QString& caption, QWidget* parent);

signals:
    void mouseDown();
    void mouseUp();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
};

class Form2 : public QDialog {
    Q_OBJECT
public:
    // `viewer` shows the About box, the same one as its help menu.
    Form2(Viewer& viewer, QWidget* parent);

    HelpWindow& help() { return help_; }
    QTimer* timer1() { return &timer1_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void buildControls();
    // Brings the controls in line with the core after each event.
    void sync();

    HelpWindow help_;
    QImage background_;
    QTimer timer1_;
    QPlainTextEdit* text1_ = nullptr;
    QLabel* label2_ = nullptr;
    QWidget* image3_ = nullptr;
    WireBox* picture1_ = nullptr;
    std::vector<RotateButton*> rotate_;
    int framesShown_ = 0;
};

}  // namespace velmoric::qt
