// The real options dialog under the offscreen platform: its layout and
// created state, what it shows on opening, the preview on its sheet, every
// way of closing, and the options command that shows it modally.
#include <QCheckBox>
#include <QGroupBox>
#include <QKeyEvent>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QTimer>
#include <cstdlib>
#include <set>

#include "platform/qt/form4.h"
#include "window_fixture.h"

using namespace vqt;

namespace {

struct Form4Test : WindowTest {
    std::unique_ptr<Form4> dialog;

    void TearDown() override {
        dialog.reset();  // a child of the main window: goes first
        WindowTest::TearDown();
    }

    void store(const std::string& key, const std::string& value) {
        platform->QtPlatform::writeSetting("velmoric", "options", key, value);
    }
    // A new dialog, loaded, with the log cleared.
    Form4& open() {
        dialog = std::make_unique<Form4>(*form);
        dialog->load();
        dialog->show();
        platform->log.clear();
        return *dialog;
    }
    std::vector<std::string> writes() const {
        std::vector<std::string> out;
        for (const std::string& line : platform->log)
            if (line.starts_with("write ")) out.push_back(line);
        return out;
    }
    QRect pixels(QRect twips) const {
        return {twipsToPixels(twips.x()), twipsToPixels(twips.y()), twipsToPixels(twips.width()),
                twipsToPixels(twips.height())};
    }
};

TEST_F(Form4Test, ControlsStandAtTheirPlacesInTheCreatedState) {
    Form4 f(*form);
    EXPECT_EQ(f.windowTitle(), "Velmoric . Select Options.");
    EXPECT_EQ(f.size(), QSize(392, 303)) << "5880 by 4545 twips";
    EXPECT_FALSE(f.windowFlags() & (Qt::WindowMinimizeButtonHint | Qt::WindowMaximizeButtonHint));
    struct Row {
        const char* name;
        const char* container;
        const char* caption;
        QRect twips;
    };
    const Row rows[] = {
        {"Shape2", "Form4", "", {120, 120, 3255, 2535}},
        {"Label2", "Form4", "Print Options", {240, 240, 3015, 255}},
        {"Frame2", "Form4", "Orientation", {240, 480, 1455, 975}},
        {"Option2_1", "Frame2", "Portrait", {120, 240, 1215, 195}},
        {"Option2_0", "Frame2", "Landscape", {120, 600, 1215, 195}},
        {"Frame3", "Form4", "Size", {240, 1560, 1455, 975}},
        {"HScroll1", "Frame3", "", {120, 240, 1215, 255}},
        {"Label3", "Frame3", "100", {480, 600, 615, 255}},
        {"Picture1", "Form4", "", {1800, 600, 1368, 1935}},
        {"Image1", "Picture1", "", {120, 600, 975, 615}},
        {"Shape3", "Form4", "", {120, 2760, 3255, 1695}},
        {"Label4", "Form4", "Misc. Options", {240, 2880, 3015, 255}},
        {"Check1", "Form4", "Warn if picture not saved  at exit.", {240, 3240, 3015, 375}},
        {"Check2", "Form4", "Display pictures at true resolution.", {240, 3600, 3015, 375}},
        {"Check4", "Form4", "Use Multiple instances of Velmoric", {240, 3960, 3015, 375}},
        {"Shape1", "Form4", "", {3600, 120, 2175, 3015}},
        {"Label1", "Form4", "Slide Show Options", {3720, 240, 1935, 255}},
        {"Frame1", "Form4", "Delay", {3720, 480, 1935, 2175}},
        {"Option1_0", "Frame1", "None", {360, 360, 1095, 195}},
        {"Option1_1", "Frame1", "2 Seconds", {360, 720, 1095, 195}},
        {"Option1_2", "Frame1", "5 Seconds", {360, 1080, 1095, 195}},
        {"Option1_4", "Frame1", "15 Seconds", {360, 1440, 1215, 195}},
        {"Option1_3", "Frame1", "10 Seconds", {360, 1800, 1215, 195}},
        {"Check3", "Form4", "Repeat", {4200, 2760, 1095, 255}},
        {"Command1", "Form4", "Done.", {4080, 3600, 1215, 495}},
    };
    for (const Row& r : rows) {
        const QWidget* w = f.findChild<QWidget*>(r.name);
        ASSERT_NE(w, nullptr) << r.name;
        EXPECT_EQ(w->parentWidget()->objectName(), r.container) << r.name;
        EXPECT_EQ(w->geometry(), pixels(r.twips)) << r.name;
        QString caption = w->property("text").toString();
        if (auto* frame = qobject_cast<const QGroupBox*>(w)) caption = frame->title();
        EXPECT_EQ(caption, r.caption) << r.name;
    }
    // The created state, before the options are loaded.
    EXPECT_TRUE(f.check(1)->isChecked());
    EXPECT_FALSE(f.check(2)->isChecked());
    EXPECT_TRUE(f.check(3)->isChecked());
    EXPECT_TRUE(f.option2(1)->isChecked());
    EXPECT_TRUE(f.option1(1)->isChecked());
    EXPECT_EQ(f.hscroll1()->value(), 100);
    EXPECT_EQ(f.hscroll1()->minimum(), 5);
    EXPECT_EQ(f.hscroll1()->maximum(), 100);
    EXPECT_EQ(f.hscroll1()->singleStep(), 1);
    EXPECT_EQ(f.hscroll1()->pageStep(), 5);
    EXPECT_EQ(f.picture1()->palette().color(QPalette::Window), Qt::white);
    EXPECT_EQ(f.label3()->palette().color(QPalette::Window), Qt::white);
    EXPECT_EQ(f.label3()->frameShape(), QFrame::Box);

    // The Tab key's order among the controls that take the focus.
    QStringList order;
    QWidget* w = f.option1(0);
    for (int steps = 0; steps < 100 && order.size() < 14; ++steps, w = w->nextInFocusChain())
        if (w->focusPolicy() & Qt::TabFocus) order << w->objectName();
    EXPECT_EQ(order.join(' '), "Option1_0 Option1_1 Option1_2 Option1_3 Option1_4 Command1 Check1 Check2 Check3 "
                               "Picture1 Option2_0 Option2_1 HScroll1 Check4");
}

TEST_F(Form4Test, OpeningShowsTheStoreAndFiresChangesOnlyWhereTheCreatedStateDiffers) {
    struct Case {
        std::vector<std::pair<std::string, std::string>> stored;
        int scrollEvents, landscapeEvents;
    };
    const Case cases[] = {{{}, 0, 0}, {{{"printscale", "100"}, {"orientation", "1"}}, 0, 0},
                          {{{"printscale", "5"}, {"orientation", "0"}}, 1, 1}};
    for (const Case& c : cases) {
        for (const auto& [key, value] : c.stored) store(key, value);
        Form4 f(*form);
        int scrollEvents = 0, landscapeEvents = 0;
        QObject::connect(f.hscroll1(), &QScrollBar::valueChanged, [&] { ++scrollEvents; });
        QObject::connect(f.option2(0), &QRadioButton::toggled, [&](bool on) { landscapeEvents += on; });
        f.load();
        EXPECT_EQ(scrollEvents, c.scrollEvents) << c.stored.size();
        EXPECT_EQ(landscapeEvents, c.landscapeEvents) << c.stored.size();
    }
    std::filesystem::remove(settingsFile());
    Form4& f = open();
    EXPECT_TRUE(f.option1(1)->isChecked()) << "2 Seconds";
    EXPECT_TRUE(f.option2(1)->isChecked()) << "Portrait";
    EXPECT_EQ(f.hscroll1()->value(), 100);
    EXPECT_EQ(std::vector<bool>({f.check(1)->isChecked(), f.check(2)->isChecked(), f.check(3)->isChecked(),
                                 f.check(4)->isChecked()}),
              std::vector<bool>({false, false, true, false}));
    EXPECT_TRUE(writes().empty());
}

TEST_F(Form4Test, TheScaleSetsTheCaptionAndThePreviewOnTheSheet) {
    store("printscale", "5");
    Form4& f = open();
    EXPECT_EQ(f.label3()->text(), "5");
    EXPECT_EQ(f.previewTwips(), QRect(629, 917, 66, 41)) << "0.05 of 1325 twips, centred on 1875";
    const QRect sheet = f.picture1()->geometry(), preview = f.image1()->geometry();
    EXPECT_EQ(sheet.size(), QSize(88, 125));
    EXPECT_LE(std::abs(2 * preview.center().x() + 1 - sheet.width()), 1) << "centred";
    EXPECT_LE(std::abs(2 * preview.center().y() + 1 - sheet.height()), 1) << "centred";

    f.hscroll1()->setValue(100);
    EXPECT_EQ(f.label3()->text(), "100");
    EXPECT_EQ(viewer().options.printscale, 100) << "the scale follows at once";
    EXPECT_EQ(f.previewTwips(), QRect(0, 523, 1325, 828));
    EXPECT_EQ(f.image1()->x(), 0);
    EXPECT_EQ(f.image1()->width(), f.picture1()->width()) << "the preview fills the width of the sheet";

    // Landscape: the sheet's height changes, the picture keeps its size.
    f.hscroll1()->setValue(40);
    const QRect portrait = f.previewTwips();
    f.option2(0)->click();
    EXPECT_EQ(viewer().options.orientation, 0);
    EXPECT_EQ(f.sheetTwips(), QSize(1325, 936));
    EXPECT_EQ(f.picture1()->size(), QSize(88, 62));
    EXPECT_EQ(f.previewTwips().size(), portrait.size());
    EXPECT_EQ(f.previewTwips().left(), portrait.left());
    EXPECT_EQ(f.previewTwips().top(), 302) << "centred anew: (936 - 331.25) / 2";
}

TEST_F(Form4Test, ThePreviewSharesTheStartUpPictureOfTheMainWindow) {
    Form4& f = open();
    ASSERT_FALSE(f.image1()->picture().empty());
    EXPECT_EQ(&f.image1()->picture().bytes(), &form->image1()->picture().bytes()) << "the same picture object";
    EXPECT_EQ(f.image1()->image().constBits(), form->image1()->image().constBits()) << "and its screen image";
    // Shrunk without smoothing: every screen pixel is one of the picture's
    // colours, none a blend of two.
    const QImage drawn = f.image1()->grab().toImage().convertToFormat(QImage::Format_RGB32);
    const QImage source = form->image1()->image().convertToFormat(QImage::Format_RGB32);
    std::set<QRgb> colours;
    for (int y = 0; y < source.height(); ++y)
        for (int x = 0; x < source.width(); ++x) colours.insert(source.pixel(x, y));
    ASSERT_EQ(drawn.size(), QSize(88, 55));
    for (int y = 0; y < drawn.height(); ++y)
        for (int x = 0; x < drawn.width(); ++x) ASSERT_TRUE(colours.count(drawn.pixel(x, y))) << x << "," << y;
}

TEST_F(Form4Test, EveryWayOfClosingStoresWhatTheDialogShows) {
    const std::function<void(Form4&)> ways[] = {
        [](Form4& f) { f.command1()->click(); },
        [](Form4& f) { f.close(); },
        [](Form4& f) {
            QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
            QApplication::sendEvent(&f, &escape);
        },
    };
    for (const auto& close : ways) {
        store("delay", "7");
        Form4& f = open();
        EXPECT_TRUE(f.option1(1)->isChecked()) << "a delay of 7 selects 2 Seconds";
        f.check(2)->click();
        f.hscroll1()->setValue(30);
        close(f);
        EXPECT_FALSE(f.isVisible());
        EXPECT_EQ(writes(), (std::vector<std::string>{"write options/delay=2", "write options/save=0",
                                                      "write options/size=1", "write options/repeat=1",
                                                      "write options/orientation=1", "write options/printscale=30",
                                                      "write options/single=0"}));
        EXPECT_EQ(viewer().options.size, 1);
        store("size", "0");
    }
}

TEST_F(Form4Test, TheOptionsCommandShowsTheDialogModallyAndLaysOutAgain) {
    loadAndShow();
    layOut(1, 0);
    for (QAction* command : {form->menuAction(MenuArray::medit, 2), form->toolbarAction("pref")}) {
        store("size", "0");
        setClientWidth(500);
        bool modal = false;
        QTimer::singleShot(0, [&] {
            auto* f = qobject_cast<Form4*>(QApplication::activeModalWidget());
            ASSERT_NE(f, nullptr);
            modal = f->isModal();
            f->check(2)->click();
            f->command1()->click();
        });
        command->trigger();
        EXPECT_TRUE(modal);
        settle(*platform);
        EXPECT_EQ(form->centralWidget()->width(), 320) << "native width as soon as the dialog has closed";
    }
}

}  // namespace
