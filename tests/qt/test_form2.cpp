// The help window's real widgets under the offscreen platform: what the
// controls show in each view, the About box, a new opening through the menu
// and the toolbar, the wire model on screen and the buttons that turn it.
#include <QFontInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QTimer>

#include "platform/qt/form2.h"
#include "platform/qt/helpart.h"
#include "window_fixture.h"

using namespace vqt;

namespace {

void mouse(QWidget* w, QEvent::Type type, Qt::MouseButton button = Qt::LeftButton) {
    const QPointF at(w->width() / 2.0, w->height() / 2.0);
    QMouseEvent e(type, at, w->mapToGlobal(at), button, type == QEvent::MouseButtonRelease ? Qt::NoButton : button,
                  Qt::NoModifier);
    QApplication::sendEvent(w, &e);
}

void click(QWidget* w) {
    if (auto* button = qobject_cast<QPushButton*>(w)) return button->click();
    mouse(w, QEvent::MouseButtonPress);
    mouse(w, QEvent::MouseButtonRelease);
}

struct HelpWindowTest : WindowTest {
    std::unique_ptr<Form2> owned;
    Form2* help = nullptr;

    void SetUp() override {
        WindowTest::SetUp();
        loadAndShow();
        owned = std::make_unique<Form2>(viewer(), form.get());
        help = owned.get();
        help->show();
        settle(*platform);
    }
    void TearDown() override {
        owned.reset();
        WindowTest::TearDown();
    }
    template <typename T = QWidget>
    T* control(const QString& name) const {
        T* w = help->findChild<T*>(name);
        EXPECT_NE(w, nullptr) << name.toStdString();
        return w;
    }
    // Which of Text1, Image3, Picture1 and Command2 to Command7 are shown,
    // and Label2's caption.
    std::string view() const {
        std::string v;
        for (QString name : {"Text1", "Image3", "Picture1", "Command2", "Command3", "Command4", "Command5",
                             "Command6", "Command7"})
            v += control(name)->isVisible() ? '1' : '0';
        return v + " " + control<QLabel>("Label2")->text().toStdString();
    }
};

TEST_F(HelpWindowTest, LayoutFontsAndHotSpots) {
    EXPECT_EQ(help->windowTitle(), "Help");
    EXPECT_EQ(help->size(), QSize(639, 400));
    EXPECT_FALSE(help->windowFlags() & (Qt::WindowMinimizeButtonHint | Qt::WindowMaximizeButtonHint));
    for (auto [name, twips] : {std::pair{"Text1", QRect(2280, 1320, 6495, 3615)}, {"Image3", {2280, 1320, 6465, 3585}},
                               {"Command1_9", {8880, 4560, 615, 375}}, {"Command7", {7680, 4920, 1095, 375}}})
        EXPECT_EQ(control(name)->geometry(), QRect(twips.topLeft() / 15, twips.size() / 15)) << name;
    auto* text = control<QPlainTextEdit>("Text1");
    EXPECT_TRUE(QFontInfo(text->font()).fixedPitch());
    EXPECT_DOUBLE_EQ(text->font().pointSizeF(), 9.75);
    EXPECT_TRUE(text->isReadOnly());
    EXPECT_EQ(text->lineWrapMode(), QPlainTextEdit::WidgetWidth);
    EXPECT_EQ(text->verticalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    EXPECT_TRUE(control("Label1")->font().bold() && control("Label1")->font().pointSizeF() == 18);
    // The hot spots lie over the icons of the background.
    for (auto [name, icon] : {std::pair{"Image1", kDiskAIcon}, {"Image2", kDiskBIcon}, {"Image4", kBinIcon}}) {
        EXPECT_TRUE(control(name)->geometry().contains(icon)) << name;
        EXPECT_EQ(control(name)->toolTip(), "Click Here") << name;
    }
    EXPECT_EQ(view(), "100000000 Page 1");
}

TEST_F(HelpWindowTest, PageButtonsShowTheirPagesFromEveryView) {
    const auto pages = buildHelpPages();
    for (int index = 0; index < 10; ++index) {
        if (index % 3 > 0) click(control(index % 3 == 1 ? "Image4" : "Image1"));
        auto* page = control<QPushButton>(QStringLiteral("Command1_%1").arg(index));
        EXPECT_EQ(page->text(), QString::number(index + 1));
        page->click();
        EXPECT_EQ(view(), "100000000 Page " + std::to_string(index + 1));
        const QString text = control<QPlainTextEdit>("Text1")->toPlainText();
        EXPECT_EQ(text, QString::fromStdString(pages[std::size_t(index)]).replace("\r\n", "\n"));
        const QString dashes = text.split('\n').at(1);
        EXPECT_EQ(dashes, QString(dashes.size(), '-')) << index;
    }
}

TEST_F(HelpWindowTest, BinShowsThePictureAndTheSecondDiskTheAboutBoxInEveryView) {
    // Each view in turn, then the second disk, which leaves the view as it was.
    for (auto [name, after] : {std::pair{"Command1_2", "100000000 Page 3"}, {"Image4", "010000000 "},
                               {"Image1", "011111111 "}, {"Command1_0", "100000000 Page 1"}}) {
        click(control(name));
        EXPECT_EQ(view(), after) << name;
        click(control("Image2"));
        EXPECT_EQ(view(), after) << name;
    }
    ASSERT_EQ(platform->messages.size(), 4u);
    for (const auto& m : platform->messages) {
        EXPECT_EQ(m.title, "About.");
        EXPECT_EQ(m.icon, Icon::Information);
        EXPECT_EQ(m.text.rfind("Velmoric Picture Viewer.\n", 0), 0u);
    }
}

TEST_F(HelpWindowTest, TheModelStandsUprightInTheCentreOfItsBox) {
    click(control("Image1"));
    auto* box = control("Picture1");
    const QImage image = box->grab().toImage();
    const QRgb ink = box->palette().windowText().color().rgb();
    int left = image.width(), right = -1, top = image.height(), bottom = -1;
    // Inside the two-pixel border.
    for (int y = 2; y < image.height() - 2; ++y)
        for (int x = 2; x < image.width() - 2; ++x)
            if (image.pixel(x, y) == ink) {
                left = std::min(left, x), right = std::max(right, x);
                top = std::min(top, y), bottom = std::max(bottom, y);
            }
    ASSERT_GE(right, 0) << "no line drawn";
    EXPECT_NEAR((left + right) / 2.0, box->width() / 2.0, 3);
    EXPECT_NEAR((top + bottom) / 2.0, box->height() / 2.0, 3);
    EXPECT_GT(bottom - top, 150);
    EXPECT_LT(right - left, bottom - top + 30);
}

TEST_F(HelpWindowTest, RotateButtonsTurnWhileAMouseButtonIsDown) {
    click(control("Image1"));
    const HelpWindow& core = help->help();
    auto* minusX = control("Command6");
    // Keys on a focused button do nothing.
    minusX->setFocus();
    for (QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent key(type, Qt::Key_Space, Qt::NoModifier, " ");
        QApplication::sendEvent(minusX, &key);
    }
    EXPECT_FALSE(help->timer1()->isActive());
    EXPECT_EQ(core.frames, 1);

    mouse(minusX, QEvent::MouseButtonPress, Qt::RightButton);
    EXPECT_TRUE(help->timer1()->isActive());
    EXPECT_EQ(help->timer1()->interval(), 25);
    QElapsedTimer t;
    for (t.start(); t.elapsed() < 150;) QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    mouse(minusX, QEvent::MouseButtonRelease, Qt::RightButton);
    EXPECT_FALSE(help->timer1()->isActive()) << "the model stops at once";
    EXPECT_GT(core.anglex, 0.0f);
    EXPECT_GT(core.frames, 1);
    // The icon brings the start pose back.
    click(control("Image1"));
    EXPECT_EQ(core.anglex, 0.0f);
}

TEST_F(HelpWindowTest, MenuAndToolbarOpenANewWindowEachTime) {
    owned.reset();
    std::vector<std::string> seen;
    // On each opening: what it shows, then a change of view and the way out.
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        help = qobject_cast<Form2*>(QApplication::activeModalWidget());
        if (!help) return;
        seen.push_back(view());
        click(control("Image4"));
        click(control("Image1"));
        if (seen.size() == 1)
            click(control("Command11"));
        else
            help->close();
    });
    poll.start(10);
    form->menuAction(MenuArray::mhelp, 0)->trigger();
    form->toolbarAction("help")->trigger();
    EXPECT_EQ(seen, (std::vector<std::string>{"100000000 Page 1", "100000000 Page 1"}));
}

}  // namespace
