#include "platform/qt/form2.h"

#include "platform/qt/controls.h"

#include <QFontDatabase>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPlainTextEdit>
#include <functional>

#include "platform/qt/helpart.h"
#include "shell/viewer.h"

namespace velmoric::qt {
namespace {

// Design measures are twips, 15 to a pixel.
constexpr int px(int twips) { return twips / 15; }
constexpr QRect twipRect(int left, int top, int width, int height) {
    return {px(left), px(top), px(width), px(height)};
}

constexpr QSize kInnerSize{px(9585), px(6000)};
constexpr QRect kLabel1{twipRect(2280, 480, 6495, 495)};
constexpr QRect kLabel3{twipRect(2280, 960, 6495, 375)};
constexpr QRect kShape1{twipRect(2280, 480, 6495, 855)};
constexpr QRect kCentre{twipRect(2280, 1320, 6495, 3615)};  // Text1, Picture1 and Shape2
constexpr QRect kImage3{twipRect(2280, 1320, 6465, 3585)};
constexpr QRect kLabel2{twipRect(2280, 4920, 6495, 375)};
constexpr QRect kCommand11{twipRect(4920, 5400, 1215, 495)};
constexpr QRect kLabel4{twipRect(8880, 840, 615, 495)};
constexpr QRect kHotSpots[] = {twipRect(600, 720, 735, 615), twipRect(600, 2160, 735, 615),
                               twipRect(720, 4680, 720, 840)};
constexpr const char* kHotSpotNames[] = {"Image1", "Image2", "Image4"};
QRect pageButtonRect(int index) { return twipRect(8880, 1320 + 360 * index, 615, 375); }
QRect rotateButtonRect(int left) { return twipRect(left, 4920, 1095, 375); }

constexpr const char* kTitle = "Velmoric Picture Viewer. Ver 3.1";
constexpr const char* kCopyright = "Copyright the Velmoric developers.";

// Image1, Image2 and Image4: no picture of their own, they only catch a
// click on the background under them.
class HotSpot : public QWidget {
public:
    HotSpot(QWidget* parent, std::function<void()> onClick) : QWidget(parent), onClick_(std::move(onClick)) {
        setToolTip(QStringLiteral("Click Here"));
    }

protected:
    void mousePressEvent(QMouseEvent* event) override { pressed_ = event->button() == Qt::LeftButton; }
    void mouseReleaseEvent(QMouseEvent* event) override {
        const bool click = pressed_ && event->button() == Qt::LeftButton && rect().contains(event->position().toPoint());
        pressed_ = false;
        if (click) onClick_();
    }

private:
    std::function<void()> onClick_;
    bool pressed_ = false;
};

// Image3: its picture stretched to the control, nearest pixel.
class StretchedImage : public QWidget {
public:
    StretchedImage(QWidget* parent, QImage image) : QWidget(parent), image_(std::move(image)) {}

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
        painter.drawImage(rect(), image_);
    }

private:
    QImage image_;
};


QFont withSize(QFont font, double points, bool bold) {
    font.setPointSizeF(points);
    font.setBold(bold);
    return font;
}

// The form's bold sans serif, a narrow one where the system has it, so that
// the title fits its label at 18 points.
QFont formFont() { return designFont(true); }

QLabel* label(QWidget* parent, const char* name, const QString& text, const QRect& rect) {
    auto* l = new QLabel(text, parent);
    l->setObjectName(QString::fromLatin1(name));
    l->setGeometry(rect);
    l->setTextFormat(Qt::PlainText);
    l->setAutoFillBackground(true);
    return l;
}

QPushButton* button(QWidget* parent, const QString& name, const QString& caption, const QRect& rect) {
    auto* b = new QPushButton(caption, parent);
    b->setObjectName(name);
    b->setGeometry(rect);
    b->setAutoDefault(false);
    return b;
}

}  // namespace

// ---- Picture1 -------------------------------------------------------------------

WireBox::WireBox(QWidget* parent) : QFrame(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFrameStyle(QFrame::WinPanel | QFrame::Sunken);
}

void WireBox::setFrame(const std::array<PlacedLine, kModelLineCount>& lines) {
    lines_ = lines;
    drawn_ = true;
    update();
}

void WireBox::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().window());
    drawFrame(&painter);
    if (!drawn_) return;
    // Twips count from the corner inside the border; lines past the edge
    // of the box are cut there. No smoothing.
    const QRect inside = contentsRect();
    painter.setClipRect(inside);
    painter.translate(inside.topLeft());
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(QPen(palette().windowText().color(), 0));
    for (const PlacedLine& l : lines_)
        painter.drawLine(QLineF(l.from.left / 15.0, l.from.top / 15.0, l.to.left / 15.0, l.to.top / 15.0));
}

// ---- The rotate buttons -----------------------------------------------------------

RotateButton::RotateButton(const QString& caption, QWidget* parent) : QPushButton(caption, parent) {
    setAutoDefault(false);
}

void RotateButton::mousePressEvent(QMouseEvent* event) {
    emit mouseDown();
    QPushButton::mousePressEvent(event);
    event->accept();  // keep the mouse, so that its release comes back here
}

void RotateButton::mouseReleaseEvent(QMouseEvent* event) {
    emit mouseUp();
    QPushButton::mouseReleaseEvent(event);
}

void RotateButton::keyPressEvent(QKeyEvent* event) { QWidget::keyPressEvent(event); }
void RotateButton::keyReleaseEvent(QKeyEvent* event) { QWidget::keyReleaseEvent(event); }

// ---- The form ------------------------------------------------------------------------

Form2::Form2(Viewer& viewer, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint |
                          Qt::MSWindowsFixedSizeDialogHint),
      background_(helpBackgroundImage()) {
    setWindowTitle(QStringLiteral("Help"));
    setModal(true);
    setFixedSize(kInnerSize);
    setFont(formFont());

    help_.aboutBox = [&viewer] { viewer.showAbout(); };
    help_.unload = [this] { accept(); };
    help_.Form_Load();
    buildControls();
    timer1_.setInterval(25);
    connect(&timer1_, &QTimer::timeout, this, [this] {
        help_.Timer1_Timer();
        sync();
    });
    sync();
}

void Form2::buildControls() {
    // Created bottom first: the graphical controls, then the boxes and
    // buttons, which stand above them.
    for (int i = 0; i < 3; ++i) {
        auto* spot = new HotSpot(this, [this, i] {
            if (i == 0) help_.Image1_Click();
            if (i == 1) help_.Image2_Click();
            if (i == 2) help_.Image4_Click();
            sync();
        });
        spot->setObjectName(QString::fromLatin1(kHotSpotNames[i]));
        spot->setGeometry(kHotSpots[i]);
    }
    auto* shape2 = new Outline(this);
    shape2->setObjectName("Shape2");
    shape2->setGeometry(kCentre);

    QLabel* label1 = label(this, "Label1", QString::fromLatin1(kTitle), kLabel1);
    label1->setFont(withSize(font(), 18, true));
    label1->setAlignment(Qt::AlignCenter);
    QLabel* label3 = label(this, "Label3", QString::fromLatin1(kCopyright), kLabel3);
    label3->setFont(withSize(font(), 12, true));
    label3->setAlignment(Qt::AlignCenter);
    auto* shape1 = new Outline(this);
    shape1->setObjectName("Shape1");
    shape1->setGeometry(kShape1);

    label2_ = label(this, "Label2", QString(), kLabel2);
    label2_->setFont(withSize(font(), 12, true));
    label2_->setFrameStyle(QFrame::Box | QFrame::Plain);
    label2_->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    QLabel* label4 = label(this, "Label4", QStringLiteral("Select Page"), kLabel4);
    label4->setFrameStyle(QFrame::Box | QFrame::Plain);
    label4->setAlignment(Qt::AlignCenter);
    label4->setWordWrap(true);

    image3_ = new StretchedImage(this, helpPictureImage());
    image3_->setObjectName("Image3");
    image3_->setGeometry(kImage3);

    text1_ = new QPlainTextEdit(this);
    text1_->setObjectName("Text1");
    text1_->setGeometry(kCentre);
    text1_->setReadOnly(true);
    text1_->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    text1_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    text1_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    text1_->setFont(withSize(QFontDatabase::systemFont(QFontDatabase::FixedFont), 9.75, false));

    picture1_ = new WireBox(this);
    picture1_->setObjectName("Picture1");
    picture1_->setGeometry(kCentre);

    for (int index = 0; index < kHelpPageCount; ++index) {
        QPushButton* page = button(this, QStringLiteral("Command1_%1").arg(index), QString::number(index + 1),
                                   pageButtonRect(index));
        connect(page, &QPushButton::clicked, this, [this, index] {
            help_.Command1_Click(index);
            sync();
        });
    }
    connect(button(this, "Command11", QStringLiteral("Exit"), kCommand11), &QPushButton::clicked, this, [this] {
        help_.Command11_Click();
    });

    for (const velmoric::RotateButton& r : kRotateButtons) {
        auto* b = new RotateButton(QString::fromLatin1(r.caption), this);
        b->setObjectName(QStringLiteral("Command%1").arg(r.number));
        b->setGeometry(rotateButtonRect(r.left));
        const int number = r.number;
        connect(b, &RotateButton::mouseDown, this, [this, number] {
            help_.Command_MouseDown(number);
            sync();
        });
        connect(b, &RotateButton::mouseUp, this, [this, number] {
            help_.Command_MouseUp(number);
            sync();
        });
        rotate_.push_back(b);
    }
}

void Form2::sync() {
    const QString text = QString::fromStdString(help_.text1).replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    if (text1_->toPlainText() != text) text1_->setPlainText(text);
    label2_->setText(QString::fromStdString(help_.label2));
    text1_->setVisible(help_.text1Visible);
    image3_->setVisible(help_.image3Visible);
    picture1_->setVisible(help_.picture1Visible);
    for (RotateButton* b : rotate_) b->setVisible(help_.picture1Visible);
    if (help_.frames != framesShown_) {
        framesShown_ = help_.frames;
        picture1_->setFrame(help_.picture1);
    }
    if (help_.timer1 && !timer1_.isActive()) timer1_.start();
    if (!help_.timer1) timer1_.stop();
}

void Form2::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.drawImage(0, 0, background_);
}

}  // namespace velmoric::qt
