#include "platform/qt/form4.h"

#include "platform/qt/controls.h"

#include <QCheckBox>
#include <QFontDatabase>
#include <QGroupBox>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>

#include "platform/qt/form1.h"
#include "platform/qt/image1.h"

namespace velmoric::qt {
namespace {

constexpr int kInnerWidth = 5880;
constexpr int kInnerHeight = 4545;
constexpr QRect kPicture1{1800, 600, 1368, 1935};  // twips; the size changes with the orientation
constexpr QRect kImage1{120, 600, 975, 615};


QLabel* label(QWidget* parent, const char* name, const char* caption, const QRect& twips, Qt::Alignment align) {
    auto* l = place(new QLabel(QString::fromLatin1(caption), parent), name, twips);
    l->setTextFormat(Qt::PlainText);
    l->setAlignment(align | Qt::AlignVCenter);
    return l;
}

}  // namespace

PreviewImage::PreviewImage(QWidget* parent) : QWidget(parent) {}

void PreviewImage::setPicture(const Picture& picture, const Image1* shown) {
    picture_ = picture;
    // The main window's image of the same picture object is shared, not
    // converted a second time.
    if (shown && &shown->picture().bytes() == &picture.bytes() && !picture.empty())
        image_ = shown->image();
    else
        image_ = toImage(picture);
    update();
}

void PreviewImage::paintEvent(QPaintEvent*) {
    if (image_.isNull()) return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    painter.drawImage(rect(), image_);
}

Form4::Form4(Form1& owner)
    : QDialog(&owner, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                          Qt::WindowCloseButtonHint | Qt::MSWindowsFixedSizeDialogHint),
      shown_(owner.image1()),
      rules_(owner.viewer().ui, owner.viewer().options, *this) {
    setObjectName(QStringLiteral("Form4"));
    setWindowTitle(QStringLiteral("Velmoric . Select Options."));
    setModal(true);
    setFixedSize(twipsToPixels(kInnerWidth), twipsToPixels(kInnerHeight));
    setFont(designFont());
    setBackground(this, kFormBackground);
    buildControls();
}

void Form4::buildControls() {
    // The outlines first, so that everything else stands above them.
    place(new Outline(this), "Shape2", {120, 120, 3255, 2535});
    place(new Outline(this), "Shape3", {120, 2760, 3255, 1695});
    place(new Outline(this), "Shape1", {3600, 120, 2175, 3015});

    label(this, "Label2", "Print Options", {240, 240, 3015, 255}, Qt::AlignHCenter);
    auto* frame2 = place(new QGroupBox(QStringLiteral("Orientation"), this), "Frame2", {240, 480, 1455, 975});
    option2_[1] = place(new QRadioButton(QStringLiteral("Portrait"), frame2), "Option2_1", {120, 240, 1215, 195});
    option2_[0] = place(new QRadioButton(QStringLiteral("Landscape"), frame2), "Option2_0", {120, 600, 1215, 195});
    option2_[1]->setChecked(true);

    auto* frame3 = place(new QGroupBox(QStringLiteral("Size"), this), "Frame3", {240, 1560, 1455, 975});
    hscroll1_ = place(new QScrollBar(Qt::Horizontal, frame3), "HScroll1", {120, 240, 1215, 255});
    hscroll1_->setRange(5, 100);
    hscroll1_->setSingleStep(1);
    hscroll1_->setPageStep(5);
    hscroll1_->setValue(100);
    hscroll1_->setFocusPolicy(Qt::StrongFocus);
    label3_ = label(frame3, "Label3", "100", {480, 600, 615, 255}, Qt::AlignHCenter);
    label3_->setFrameStyle(QFrame::Box | QFrame::Plain);
    label3_->setAutoFillBackground(true);
    QPalette white = label3_->palette();
    white.setColor(QPalette::Window, Qt::white);
    label3_->setPalette(white);

    picture1_ = place(new QWidget(this), "Picture1", kPicture1);
    picture1_->setAutoFillBackground(true);
    picture1_->setPalette(white);
    picture1_->setFocusPolicy(Qt::TabFocus);
    sheet_ = kPicture1.size();
    image1_ = place(new PreviewImage(picture1_), "Image1", kImage1);
    preview_ = kImage1;

    label(this, "Label4", "Misc. Options", {240, 2880, 3015, 255}, Qt::AlignLeft);
    // A check box or option button: its name, caption and place in twips.
    struct Control {
        const char* name;
        const char* caption;
        QRect twips;
    };
    const Control checks[] = {{"Check1", "Warn if picture not saved  at exit.", {240, 3240, 3015, 375}},
                              {"Check2", "Display pictures at true resolution.", {240, 3600, 3015, 375}},
                              {"Check3", "Repeat", {4200, 2760, 1095, 255}},
                              {"Check4", "Use Multiple instances of Velmoric", {240, 3960, 3015, 375}}};
    for (std::size_t i = 0; i < checks_.size(); ++i)
        checks_[i] = place(new QCheckBox(QString::fromLatin1(checks[i].caption), this), checks[i].name, checks[i].twips);
    checks_[0]->setChecked(true);
    checks_[2]->setChecked(true);

    label(this, "Label1", "Slide Show Options", {3720, 240, 1935, 255}, Qt::AlignHCenter);
    auto* frame1 = place(new QGroupBox(QStringLiteral("Delay"), this), "Frame1", {3720, 480, 1935, 2175});
    const Control delays[] = {{"Option1_0", "None", {360, 360, 1095, 195}},
                              {"Option1_1", "2 Seconds", {360, 720, 1095, 195}},
                              {"Option1_2", "5 Seconds", {360, 1080, 1095, 195}},
                              {"Option1_3", "10 Seconds", {360, 1800, 1215, 195}},
                              {"Option1_4", "15 Seconds", {360, 1440, 1215, 195}}};
    for (std::size_t i = 0; i < option1_.size(); ++i)
        option1_[i] = place(new QRadioButton(QString::fromLatin1(delays[i].caption), frame1), delays[i].name,
                            delays[i].twips);
    option1_[1]->setChecked(true);

    command1_ = place(new QPushButton(QStringLiteral("Done."), this), "Command1", {4080, 3600, 1215, 495});

    // The order of the Tab key.
    QList<QWidget*> order(option1_.begin(), option1_.end());
    order << command1_ << checks_[0] << checks_[1] << checks_[2] << picture1_ << option2_[0] << option2_[1]
          << hscroll1_ << checks_[3];
    for (qsizetype i = 1; i < order.size(); ++i) setTabOrder(order[i - 1], order[i]);

    connect(command1_, &QPushButton::clicked, this, [this] { rules_.Command1_Click(); });
    connect(hscroll1_, &QScrollBar::valueChanged, this, [this] { rules_.HScroll1_Change(); });
    for (int i = 0; i < 2; ++i)
        connect(option2_[std::size_t(i)], &QRadioButton::toggled, this, [this, i](bool selected) {
            if (selected) rules_.Option2_Click(i);
        });
}

void Form4::done(int result) {
    if (!unloaded_) {
        unloaded_ = true;
        rules_.Form_Unload();
    }
    QDialog::done(result);
}

int Form4::checkValue(int number) { return check(number)->isChecked() ? 1 : 0; }
void Form4::setCheckValue(int number, int value) { check(number)->setChecked(value != 0); }
bool Form4::option1Selected(int index) { return option1(index)->isChecked(); }
void Form4::selectOption1(int index) { option1(index)->setChecked(true); }
bool Form4::option2Selected(int index) { return option2(index)->isChecked(); }
void Form4::selectOption2(int index) { option2(index)->setChecked(true); }
int Form4::scrollValue() { return hscroll1_->value(); }
void Form4::setScrollValue(int value) { hscroll1_->setValue(value); }
void Form4::setLabel3(const std::string& text) { label3_->setText(QString::fromStdString(text)); }

void Form4::setSheetSize(int width, int height) {
    sheet_ = {width, height};
    picture1_->resize(twipsToPixels(width), twipsToPixels(height));
}

void Form4::setPreviewTop(int top) {
    preview_.moveTop(top);
    placePreview();
}

void Form4::setPreviewLeft(int left) {
    preview_.moveLeft(left);
    placePreview();
}

void Form4::setPreviewSize(int width, int height) {
    preview_.setSize({width, height});
    placePreview();
}

void Form4::placePreview() { image1_->setGeometry(pixels(preview_)); }

void Form4::setPreviewPicture(const Picture& picture) { image1_->setPicture(picture, shown_); }

}  // namespace velmoric::qt
