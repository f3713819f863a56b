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
    Form2* help = nullptr;  // a child of the main window, which deletes it

    void SetUp() override {
        WindowTest::SetUp();
        loadAndShow();
        help = new Form2(viewer(), form.get());
        help->show();
        settle(*platform);
    }
    template <typename T = QWidget>
    T* control(const QString& name) const { return help->findChild<T*>(name); }
    // Which of Text1, Image3, Picture1 and Command2 to Command7 are shown,
    // and Label2's caption.
    std::string view() const {
        std::string v;
        for (QString name : {"Text1", "Image3", "Picture1"}) v += control(name)->isVisible() ? '1' : '0';
        for (int n = 2; n <= 7; ++n) v += control(QStringLiteral("Command%1").arg(n))->isVisible() ? '1' : '0';
        return v + " " + control<QLabel>("Label2")->text().toStdString();
    }
};

TEST_F(HelpWindowTest, TheTextIsInAFixedPitchAndTheHotSpotsLieOverTheIcons) {
    EXPECT_TRUE(QFontInfo(control("Text1")->font()).fixedPitch());
    for (auto [name, icon] : {std::pair{"Image1", kDiskAIcon}, {"Image2", kDiskBIcon}, {"Image4", kBinIcon}}) {
        EXPECT_TRUE(control(name)->geometry().contains(icon)) << name;
        EXPECT_EQ(control(name)->toolTip(), "Click Here") << name;
    }
}

// Every page button from the text, the picture and the model in turn; the
// second disk shows the About box over every view and leaves it as it was.
TEST_F(HelpWindowTest, PageButtonsBinAndAboutBoxFromEveryView) {
    const auto step = [&](const QString& name, const std::string& shown) {
        click(control(name));
        EXPECT_EQ(view(), shown) << name.toStdString();
        click(control("Image2"));
        EXPECT_EQ(view(), shown) << name.toStdString() << ", then the About box";
    };
    const auto pages = buildHelpPages();
    for (int index = 0; index < 10; ++index) {
        // The model covers the text and keeps Label2; the picture does not.
        if (index % 3 == 1) step("Image4", "010000000 ");
        if (index % 3 == 2) step("Image1", "101111111 Page " + std::to_string(index));
        const QString page = QStringLiteral("Command1_%1").arg(index);
        EXPECT_EQ(control<QPushButton>(page)->text(), QString::number(index + 1));
        step(page, "100000000 Page " + std::to_string(index + 1));
        EXPECT_EQ(control<QPlainTextEdit>("Text1")->toPlainText(),
                  QString::fromStdString(pages[std::size_t(index)]).replace("\r\n", "\n"));
    }
    ASSERT_EQ(platform->messages.size(), 16u);
    for (const auto& m : platform->messages)
        EXPECT_EQ(std::tuple(m.title, m.icon, m.text.substr(0, 25)),
                  std::tuple("About.", Icon::Information, "Velmoric Picture Viewer.\n"));
}

// The model stands upright in the centre of its box, turns while a mouse
// button is held on a rotate button, and stops at once when it is let go.
TEST_F(HelpWindowTest, TheModelStandsUprightAndTurnsWhileAMouseButtonIsDown) {
    click(control("Image1"));
    auto* box = control("Picture1");
    const QImage image = box->grab().toImage();
    const QRgb ink = box->palette().windowText().color().rgb();
    QRect drawn;
    // Inside the two-pixel border.
    for (int y = 2; y < image.height() - 2; ++y)
        for (int x = 2; x < image.width() - 2; ++x)
            if (image.pixel(x, y) == ink) drawn |= QRect(x, y, 1, 1);
    EXPECT_NEAR(drawn.center().x(), box->width() / 2, 3);
    EXPECT_NEAR(drawn.center().y(), box->height() / 2, 3);
    EXPECT_GT(drawn.height(), 150);
    EXPECT_LT(drawn.width(), drawn.height() + 30);

    const HelpWindow& core = help->help();
    auto* minusX = control("Command6");
    minusX->setFocus();
    for (QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent key(type, Qt::Key_Space, Qt::NoModifier, " ");
        QApplication::sendEvent(minusX, &key);
    }
    EXPECT_EQ(std::pair(help->timer1()->isActive(), core.frames), std::pair(false, 1)) << "keys do nothing";
    mouse(minusX, QEvent::MouseButtonPress, Qt::RightButton);
    QElapsedTimer t;
    for (t.start(); t.elapsed() < 150;) QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    mouse(minusX, QEvent::MouseButtonRelease, Qt::RightButton);
    EXPECT_FALSE(help->timer1()->isActive()) << "the model stops at once";
    EXPECT_GT(core.anglex, 0.0f);
    EXPECT_GT(core.frames, 1);
    click(control("Image1"));
    EXPECT_EQ(core.anglex, 0.0f) << "the icon brings the start pose back";
}

// On each opening: what it shows, then a change of view and the way out.
// The menu and the toolbar return only when the modal window has closed.
TEST_F(HelpWindowTest, MenuAndToolbarOpenANewModalWindowEachTime) {
    std::vector<std::string> seen;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        help = qobject_cast<Form2*>(QApplication::activeModalWidget());
        if (!help) return;
        seen.push_back(view());
        click(control("Image4"));
        click(control("Image1"));
        seen.size() == 1 ? click(control("Command11")) : void(help->close());
    });
    poll.start(10);
    form->menuAction(MenuArray::mhelp, 0)->trigger();
    form->toolbarAction("help")->trigger();
    EXPECT_EQ(seen, (std::vector<std::string>{"100000000 Page 1", "100000000 Page 1"}));
}

}  // namespace
